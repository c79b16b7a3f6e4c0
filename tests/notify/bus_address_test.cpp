// Where the library looks for the session bus.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "notify/bus_address.h"
#include "support/scratch_dir.h"

namespace nvx::notify {
namespace {

// Binds a Unix socket at `path` (nothing listens on it; only its type matters here).
int bindSocket(const std::string &path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
  EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0) << path;
  return fd;
}

TEST(NotifyBusAddress, EnvironmentThenRuntimeFolderSocketThenNothing) {
  test::ScratchDir dir;
  const std::string withSocket = dir.path() + "/run";
  const std::string withFile = dir.path() + "/file";
  const std::string withFolder = dir.path() + "/folder";
  const std::string spaced = dir.path() + "/run time";
  ASSERT_EQ(mkdir(withSocket.c_str(), 0700), 0);
  ASSERT_EQ(mkdir(spaced.c_str(), 0700), 0);
  ASSERT_EQ(mkdir((withFolder).c_str(), 0700), 0);
  ASSERT_EQ(mkdir((withFolder + "/bus").c_str(), 0700), 0);
  dir.write("file/bus", "");
  const int socket1 = bindSocket(withSocket + "/bus");
  const int socket2 = bindSocket(spaced + "/bus");

  struct Case {
    const char *what;
    const char *dbusAddress;
    std::optional<std::string> runtimeDir;
    std::optional<std::string> expected;
  };
  const std::string fromEnv = "unix:path=/tmp/some bus,guid=0123";
  const std::vector<Case> cases = {
      {"environment wins", fromEnv.c_str(), withSocket, fromEnv},
      {"environment alone", fromEnv.c_str(), std::nullopt, fromEnv},
      {"empty environment falls back", "", withSocket, "unix:path=" + withSocket + "/bus"},
      {"runtime folder socket", nullptr, withSocket, "unix:path=" + withSocket + "/bus"},
      {"runtime folder path escaped", nullptr, spaced, "unix:path=" + dir.path() + "/run%20time/bus"},
      {"bus is a regular file", nullptr, withFile, std::nullopt},
      {"bus is a folder", nullptr, withFolder, std::nullopt},
      {"no bus in the folder", nullptr, dir.path(), std::nullopt},
      {"relative runtime folder", nullptr, std::string("run"), std::nullopt},
      {"empty runtime folder", nullptr, std::string(), std::nullopt},
      {"nothing set", nullptr, std::nullopt, std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(sessionBusAddressFrom(c.dbusAddress, c.runtimeDir ? c.runtimeDir->c_str() : nullptr), c.expected);
  }
  close(socket1);
  close(socket2);
}

TEST(NotifyBusAddress, ValuesAreEscapedForAddresses) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"/run/user/1000/bus", "/run/user/1000/bus"},
      {"a b", "a%20b"},
      {"x,y;z=w", "x%2cy%3bz%3dw"},
      {"100%", "100%25"},
      {"Tab\there", "Tab%09here"},
      {"\xc3\xa9", "%c3%a9"},
      {"A-Z_a.z", "A-Z_a.z"},
  };
  for (const auto &[raw, escaped] : cases) {
    EXPECT_EQ(escapeAddressValue(raw), escaped) << raw;
  }
}

}  // namespace
}  // namespace nvx::notify
