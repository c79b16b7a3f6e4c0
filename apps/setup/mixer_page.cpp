#include "mixer_page.h"

#include <NorvaneMXRK7Setup.h>

#include <array>

#include "support/program_environment.h"
#include "controls.h"
#include "library.h"
#include "support/mixer_count.h"
#include "support/mixer_probe.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using nvx::support::Access;

Gtk::Label *heading(const std::string &text) {
  auto *label = Gtk::make_managed<Gtk::Label>(text);
  label->set_halign(Gtk::Align::START);
  label->add_css_class("heading");
  return label;
}

void valueLabel(Gtk::Label &label) {
  label.set_halign(Gtk::Align::START);
  label.set_wrap(true);
}

void addRow(Gtk::Grid &grid, int row, const std::string &name, Gtk::Label &value) {
  auto *key = Gtk::make_managed<Gtk::Label>(name);
  key->set_halign(Gtk::Align::START);
  key->add_css_class("dim-label");
  grid.attach(*key, 0, row);
  valueLabel(value);
  setAccessibleLabel(value, name);
  grid.attach(value, 1, row);
}

std::string mixerWord(uint32_t count) { return count == 1 ? "1 mixer" : std::to_string(count) + " mixers"; }

}  // namespace

MixerPage::MixerPage(std::function<void()> startDemo)
    : Gtk::Box(Gtk::Orientation::VERTICAL, 12), startDemo_(std::move(startDemo)) {
  set_margin(18);

  connection_.set_halign(Gtk::Align::START);
  connection_.add_css_class("title-2");
  connection_.set_name("mixer-connection");
  append(connection_);

  // The fix, when no mixer can be used.
  problemBox_.add_css_class("card");
  problemBox_.set_name("mixer-problem");
  for (auto *label : {&problemTitle_, &problemBody_, &problemCommand_}) {
    label->set_halign(Gtk::Align::START);
    label->set_wrap(true);
    label->set_margin_start(12);
    label->set_margin_end(12);
  }
  problemTitle_.add_css_class("heading");
  problemTitle_.set_margin_top(12);
  problemCommand_.add_css_class("monospace");
  problemCommand_.set_selectable(true);
  problemCommand_.set_margin_bottom(12);
  setAccessibleLabel(problemCommand_, "Commands to run");
  problemBox_.append(problemTitle_);
  problemBox_.append(problemBody_);
  problemBox_.append(problemCommand_);
  demoButton_.set_name("start-demo");
  demoButton_.set_halign(Gtk::Align::START);
  demoButton_.set_margin_start(12);
  demoButton_.set_margin_bottom(12);
  setAccessibleLabel(demoButton_, "Start the demo with virtual mixers");
  demoButton_.signal_clicked().connect([this] {
    if (startDemo_) startDemo_();
  });
  problemBox_.append(demoButton_);
  append(problemBox_);

  status_.set_row_spacing(6);
  status_.set_column_spacing(18);
  int row = 0;
  status_.attach(*heading("What the mixer reports"), 0, row++, 2);
  addRow(status_, row++, "Mixers on the bus", mixers_);
  addRow(status_, row++, "Firmware version", firmware_);
  addRow(status_, row++, "Input selectors 1-4", selectors_);
  addRow(status_, row++, "Serato", serato_);
  status_.attach(*heading("Versions"), 0, row++, 2);
  addRow(status_, row++, "Library", libraryVersion_);
  addRow(status_, row++, "Driver", driverVersion_);
  addRow(status_, row++, "Setup application", setupVersion_);
  addRow(status_, row++, "Settings file", settingsFile_);
  firmware_.set_name("mixer-firmware");
  selectors_.set_name("mixer-selectors");
  serato_.set_name("mixer-serato");
  mixers_.set_name("mixer-list");
  append(status_);

  refresh_.set_name("mixer-refresh");
  refresh_.set_halign(Gtk::Align::START);
  setAccessibleLabel(refresh_, "Read the mixer's status again");
  refresh_.signal_clicked().connect([this] { refresh(); });
  append(refresh_);

  libraryVersion_.set_text(lib::libraryVersion().value_or("unknown (its version file is missing)"));
  driverVersion_.set_text(lib::driverVersion().value_or("the kernel's USB audio driver (no driver of its own)"));
  setupVersion_.set_text(lib::setupVersion().value_or("unknown (its version file is not installed)"));
  refresh();
}

