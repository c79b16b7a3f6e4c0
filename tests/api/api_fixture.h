// Every API test runs in a sandbox: its own virtual mixers, its own settings folder, no session bus.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "NorvaneMXRK7Setup.h"
#include "support/sandbox.h"

namespace nvx::test {

class ApiTest : public ::testing::Test, public Sandbox {
 protected:
  static std::vector<VirtualMixer> mixers(size_t n) { return std::vector<VirtualMixer>(n); }
};

// A call of the library in a table row, with its text for failure messages.
struct Call {
  const char *what;
  std::function<int32_t()> call;
};
#define CALL(expression) ::nvx::test::Call{#expression, [] { return expression; }}

}  // namespace nvx::test
