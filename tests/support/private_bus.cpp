#include "support/private_bus.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace nvx::test {

PrivateBus::PrivateBus()
    : daemon_(std::make_unique<Process>(
          std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"})),
      address_(daemon_->readLine(10s).value_or("")) {
  EXPECT_FALSE(address_.empty()) << "dbus-daemon did not start";
}

void PrivateBus::stop() {
  if (!daemon_) return;
  daemon_->signal(SIGTERM);
  daemon_->finish(10s);
  daemon_.reset();
}

SilentSocket::SilentSocket(const std::string &path)
    : path_(path), fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  EXPECT_LT(path.size(), sizeof address.sun_path) << path;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(::bind(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0) << path;
  EXPECT_EQ(::listen(fd_, 16), 0);
}

SilentSocket::~SilentSocket() { ::close(fd_); }

}  // namespace nvx::test