void MixerPage::showProblem(Problem problem, const std::string &detail) {
  problem_ = problem;
  problemBox_.set_visible(problem != Problem::None);
  demoButton_.set_visible(problem == Problem::NoMixer && startDemo_ && !nvx::support::usingVirtualMixers());
  problemCommand_.set_visible(problem == Problem::Denied);
  switch (problem) {
    case Problem::None:
      break;
    case Problem::NoMixer:
      problemTitle_.set_text("No mixer is connected");
      problemBody_.set_text(
          "Connect the MXR-K7 with its USB cable and switch it on; this page updates by itself. Settings you change "
          "meanwhile are remembered and sent when the mixer is back (or with \"Send all settings to the mixer\")." +
          std::string(nvx::support::usingVirtualMixers() ? "" : "\nNo mixer at hand? Try the application with two virtual mixers."));
      break;
    case Problem::Denied:
      problemTitle_.set_text("The mixer cannot be opened: permission denied");
      problemBody_.set_text(
          "The mixer is connected, but this user may not use it. Install the udev rule that gives the person at the "
          "computer access to the mixer, then unplug the mixer and plug it in again:" +
          (detail.empty() ? std::string() : "\n" + detail));
      problemCommand_.set_text(
          "mxrk7 udev-rule | sudo tee /etc/udev/rules.d/70-mxrk7.rules\nsudo udevadm control --reload-rules");
      break;
    case Problem::Busy:
      problemTitle_.set_text("The mixer is in use by another program");
      problemBody_.set_text("Another program holds the mixer. Close it, then press Refresh." +
                            (detail.empty() ? std::string() : "\n" + detail));
      break;
    case Problem::Failed:
      problemTitle_.set_text("The mixer cannot be opened");
      problemBody_.set_text(detail.empty() ? "The USB layer could not open the mixer." : detail);
      break;
  }
}

void MixerPage::refresh() {
  const auto bus = nvx::support::probeMixers(nvx::support::Probe::AccessOnly);
  count_ = static_cast<uint32_t>(bus.mixers.size());
  const size_t usable = bus.accessible();
  const bool connected = NVX_IsUSBConnection(lib::productId()) == NVX_CONNECTED;

  // Which problem stands in the way when no mixer opened.
  Problem problem = Problem::None;
  std::string detail;
  if (!connected || bus.mixers.empty()) {
    problem = Problem::NoMixer;
    if (!bus.transportAvailable) detail = "The USB layer could not be started.";
  } else if (usable == 0) {
    problem = Problem::Failed;
    for (const auto &mixer : bus.mixers) {
      if (mixer.access == Access::Denied) problem = Problem::Denied;
      else if (mixer.access == Access::Busy && problem != Problem::Denied) problem = Problem::Busy;
      if (!mixer.openError.empty() && detail.empty()) detail = mixer.openError;
      if (!mixer.node.empty() && problem == Problem::Denied) detail = "Device: " + mixer.node;
    }
  }
  showProblem(problem, detail);

  if (problem == Problem::NoMixer) connection_.set_text("No mixer connected");
  else if (problem == Problem::None)
    connection_.set_text("Connected: " + mixerWord(count_) +
                         (usable < count_ ? " (" + std::to_string(usable) + " can be used)" : std::string()) +
                         (bus.transport == "virtual" ? ", virtual" : ""));
  else connection_.set_text("Connected, but not usable: " + mixerWord(count_));
  setAccessibleLabel(connection_, connection_.get_text());

  std::string list;
  for (const auto &mixer : bus.mixers) {
    if (!list.empty()) list += "\n";
    list += "Mixer " + std::to_string(mixer.number + 1) + ": " +
            (mixer.node.empty() ? mixer.port : "bus " + std::to_string(mixer.bus) + ", port " + mixer.port) + ", " +
            nvx::support::accessName(mixer.access);
  }
  mixers_.set_text(list.empty() ? "none" : list);

  // The live status, as the library reads it: firmware of the first mixer, the others of the last
  // one that opened. Outputs are preset so "no answer" can be told apart.
  constexpr const char *kNoAnswer = "-";
  int32_t firmware = -1;
  if (problem == Problem::None && NVX_GetFirmwareVersionIndex(lib::productId(), &firmware) == NVX_OK &&
      firmware != -1) {
    const std::array<uint8_t, 2> bytes = {static_cast<uint8_t>(firmware & 0xFF),
                                          static_cast<uint8_t>((firmware >> 8) & 0xFF)};
    firmware_.set_text(nvx::support::firmwareText(bytes));
  } else {
    firmware_.set_text(kNoAnswer);
  }
  std::string selectors;
  for (int32_t selector = 1; selector <= 4; ++selector) {
    int32_t position = -1;
    const bool read = problem == Problem::None &&
                      NVX_GetMixerInputSelectorStatus(lib::productId(), selector, &position) == NVX_OK && position >= 0;
    selectors += (selector > 1 ? "   " : "") + std::to_string(selector) + ": " +
                 (read ? std::to_string(position) : std::string(kNoAnswer));
  }
  selectors_.set_text(selectors);
  int32_t serato = -1;
  if (problem == Problem::None && NVX_GetMixerSeratoActiveStatus(lib::productId(), &serato) == NVX_OK && serato >= 0)
    serato_.set_text(serato == 1 ? "active" : "not active");
  else serato_.set_text(kNoAnswer);

  const auto file = nvx::support::StoredSettings::read();
  settingsFile_.set_text(file.path() + " (" + nvx::support::stateName(file.state()) + ")");
}

uint32_t MixerPage::poll() {
  const uint32_t count = nvx::support::countMixers();
  if (count != count_) refresh();
  return count;
}

}  // namespace mxrk7setup
