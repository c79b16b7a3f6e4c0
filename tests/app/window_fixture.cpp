#include "window_fixture.h"

#include <thread>

namespace nvx::test {

void drain() {
  while (g_main_context_pending(nullptr)) g_main_context_iteration(nullptr, false);
}

bool runUntil(const std::function<bool()> &done, std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!done()) {
    if (std::chrono::steady_clock::now() >= deadline) return done();
    if (!g_main_context_iteration(nullptr, false)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

WindowTest::WindowTest() {
  // The library's warning text comes in the user's language: pin it for the tests.
  env_.set("LANGUAGE", std::nullopt);
  env_.set("LC_ALL", std::nullopt);
  env_.set("LC_MESSAGES", std::nullopt);
  env_.set("LANG", "C");
}

WindowTest::~WindowTest() { closeWindow(); }

mxrk7setup::SetupWindow &WindowTest::open() {
  closeWindow();
  window_ = std::make_unique<mxrk7setup::SetupWindow>();
  window_->present();
  runUntil([this] { return window_->get_mapped(); });
  drain();
  return *window_;
}

void WindowTest::closeWindow() {
  if (!window_) return;
  window_->hide();
  window_.reset();
  drain();
}

void WindowTest::pick(const std::string &id, guint index) {
  auto &menu = control<Gtk::DropDown>(id);
  ASSERT_TRUE(menu.get_sensitive()) << id << " cannot be changed";
  menu.set_selected(index);
  drain();
}

void WindowTest::enter(const std::string &id, int value) {
  auto &spin = control<Gtk::SpinButton>(id);
  ASSERT_TRUE(spin.get_sensitive()) << id << " cannot be changed";
  spin.set_value(value);
  drain();
}

void WindowTest::flip(const std::string &id, bool on) {
  auto &toggle = control<Gtk::Switch>(id);
  toggle.set_active(on);
  drain();
}

std::vector<std::string> WindowTest::items(const std::string &id) {
  auto model = control<Gtk::DropDown>(id).get_model();
  auto strings = std::dynamic_pointer_cast<Gtk::StringList>(model);
  std::vector<std::string> texts;
  if (!strings) return texts;
  for (guint i = 0; i < strings->get_n_items(); ++i) texts.emplace_back(strings->get_string(i));
  return texts;
}

VirtualMixer WindowTest::mixer(std::array<int, 4> selectors) {
  VirtualMixer m;
  m.firmware = {5, 1};
  m.selectors = selectors;
  return m;
}

}  // namespace nvx::test
