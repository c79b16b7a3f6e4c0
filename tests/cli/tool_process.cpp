#include "tool_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>

namespace nvx::test {

namespace {

using Clock = std::chrono::steady_clock;

void closeFd(int &fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

}  // namespace

nlohmann::json &ToolResult::json() const {
  if (!parsed_) {
    auto doc = nlohmann::json::parse(out, nullptr, false);
    EXPECT_FALSE(doc.is_discarded()) << "not one JSON document:\n" << transcript();
    parsed_ = doc.is_discarded() ? nlohmann::json() : std::move(doc);
  }
  return *parsed_;
}

std::string ToolResult::transcript() const {
  return "exit " + std::to_string(exitCode) + "\n--- stdout\n" + out + "--- stderr\n" + err;
}

ToolProcess::ToolProcess(const std::vector<std::string> &args, const ToolOptions &options) : started_(Clock::now()) {
  std::array<int, 2> outPipe{};
  std::array<int, 2> errPipe{};
  if (::pipe2(outPipe.data(), O_CLOEXEC) != 0 || ::pipe2(errPipe.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("pipe failed");
  std::vector<std::string> argv = options.wrapper;
  argv.push_back(MXRK7_TOOL);
  argv.insert(argv.end(), args.begin(), args.end());
  const int input = options.stdinFile.empty() ? -1 : ::open(options.stdinFile.c_str(), O_RDONLY | O_CLOEXEC);
  if (!options.stdinFile.empty() && input < 0) throw std::runtime_error("cannot open " + options.stdinFile);
  std::vector<char *> raw;
  for (auto &arg : argv) raw.push_back(arg.data());
  raw.push_back(nullptr);
  pid_ = ::fork();
  if (pid_ < 0) throw std::runtime_error("fork failed");
  if (pid_ == 0) {
    ::dup2(outPipe[1], STDOUT_FILENO);
    ::dup2(errPipe[1], STDERR_FILENO);
    if (input >= 0) ::dup2(input, STDIN_FILENO);
    ::execvp(raw[0], raw.data());
    ::_exit(127);
  }
  ::close(outPipe[1]);
  ::close(errPipe[1]);
  if (input >= 0) ::close(input);
  outFd_ = outPipe[0];
  errFd_ = errPipe[0];
}

ToolProcess::~ToolProcess() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  closeFd(outFd_);
  closeFd(errFd_);
}

bool ToolProcess::pump(std::chrono::milliseconds timeout) {
  std::array<pollfd, 2> fds{{{outFd_, POLLIN, 0}, {errFd_, POLLIN, 0}}};
  if (outFd_ < 0 && errFd_ < 0) return false;
  const int ready = ::poll(fds.data(), fds.size(), static_cast<int>(timeout.count()));
  if (ready <= 0) return true;
  std::array<int *, 2> owners{&outFd_, &errFd_};
  std::array<std::string *, 2> sinks{&out_, &err_};
  for (size_t i = 0; i < fds.size(); ++i) {
    if (fds[i].fd < 0 || fds[i].revents == 0) continue;
    char buffer[4096];
    const ssize_t got = ::read(fds[i].fd, buffer, sizeof buffer);
    if (got > 0) sinks[i]->append(buffer, static_cast<size_t>(got));
    else if (got == 0 || errno != EINTR) closeFd(*owners[i]);
  }
  return outFd_ >= 0 || errFd_ >= 0;
}

std::optional<std::string> ToolProcess::readLine(std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  for (;;) {
    if (const size_t end = out_.find('\n', outConsumed_); end != std::string::npos) {
      std::string line = out_.substr(outConsumed_, end - outConsumed_);
      outConsumed_ = end + 1;
      return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || !pump(left)) return std::nullopt;
  }
}

bool ToolProcess::waitForError(const std::string &text, std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  while (err_.find(text) == std::string::npos) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0 || !pump(left)) return err_.find(text) != std::string::npos;
  }
  return true;
}

void ToolProcess::signal(int number) const { ::kill(pid_, number); }

ToolResult ToolProcess::finish(std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  while (pump(std::chrono::milliseconds(100))) {
    if (Clock::now() >= deadline) {
      ADD_FAILURE() << "the tool did not end in time; killed";
      ::kill(pid_, SIGKILL);
    }
  }
  int status = 0;
  ::waitpid(pid_, &status, 0);
  pid_ = -1;
  ToolResult result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.out = out_.substr(outConsumed_);
  result.err = err_;
  result.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started_);
  return result;
}

ToolResult runTool(const std::vector<std::string> &args, const ToolOptions &options) {
  return ToolProcess(args, options).finish();
}

}  // namespace nvx::test
