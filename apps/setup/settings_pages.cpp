#include "settings_pages.h"

#include <NorvaneMXRK7Setup.h>

#include <array>
#include <memory>

#include "library.h"
#include "support/setting_table.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using lib::productId;
using Reader = Controls::Reader;

constexpr std::array<const char *, 3> kItemNames = {"type", "depth", "beat"};
constexpr std::array<const char *, 3> kItemLabels = {"Type", "Depth", "Beat"};
constexpr uint32_t kBeatMax = 54;  // the beat codes the library keeps

// A scrolling page with a title and an explanation.
struct Page {
  Gtk::ScrolledWindow *scroller;
  Gtk::Box *box;
};

Page page(const std::string &title, const std::string &intro) {
  auto *scroller = Gtk::make_managed<Gtk::ScrolledWindow>();
  scroller->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  auto *box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
  box->set_margin(18);
  auto *heading = Gtk::make_managed<Gtk::Label>(title);
  heading->add_css_class("title-2");
  heading->set_halign(Gtk::Align::START);
  box->append(*heading);
  if (!intro.empty()) {
    auto *text = Gtk::make_managed<Gtk::Label>(intro);
    text->set_wrap(true);
    text->set_xalign(0);
    text->set_max_width_chars(70);
    box->append(*text);
  }
  scroller->set_child(*box);
  return {scroller, box};
}

Gtk::Grid *grid() {
  auto *g = Gtk::make_managed<Gtk::Grid>();
  g->set_row_spacing(8);
  g->set_column_spacing(12);
  return g;
}

// A row: a mnemonic label for the control, the control, an optional note.
void row(Gtk::Grid &g, int r, const std::string &mnemonic, Gtk::Widget &control, const std::string &note = {}) {
  auto *label = Gtk::make_managed<Gtk::Label>(mnemonic, true);
  label->set_halign(Gtk::Align::START);
  label->set_mnemonic_widget(control);
  g.attach(*label, 0, r);
  control.set_hexpand(false);
  control.set_halign(Gtk::Align::START);
  g.attach(control, 1, r);
  if (!note.empty()) {
    auto *noteLabel = Gtk::make_managed<Gtk::Label>(note);
    noteLabel->add_css_class("dim-label");
    noteLabel->set_wrap(true);
    noteLabel->set_xalign(0);
    g.attach(*noteLabel, 2, r);
  }
}

Gtk::Label *section(const std::string &title) {
  auto *label = Gtk::make_managed<Gtk::Label>(title);
  label->add_css_class("heading");
  label->set_halign(Gtk::Align::START);
  label->set_margin_top(6);
  return label;
}

// A getter of the "play settings" kind: productId and an output.
Reader plainGetter(int32_t (*getter)(int32_t, uint32_t *), uint32_t preset) {
  return [getter, preset]() -> std::optional<uint32_t> {
    uint32_t value = preset;
    if (getter(productId(), &value) != NVX_OK) return std::nullopt;
    return value;
  };
}

// The channel-fader mode of a bank as the settings file holds it: the library has no getter, so it
// is read as the tool reads it (bank B and the temporary bank share one word, which names the bank
// set last).
std::optional<uint32_t> storedChannelFader(uint32_t bank) {
  static const nvx::support::Setting &setting = *nvx::support::findSetting("channel-fader");
  const auto values = setting.read({bank}, nvx::support::StoredSettings::read());
  if (!values) return std::nullopt;
  return values->front();
}

}  // namespace

std::string routingId(int32_t channel) { return "routing-" + std::to_string(channel); }
std::string filterModeId(uint32_t bank) { return "fx-" + std::to_string(bank) + "-filter-mode"; }
std::string filterParamId(uint32_t bank) { return "fx-" + std::to_string(bank) + "-filter-param"; }
std::string beatFxId(uint32_t bank, uint32_t position, uint32_t item) {
  return "fx-" + std::to_string(bank) + "-beat-" + std::to_string(position) + "-" + kItemNames.at(item);
}
std::string channelFaderId(uint32_t bank) { return "fx-" + std::to_string(bank) + "-channel-fader"; }
std::string tailId(uint32_t bank) { return "fx-" + std::to_string(bank) + "-tail"; }

Gtk::Widget *makeRoutingPage(Controls &controls, const PageEvents &events) {
  auto p = page("USB audio routing",
                "Choose the mixer signal that each USB audio channel sends to the computer. The choices are the "
                "ones the library offers for each channel.");
  auto *g = grid();
  for (int32_t channel = 0; channel < lib::kChannels; ++channel) {
    const std::string name = "USB audio channel " + std::to_string(channel);
    auto *menu = controls.menu(
        routingId(channel), name, lib::routingMenu(channel),
        [channel]() -> std::optional<uint32_t> {
          uint32_t index = 0;
          if (NVX_GetCurrentUSBInputAudioIndex(productId(), channel, &index) != NVX_OK) return std::nullopt;
          return index;
        },
        [channel, report = events.routingResult](uint32_t index) {
          report(channel, NVX_SetUSBInputAudio(productId(), channel, index));
        });
    std::string note;
    if (channel == lib::kFixedChannel) {
      menu->set_sensitive(false);
      note = "Fixed: the library does not change this channel.";
    }
    row(*g, channel, "USB audio channel _" + std::to_string(channel), *menu, note);
  }
  p.box->append(*g);
  return p.scroller;
}

