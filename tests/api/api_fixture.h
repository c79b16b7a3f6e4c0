// Every API test runs in a sandbox: its own virtual mixers, its own settings folder, no session bus.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "NorvaneMXRK7Setup.h"
#include "support/sandbox.h"

namespace nvx::test {

class ApiTest : public ::testing::Test, public Sandbox {
 protected:
  static std::vector<VirtualMixer> mixers(size_t n) { return std::vector<VirtualMixer>(n); }
};

// The request log lines a write to every one of `count` mixers leaves.
inline std::vector<std::string> writesToEach(int count, uint16_t wIndex, uint16_t value) {
  std::vector<std::string> lines;
  for (int n = 0; n < count; ++n) lines.push_back(writeLine(n, wIndex, value));
  return lines;
}

}  // namespace nvx::test
