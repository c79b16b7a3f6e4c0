// Every test of this binary, and every helper program it starts, runs the setters against an empty
// virtual USB bus and a scratch settings folder: no real mixer is touched, no real file written.
#include <gtest/gtest.h>

#include <memory>

#include "support/settings_file.h"
#include "support/virtual_bus.h"

namespace {

class SetterSandbox : public ::testing::Environment {
 public:
  void SetUp() override {
    mixers_ = std::make_unique<nvx::test::VirtualBus>();
    settings_ = std::make_unique<nvx::test::SettingsHome>();
  }
  void TearDown() override {
    settings_.reset();
    mixers_.reset();
  }

 private:
  std::unique_ptr<nvx::test::VirtualBus> mixers_;
  std::unique_ptr<nvx::test::SettingsHome> settings_;
};

[[maybe_unused]] const auto *const sandbox = ::testing::AddGlobalTestEnvironment(new SetterSandbox);

}  // namespace
