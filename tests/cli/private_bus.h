// A session bus of a test's own, for the verbs that announce or hear changes.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

namespace nvx::test {

// A session bus of the test's own: dbus-daemon prints its address, and is killed at the end.
class PrivateBus {
 public:
  PrivateBus() {
    std::vector<std::string> argv{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"};
    std::array<int, 2> out{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0) return;
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(out[1], STDOUT_FILENO);
      const int devnull = ::open("/dev/null", O_WRONLY);
      ::dup2(devnull, STDERR_FILENO);
      std::vector<char *> raw;
      for (auto &arg : argv) raw.push_back(arg.data());
      raw.push_back(nullptr);
      ::execvp(raw[0], raw.data());
      ::_exit(127);
    }
    ::close(out[1]);
    char buffer[512];
    std::string line;
    while (line.find('\n') == std::string::npos) {
      const ssize_t got = ::read(out[0], buffer, sizeof buffer);
      if (got <= 0) break;
      line.append(buffer, static_cast<size_t>(got));
    }
    ::close(out[0]);
    address_ = line.substr(0, line.find('\n'));
  }
  ~PrivateBus() { stop(); }
  // Ends the bus, as when the user's session bus goes away.
  void stop() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
      pid_ = -1;
    }
  }
  PrivateBus(const PrivateBus &) = delete;
  PrivateBus &operator=(const PrivateBus &) = delete;
  const std::string &address() const { return address_; }

 private:
  pid_t pid_ = -1;
  std::string address_;
};

}  // namespace nvx::test
