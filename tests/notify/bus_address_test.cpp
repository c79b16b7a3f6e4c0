// Where the library looks for the session bus.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "notify/bus_address.h"
#include "support/private_bus.h"
#include "support/scratch_dir.h"

namespace nvx::notify {
namespace {

TEST(NotifyBusAddress, EnvironmentThenRuntimeFolderSocketThenNothing) {
  test::ScratchDir dir;
  const std::string withSocket = dir.path() + "/run", spaced = dir.path() + "/run time";
  const std::string withFile = dir.path() + "/file";
  for (const char *made : {"run/placeholder", "run time/placeholder", "file/bus"})
    dir.write(made, "");
  const test::SilentSocket socket1(withSocket + "/bus"), socket2(spaced + "/bus");

  struct Case {
    const char *what;
    const char *dbusAddress;
    std::optional<std::string> runtimeDir;
    std::optional<std::string> expected;
  };
  const std::string fromEnv = "unix:path=/tmp/some bus,guid=0123";
  const std::vector<Case> cases = {
      {"environment wins", fromEnv.c_str(), withSocket, fromEnv},
      {"empty environment falls back", "", withSocket, "unix:path=" + withSocket + "/bus"},
      {"runtime folder socket", nullptr, withSocket, "unix:path=" + withSocket + "/bus"},
      {"runtime folder path escaped", nullptr, spaced, "unix:path=" + dir.path() + "/run%20time/bus"},
      {"bus is a regular file", nullptr, withFile, std::nullopt},
      {"no bus in the folder", nullptr, dir.path(), std::nullopt},
      {"relative runtime folder", nullptr, std::string("run"), std::nullopt},
      {"empty runtime folder", nullptr, std::string(), std::nullopt},
      {"nothing set", nullptr, std::nullopt, std::nullopt},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(sessionBusAddressFrom(c.dbusAddress, c.runtimeDir ? c.runtimeDir->c_str() : nullptr), c.expected);
  }
}

// Everything but the characters D-Bus leaves as they are is escaped byte by byte.
TEST(NotifyBusAddress, ValuesAreEscapedForAddresses) {
  EXPECT_EQ(escapeAddressValue("/run/A-Z_a.z 1,2;3=4%\t\xc3\xa9"), "/run/A-Z_a.z%201%2c2%3b3%3d4%25%09%c3%a9");
}

}  // namespace
}  // namespace nvx::notify
