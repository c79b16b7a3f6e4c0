// What every test of the tool starts from: virtual mixers (none until a test plugs some in), an
// empty settings folder, English messages, and no session bus (so that no test posts to the
// desktop's bus; the watch tests bring their own).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/settings_file.h"
#include "support/virtual_bus.h"
#include "tool_process.h"

namespace nvx::test {

class EnvironmentReset {
 public:
  EnvironmentReset() {
    for (const char *name : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "LANGUAGE", "LC_ALL", "LC_MESSAGES",
                             "MXRK7_SYSROOT", "MXRK7_USB_ID"})
      env.set(name, std::nullopt);
    env.set("LANG", "C");
  }
  EnvGuard env;
};

class CliTest : public ::testing::Test {
 protected:
  // Only the vendor writes of the log (the routing setter also reads the input selectors).
  std::vector<std::string> writes() const {
    std::vector<std::string> lines;
    for (const auto &line : bus.requests())
      if (line.find(" 40 03 ") != std::string::npos) lines.push_back(line);
    return lines;
  }

  static VirtualMixer busyMixer() {
    VirtualMixer mixer;
    mixer.open = "busy";
    return mixer;
  }

  EnvironmentReset reset;  // first: the members below set their own variables
  SettingsHome settings;
  VirtualBus bus;
};

}  // namespace nvx::test
