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

SetupWindowTest::~SetupWindowTest() {
  if (!window_) return;
  window_->hide();
  window_.reset();
  drain();
}

mxrk7setup::SetupWindow &SetupWindowTest::open(int width) {
  if (window_) window_->hide();
  window_ = std::make_unique<mxrk7setup::SetupWindow>();
  window_->set_default_size(width, 700);
  window_->present();
  runUntil([this] { return window_->get_mapped(); });
  drain();
  return *window_;
}

mxrk7setup::SettingRow &SetupWindowTest::row(const std::string &id) {
  mxrk7setup::SettingRow *found = window_->rows().find(id);
  if (!found) throw std::runtime_error("no row " + id);
  return *found;
}

void SetupWindowTest::choose(const std::string &id, uint32_t value) {
  ASSERT_TRUE(row(id).changeable()) << id << " cannot be changed";
  row(id).choose(value);
  drain();
}

}  // namespace nvx::test