Gtk::Widget *makeBoostPage(Controls &controls, const PageEvents &events) {
  auto p = page("Output boost",
                "The level of the mixer's USB audio output to the computer, in four steps. Other programs that "
                "change it show here at once.");
  auto *g = grid();
  auto *menu = controls.menu(
      kBoostId, "Output boost level", lib::boostMenu(),
      []() -> std::optional<uint32_t> {
        uint32_t index = 0;
        if (NVX_GetCurrentBoostLevelIndex(productId(), &index) != NVX_OK) return std::nullopt;
        return index;
      },
      [report = events.written](uint32_t index) { report("Output boost", NVX_SetBoostLevelIndex(productId(), index)); });
  row(*g, 0, "Output _boost level", *menu);
  p.box->append(*g);
  return p.scroller;
}

Gtk::Widget *makeFxPage(Controls &controls, const PageEvents &events) {
  auto p = page("FX banks",
                "Bank A, bank B and the temporary bank each hold a filter, six beat FX positions, a channel fader "
                "mode and a beat FX tail.");
  auto *notebook = Gtk::make_managed<Gtk::Notebook>();
  notebook->set_name("fx-banks");
  const auto filterModes = lib::filterModeMenu();
  const auto effects = lib::beatEffectMenu();
  const auto faderModes = lib::channelFaderMenu();

  for (uint32_t bank = 0; bank < lib::kBanks; ++bank) {
    const std::string bankName = lib::bankName(bank);
    auto *box = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 8);
    box->set_margin(12);

    // Filter: mode and parameter form one word; the parameter needs a mode to be sent with.
    box->append(*section("Filter"));
    auto *filter = grid();
    auto readFilter = [bank]() -> std::pair<std::optional<uint32_t>, std::optional<uint32_t>> {
      uint32_t mode = UINT32_MAX, param = UINT32_MAX;
      if (NVX_GetFXBANKFILTERModeIndex(productId(), bank, &mode, &param) != NVX_OK || mode == UINT32_MAX) return {};
      return {mode, param};
    };
    auto writeFilter = [bank, report = events.written, bankName](uint32_t mode, uint32_t param) {
      report(bankName + " filter", NVX_SetFXBANKFILTERModeIndex(productId(), bank, mode, param));
    };
    auto paramSpin = std::make_shared<Gtk::SpinButton *>(nullptr);  // made right after the mode
    auto *mode = controls.menu(
        filterModeId(bank), bankName + " filter mode", filterModes, [readFilter] { return readFilter().first; },
        [writeFilter, paramSpin](uint32_t value) {
          writeFilter(value, static_cast<uint32_t>((*paramSpin)->get_value_as_int()));
        });
    auto *param = controls.number(
        filterParamId(bank), bankName + " filter parameter", 255, [readFilter] { return readFilter().second; },
        [writeFilter, mode](uint32_t value) {
          if (mode->get_selected() != GTK_INVALID_LIST_POSITION) writeFilter(mode->get_selected(), value);
        });
    *paramSpin = param;
    // The parameter cannot be sent without a mode: it waits until one is chosen.
    auto followMode = [mode, param] { param->set_sensitive(mode->get_selected() != GTK_INVALID_LIST_POSITION); };
    mode->property_selected().signal_changed().connect(followMode);
    followMode();
    row(*filter, 0, "Filter _mode", *mode);
    row(*filter, 1, "Filter _parameter", *param, "0-255");
    box->append(*filter);

    // Beat FX: six positions, three items each.
    box->append(*section("Beat FX"));
    auto *beat = grid();
    for (uint32_t item = 0; item < kItemLabels.size(); ++item) {
      auto *header = Gtk::make_managed<Gtk::Label>(kItemLabels[item]);
      header->add_css_class("dim-label");
      header->set_halign(Gtk::Align::START);
      beat->attach(*header, static_cast<int>(item) + 1, 0);
    }
    for (uint32_t position = 0; position < lib::kPositions; ++position) {
      const char *positionName = FXBANKBFXPositionText[position];
      const std::string where = bankName + " beat FX " + std::to_string(position + 1);
      auto read = [bank, position](uint32_t item) {
        return [bank, position, item]() -> std::optional<uint32_t> {
          uint32_t value = UINT32_MAX;
          if (NVX_GetFXBANKBFXModeIndex(productId(), bank, position, item, &value) != NVX_OK || value == UINT32_MAX)
            return std::nullopt;
          return value;
        };
      };
      auto write = [bank, position, report = events.written, where](uint32_t item) {
        return [bank, position, item, report, where](uint32_t value) {
          report(where, NVX_SetFXBANKBFXModeIndex(productId(), bank, position, item, value));
        };
      };
      auto *label = Gtk::make_managed<Gtk::Label>(std::to_string(position + 1) + " (" + positionName + ")");
      label->set_halign(Gtk::Align::START);
      beat->attach(*label, 0, static_cast<int>(position) + 1);
      auto *type = controls.menu(beatFxId(bank, position, 0), where + " type", effects, read(0), write(0));
      auto *depth = controls.number(beatFxId(bank, position, 1), where + " depth", 255, read(1), write(1));
      auto *beats = controls.number(beatFxId(bank, position, 2), where + " beat", kBeatMax, read(2), write(2));
      beat->attach(*type, 1, static_cast<int>(position) + 1);
      beat->attach(*depth, 2, static_cast<int>(position) + 1);
      beat->attach(*beats, 3, static_cast<int>(position) + 1);
    }
    box->append(*beat);

    // Channel fader and tail.
    box->append(*section("Channel fader and tail"));
    auto *other = grid();
    auto *fader = controls.menu(
        channelFaderId(bank), bankName + " channel fader mode", faderModes, [bank] { return storedChannelFader(bank); },
        [bank, report = events.written, bankName](uint32_t value) {
          report(bankName + " channel fader", NVX_SetFXBANKCHFADERModeIndex(productId(), bank, value));
        });
    auto *tail = controls.toggle(
        tailId(bank), bankName + " beat FX tail",
        [bank]() -> std::optional<uint32_t> {
          uint32_t value = 0;
          if (NVX_GetFXBANKBFXTAILIndex(productId(), bank, &value) != NVX_OK) return std::nullopt;
          return value;
        },
        [bank, report = events.written, bankName](uint32_t value) {
          report(bankName + " beat FX tail", NVX_SetFXBANKBFXTAILIndex(productId(), bank, value));
        });
    row(*other, 0, "_Channel fader mode", *fader,
        bank == 0 ? std::string()
                  : "Bank B and the temporary bank share one remembered channel fader mode: the bank set last keeps "
                    "it, the other shows none.");
    row(*other, 1, "Beat FX _tail", *tail);
    box->append(*other);

    auto *tabLabel = Gtk::make_managed<Gtk::Label>(bankName);
    notebook->append_page(*box, *tabLabel);
  }
  p.box->append(*notebook);
  return p.scroller;
}

