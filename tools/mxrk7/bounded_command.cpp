#include "bounded_command.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace mxrk7 {

std::optional<CommandResult> runBounded(const std::vector<std::string> &argv, std::chrono::milliseconds bound) {
  if (argv.empty()) return std::nullopt;
  std::array<int, 2> out{};
  if (::pipe2(out.data(), O_CLOEXEC) != 0) return std::nullopt;
  std::vector<char *> raw;
  for (const auto &arg : argv) raw.push_back(const_cast<char *>(arg.c_str()));
  raw.push_back(nullptr);
  const int devnull = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::dup2(devnull, STDIN_FILENO);
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(devnull, STDERR_FILENO);
    ::execvp(raw[0], raw.data());
    ::_exit(127);
  }
  ::close(out[1]);
  if (devnull >= 0) ::close(devnull);
  if (pid < 0) {
    ::close(out[0]);
    return std::nullopt;
  }

  CommandResult result;
  const auto deadline = std::chrono::steady_clock::now() + bound;
  bool open = true;
  while (open) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    pollfd fd{out[0], POLLIN, 0};
    const int ready = ::poll(&fd, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) break;
    if (ready <= 0) continue;
    char buffer[1024];
    const ssize_t got = ::read(out[0], buffer, sizeof buffer);
    if (got > 0) result.out.append(buffer, static_cast<size_t>(got));
    else if (got == 0 || errno != EINTR) open = false;
  }
  ::close(out[0]);

  // Output closed (or the time is up): the child has ended or is about to; wait for it within what
  // is left of the bound, then kill it.
  int status = 0;
  for (;;) {
    const pid_t done = ::waitpid(pid, &status, WNOHANG);
    if (done == pid) break;
    if (done < 0 && errno != EINTR) return std::nullopt;
    if (std::chrono::steady_clock::now() >= deadline) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
      return std::nullopt;
    }
    ::usleep(10'000);
  }
  if (!WIFEXITED(status)) return std::nullopt;
  result.exitCode = WEXITSTATUS(status);
  return result;
}

}  // namespace mxrk7
