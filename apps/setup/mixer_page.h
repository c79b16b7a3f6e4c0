// The "Mixer" page: whether a mixer is connected and can be opened, how many there are, what the
// library reads from the mixer (firmware, input selectors, Serato), the versions, and what to do
// when no mixer can be used.
#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <string>

namespace mxrk7setup {

class MixerPage : public Gtk::Box {
 public:
  enum class Problem : uint8_t {
    None,     // at least one mixer opened
    NoMixer,  // nothing on the bus
    Denied,   // a mixer is there but this user may not open it: the udev rule is missing
    Busy,     // another program holds every mixer
    Failed,   // the mixers could not be opened for another reason
  };

  // `startDemo` is offered when no mixer is present (empty: no offer).
  explicit MixerPage(std::function<void()> startDemo);

  // Reads the bus and the mixers' status again.
  void refresh();
  // Counts the mixers without opening one; refreshes when the count changed. Returns the count.
  uint32_t poll();

  Problem problem() const { return problem_; }
  uint32_t mixerCount() const { return count_; }
  std::string connectionText() const { return connection_.get_text(); }
  std::string firmwareText() const { return firmware_.get_text(); }
  std::string selectorsText() const { return selectors_.get_text(); }
  std::string seratoText() const { return serato_.get_text(); }
  std::string problemText() const { return problemTitle_.get_text() + "\n" + problemBody_.get_text(); }

 private:
  void showProblem(Problem problem, const std::string &detail);

  std::function<void()> startDemo_;
  Problem problem_ = Problem::NoMixer;
  uint32_t count_ = UINT32_MAX;

  Gtk::Label connection_;
  Gtk::Box problemBox_{Gtk::Orientation::VERTICAL, 6};
  Gtk::Label problemTitle_, problemBody_, problemCommand_;
  Gtk::Button demoButton_{"Start the _demo with virtual mixers", true};
  Gtk::Grid status_;
  Gtk::Label firmware_, selectors_, serato_, mixers_;
  Gtk::Label libraryVersion_, driverVersion_, setupVersion_, settingsFile_;
  Gtk::Button refresh_{"_Refresh", true};
};

}  // namespace mxrk7setup