Gtk::Widget *makePlayPage(Controls &controls, const PageEvents &events) {
  auto p = page("Play settings",
                "The mixer carries these settings as numbers; the library names only the crossfader modes.");
  auto *g = grid();
  struct Play {
    const char *id;
    const char *label;
    const char *mnemonic;
    uint32_t max;
    int32_t (*get)(int32_t, uint32_t *);
    int32_t (*set)(int32_t, uint32_t);
  };
  const std::array<Play, 5> plays = {{
      {"crossfader-cut-lag", "Crossfader cut lag", "Crossfader cut _lag", 255, NVX_GetCROSSFADERCUTLAGIndex,
       NVX_SetCROSSFADERCUTLAGIndex},
      {"loop-button-type", "4-beat loop button type", "_4-beat loop button type", 1, NVX_Get4BEATLOOPBUTTONTypeIndex,
       NVX_Set4BEATLOOPBUTTONTypeIndex},
      {"fader-start", "Fader start", "_Fader start", 2, NVX_GetFADERSTARTIndex, NVX_SetFADERSTARTIndex},
      {"pad-mode", "Pad mode", "_Pad mode", 2, NVX_GetPADModeIndex, NVX_SetPADModeIndex},
      {"cut-lag-mode", "Cut lag mode", "Cut lag _mode", 3, NVX_GetCROSSFADERCUTLAGModeIndex,
       NVX_SetCROSSFADERCUTLAGModeIndex},
  }};
  int r = 0;
  for (const auto &play : plays) {
    auto *spin = controls.number(play.id, play.label, play.max, plainGetter(play.get, 0),
                                 [set = play.set, report = events.written, label = std::string(play.label)](uint32_t v) {
                                   report(label, set(productId(), v));
                                 });
    row(*g, r++, play.mnemonic, *spin, "0-" + std::to_string(play.max));
  }
  const auto modes = lib::crossfaderModeMenu();
  auto *mode = controls.text("crossfader-mode", "Crossfader mode", [modes] {
    uint32_t index = 0;
    if (NVX_GetCurrentCROSSFADERModeIndex(productId(), &index) != NVX_OK) return std::string("-");
    return index < modes.size() ? modes[index] : "mode " + std::to_string(index);
  });
  auto *modeLabel = Gtk::make_managed<Gtk::Label>("Crossfader mode");
  modeLabel->set_halign(Gtk::Align::START);
  g->attach(*modeLabel, 0, r);
  g->attach(*mode, 1, r);
  auto *note = Gtk::make_managed<Gtk::Label>("As the library reports it (read only)");
  note->add_css_class("dim-label");
  note->set_xalign(0);
  g->attach(*note, 2, r);
  p.box->append(*g);
  return p.scroller;
}

}  // namespace mxrk7setup
