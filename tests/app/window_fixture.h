// A setup window on virtual mixers with a scratch settings folder, and ways to drive it: find a
// control by its id, change it as the user would, let the main loop run.
#pragma once

#include <gtest/gtest.h>
#include <gtkmm.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "setup_window.h"
#include "support/settings_file.h"
#include "support/virtual_bus.h"

namespace nvx::test {

// Lets the main loop run until nothing is pending.
void drain();
// Lets the main loop run until `done` holds or `timeout` passes; returns `done()`.
bool runUntil(const std::function<bool()> &done, std::chrono::milliseconds timeout = std::chrono::seconds(5));

class WindowTest : public ::testing::Test {
 protected:
  WindowTest();
  ~WindowTest() override;

  // A new window (an open one is closed first), shown and drawn once.
  mxrk7setup::SetupWindow &open();
  void closeWindow();
  mxrk7setup::SetupWindow &window() { return *window_; }

  template <typename W>
  W &control(const std::string &id) {
    Gtk::Widget *widget = window_->controls().find(id);
    EXPECT_NE(widget, nullptr) << "no control " << id;
    W *typed = dynamic_cast<W *>(widget);
    if (!typed) throw std::runtime_error("control " + id + " is not of the expected kind");
    return *typed;
  }
  // As the user does it: pick a menu entry, enter a number, flip a switch.
  void pick(const std::string &id, guint index);
  void enter(const std::string &id, int value);
  void flip(const std::string &id, bool on);
  guint selected(const std::string &id) { return control<Gtk::DropDown>(id).get_selected(); }
  int number(const std::string &id) { return control<Gtk::SpinButton>(id).get_value_as_int(); }
  std::vector<std::string> items(const std::string &id);

  static VirtualMixer mixer(std::array<int, 4> selectors = {4, 4, 4, 4});

  VirtualBus bus_{{mixer(), mixer()}};
  SettingsHome home_;
  EnvGuard env_;

 private:
  std::unique_ptr<mxrk7setup::SetupWindow> window_;
};

}  // namespace nvx::test
