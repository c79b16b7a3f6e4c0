#include "support/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char **environ;

namespace nvx::test {

namespace {

using Clock = std::chrono::steady_clock;

void closeFd(int &fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

std::chrono::milliseconds until(Clock::time_point deadline) {
  return std::max(0ms, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()));
}

std::vector<std::string> environmentWith(const std::map<std::string, std::optional<std::string>> &changes) {
  std::map<std::string, std::string> env;
  for (char **entry = environ; *entry; ++entry) {
    const std::string text(*entry);
    if (const auto eq = text.find('='); eq != std::string::npos) env[text.substr(0, eq)] = text.substr(eq + 1);
  }
  for (const auto &[name, value] : changes) {
    if (value) env[name] = *value;
    else env.erase(name);
  }
  std::vector<std::string> out;
  for (const auto &[name, value] : env) out.push_back(name + "=" + value);
  return out;
}

std::vector<char *> pointers(std::vector<std::string> &texts) {
  std::vector<char *> out;
  for (auto &text : texts) out.push_back(text.data());
  out.push_back(nullptr);
  return out;
}

bool writeOnce(const std::string &path, const std::string &text) {
  std::ofstream file(path);
  file << text;
  file.flush();
  return static_cast<bool>(file);
}

}  // namespace

const nlohmann::json &Finished::json() const {
  if (!parsed_) {
    auto doc = nlohmann::json::parse(out, nullptr, false);
    EXPECT_FALSE(doc.is_discarded()) << "not one JSON document:\n" << transcript();
    parsed_ = doc.is_discarded() ? nlohmann::json() : std::move(doc);
  }
  return *parsed_;
}

std::vector<std::string> Finished::lines() const {
  std::vector<std::string> lines;
  std::istringstream in(out);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string Finished::transcript() const {
  return "exit " + std::to_string(exitCode) + "\n--- stdout\n" + out + "--- stderr\n" + err;
}

Process::Process(const std::vector<std::string> &argv, const ProcessOptions &options) : started_(Clock::now()) {
  std::vector<std::string> args = options.asUser ? runAs(*options.asUser) : std::vector<std::string>{};
  args.insert(args.end(), argv.begin(), argv.end());
  std::vector<std::string> env = environmentWith(options.env);
  std::vector<char *> argp = pointers(args), envp = pointers(env);
  std::array<int, 2> in{}, out{}, err{}, ready{}, go{};
  for (auto *p : {&in, &out, &err, &ready, &go})
    if (::pipe2(p->data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  const int input = options.stdinFile.empty() ? in[0] : ::open(options.stdinFile.c_str(), O_RDONLY | O_CLOEXEC);
  if (input < 0) throw std::runtime_error("cannot open " + options.stdinFile);
  ::signal(SIGPIPE, SIG_IGN);
  pid_ = ::fork();
  if (pid_ < 0) throw std::runtime_error("fork failed");
  if (pid_ == 0) {
    char byte = 0;
    if (options.namespaceUser &&
        (::unshare(CLONE_NEWUSER) != 0 || ::write(ready[1], &byte, 1) != 1 || ::read(go[0], &byte, 1) != 1))
      ::_exit(126);
    ::dup2(input, STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(err[1], STDERR_FILENO);
    ::execvpe(argp[0], argp.data(), envp.data());
    ::_exit(127);
  }
  if (options.namespaceUser) {
    char byte = 0;
    const std::string proc = "/proc/" + std::to_string(pid_);
    const bool mapped = ::read(ready[0], &byte, 1) == 1 &&
                        writeOnce(proc + "/uid_map", "0 0 1\n" + std::to_string(*options.namespaceUser) + " " +
                                                         std::to_string(*options.namespaceUser) + " 1\n") &&
                        writeOnce(proc + "/gid_map", "0 0 1\n");
    EXPECT_TRUE(mapped) << "cannot map the user namespace";
    EXPECT_EQ(::write(go[1], &byte, 1), 1);
  }
  for (int fd : {in[0], out[1], err[1], ready[0], ready[1], go[0], go[1]}) ::close(fd);
  if (input != in[0]) ::close(input);
  in_ = options.stdinFile.empty() ? in[1] : (::close(in[1]), -1);
  out_ = out[0];
  err_ = err[0];
}

Process::~Process() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
  }
  closeFd(in_);
  closeFd(out_);
  closeFd(err_);
}

void Process::writeLine(const std::string &line) {
  const std::string text = line + "\n";
  if (in_ < 0 || ::write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    ADD_FAILURE() << "cannot write to the child: " << line;
}

void Process::closeInput() { closeFd(in_); }

bool Process::pump(std::chrono::milliseconds timeout) {
  if (out_ < 0 && err_ < 0) return false;
  std::array<pollfd, 2> fds{{{out_, POLLIN, 0}, {err_, POLLIN, 0}}};
  if (::poll(fds.data(), fds.size(), static_cast<int>(timeout.count())) <= 0) return true;
  const std::array<int *, 2> owners{&out_, &err_};
  const std::array<std::string *, 2> sinks{&outText_, &errText_};
  for (size_t i = 0; i < fds.size(); ++i) {
    if (fds[i].fd < 0 || fds[i].revents == 0) continue;
    char buffer[4096];
    const ssize_t got = ::read(fds[i].fd, buffer, sizeof buffer);
    if (got > 0) sinks[i]->append(buffer, static_cast<size_t>(got));
    else if (got == 0 || errno != EINTR) closeFd(*owners[i]);
  }
  return out_ >= 0 || err_ >= 0;
}

std::optional<std::string> Process::readLine(std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  for (;;) {
    if (const size_t end = outText_.find('\n', outConsumed_); end != std::string::npos) {
      std::string line = outText_.substr(outConsumed_, end - outConsumed_);
      outConsumed_ = end + 1;
      return line;
    }
    if (until(deadline) == 0ms || !pump(until(deadline))) return std::nullopt;
  }
}

bool Process::waitForError(const std::string &text, std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  while (errText_.find(text) == std::string::npos)
    if (until(deadline) == 0ms || !pump(until(deadline))) return errText_.find(text) != std::string::npos;
  return true;
}

void Process::signal(int number) const { ::kill(pid_, number); }

Finished Process::finish(std::chrono::milliseconds timeout) {
  closeInput();
  const auto deadline = Clock::now() + timeout;
  while (pump(100ms)) {
    if (Clock::now() >= deadline) {
      ADD_FAILURE() << "the child did not end in time; killed";
      ::kill(pid_, SIGKILL);
    }
  }
  int status = 0;
  while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
  Finished result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.out = outText_.substr(outConsumed_);
  result.err = errText_;
  result.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started_);
  return result;
}

Finished run(const std::vector<std::string> &argv, const ProcessOptions &options) {
  return Process(argv, options).finish();
}

}  // namespace nvx::test
