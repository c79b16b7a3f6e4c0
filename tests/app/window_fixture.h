// A setup window on virtual mixers with a scratch settings folder, and ways to drive it: find a
// setting row by its id, change it as the user would, let the main loop run.
#pragma once

#include <gtest/gtest.h>
#include <gtkmm.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "setup_window.h"
#include "support/sandbox.h"

namespace nvx::test {

// Lets the main loop run until nothing is pending.
void drain();
// Lets the main loop run until `done` holds or `timeout` passes; returns `done()`.
bool runUntil(const std::function<bool()> &done, std::chrono::milliseconds timeout = std::chrono::seconds(5));
class SetupWindowTest : public ::testing::Test, public Sandbox {
 protected:
  SetupWindowTest() { bus.setMixers({VirtualMixer{}, VirtualMixer{}}); }
  ~SetupWindowTest() override;

  // A new window (an open one is closed first), shown and drawn once.
  mxrk7setup::SetupWindow &open(int width = 960);
  mxrk7setup::SetupWindow &window() { return *window_; }

  mxrk7setup::SettingRow &row(const std::string &id);
  // As the user does it: choose a value in a row (menu entry by its value, number, switch).
  void choose(const std::string &id, uint32_t value);
  // The value a row shows; nullopt when it says "Not set".
  std::optional<uint32_t> shown(const std::string &id) { return row(id).shownValue(); }

 private:
  std::unique_ptr<mxrk7setup::SetupWindow> window_;
};

}  // namespace nvx::test
