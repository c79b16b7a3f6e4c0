// Session buses of a test's own: a dbus-daemon that answers, and a socket that never does.
#pragma once

#include <memory>
#include <string>

#include "support/process.h"

namespace nvx::test {

// A session bus daemon of the test's own, ended with the object (or earlier, by stop()).
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus() { stop(); }
  // Ends the bus, as when the user's session ends.
  void stop();
  const std::string &address() const { return address_; }

 private:
  std::unique_ptr<Process> daemon_;
  std::string address_;
};

// A Unix socket that takes connections into its backlog and never reads or answers: a bus that
// does not answer.
class SilentSocket {
 public:
  explicit SilentSocket(const std::string &path);
  ~SilentSocket();
  SilentSocket(const SilentSocket &) = delete;
  SilentSocket &operator=(const SilentSocket &) = delete;
  std::string address() const { return "unix:path=" + path_; }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace nvx::test
