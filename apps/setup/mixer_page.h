// The "Mixers" page: every connected mixer with its own firmware, input selectors, Serato state
// and access state, what to do when a mixer cannot be used, and where the settings are saved.
// With no mixer at all it is a status page that says so (and offers the demo).
#pragma once

#include <adwaita.h>

#include <functional>
#include <string>
#include <vector>

#include "support/mixer_probe.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

class MixerPage {
 public:
  // `startDemo` is offered when no mixer is present (empty: no offer).
  explicit MixerPage(std::function<void()> startDemo);

  GtkWidget *widget() const { return stack_; }

  // Shows the mixers as `bus` found them (with their status) and the settings file's state.
  void show(const nvx::support::BusReport &bus, const nvx::support::StoredSettings &file);

  // For tests: one line per mixer, "Mixer 2: No permission · Virtual mixer"; and the lines of a
  // mixer's details ("Firmware: 1.05", ...).
  std::vector<std::string> mixerLines() const { return lines_; }
  std::vector<std::string> detailLines(size_t mixer) const;
  bool showsNoMixer() const;

 private:
  GtkWidget *stack_ = nullptr;
  GtkWidget *list_ = nullptr;    // the preferences page
  GtkWidget *mixers_ = nullptr;  // its group of mixers
  GtkWidget *access_ = nullptr;  // "Allow access", shown while a mixer is denied
  GtkWidget *fileRow_ = nullptr;
  GtkWidget *fileState_ = nullptr;
  GtkWidget *demo_ = nullptr;
  std::vector<GtkWidget *> rows_;
  std::vector<std::string> lines_;
  std::vector<std::vector<std::string>> details_;
  std::function<void()> startDemo_;
};

}  // namespace mxrk7setup
