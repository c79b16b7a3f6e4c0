#include "child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

extern char **environ;

namespace nvx::test {

namespace {

using Clock = std::chrono::steady_clock;

int remainingMs(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string> &argv, const Environment &changes) {
  std::map<std::string, std::string> env;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string text(*entry);
    const auto eq = text.find('=');
    if (eq != std::string::npos) env[text.substr(0, eq)] = text.substr(eq + 1);
  }
  for (const auto &[name, value] : changes) {
    if (value) env[name] = *value;
    else env.erase(name);
  }
  std::vector<std::string> envText;
  for (const auto &[name, value] : env) envText.push_back(name + "=" + value);
  std::vector<char *> envp;
  for (auto &text : envText) envp.push_back(text.data());
  envp.push_back(nullptr);
  std::vector<std::string> args = argv;
  std::vector<char *> argp;
  for (auto &arg : args) argp.push_back(arg.data());
  argp.push_back(nullptr);

  int toChild[2];
  int fromChild[2];
  if (pipe2(toChild, O_CLOEXEC) != 0 || pipe2(fromChild, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
  const int spawned = posix_spawn(&pid_, argp[0], &actions, nullptr, argp.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(toChild[0]);
  close(fromChild[1]);
  in_ = toChild[1];
  out_ = fromChild[0];
  if (spawned != 0) throw std::runtime_error("cannot start " + argv[0]);
}

ChildProcess::~ChildProcess() { finish(std::chrono::milliseconds(5000)); }

void ChildProcess::send(const std::string &line) {
  const std::string text = line + "\n";
  if (in_ < 0 || write(in_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("cannot write to the child");
  }
}

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  for (;;) {
    const auto end = buffer_.find('\n');
    if (end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    if (out_ < 0) return std::nullopt;
    pollfd pfd{out_, POLLIN, 0};
    if (poll(&pfd, 1, remainingMs(deadline)) <= 0) return std::nullopt;
    char chunk[512];
    const ssize_t n = read(out_, chunk, sizeof(chunk));
    if (n <= 0) {
      close(out_);
      out_ = -1;
      return std::nullopt;
    }
    buffer_.append(chunk, static_cast<size_t>(n));
  }
}

std::optional<std::vector<std::string>> ChildProcess::readUntil(const std::string &prefix,
                                                                std::chrono::milliseconds limit) {
  const auto deadline = Clock::now() + limit;
  std::vector<std::string> lines;
  while (auto line = readLine(std::chrono::milliseconds(remainingMs(deadline)))) {
    lines.push_back(*line);
    if (line->rfind(prefix, 0) == 0) return lines;
  }
  return std::nullopt;
}

std::optional<int> ChildProcess::finish(std::chrono::milliseconds limit) {
  if (pid_ < 0) return std::nullopt;
  if (in_ >= 0) {
    close(in_);
    in_ = -1;
  }
  const auto deadline = Clock::now() + limit;
  int status = 0;
  for (;;) {
    const pid_t done = waitpid(pid_, &status, WNOHANG);
    if (done == pid_) break;
    if (Clock::now() >= deadline) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
      pid_ = -1;
      return std::nullopt;
    }
    usleep(5000);
  }
  pid_ = -1;
  if (out_ >= 0) {
    // Keep what the child wrote last for readLine().
    char chunk[512];
    ssize_t n = 0;
    while ((n = read(out_, chunk, sizeof(chunk))) > 0) buffer_.append(chunk, static_cast<size_t>(n));
    close(out_);
    out_ = -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace nvx::test
