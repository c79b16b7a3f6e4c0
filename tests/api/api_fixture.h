// Every API test runs against its own virtual mixers, its own config home and no session bus, so
// nothing leaves the test and nothing from the machine leaks in.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NorvaneMXRK7Setup.h"
#include "support/settings_file.h"
#include "support/virtual_bus.h"

namespace nvx::test {

class ApiTest : public ::testing::Test {
 protected:
  ApiTest() {
    env.set("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    env.set("XDG_RUNTIME_DIR", std::nullopt);
  }

  // n mixers with default answers.
  static std::vector<VirtualMixer> mixers(size_t n) { return std::vector<VirtualMixer>(n); }

  EnvGuard env;
  SettingsHome settings;
  VirtualBus bus;
};

// The request log lines a write to every one of `count` mixers leaves.
inline std::vector<std::string> writesToEach(int count, uint16_t wIndex, uint16_t value) {
  std::vector<std::string> lines;
  for (int n = 0; n < count; ++n) lines.push_back(writeLine(n, wIndex, value));
  return lines;
}

}  // namespace nvx::test
