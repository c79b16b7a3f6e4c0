// The setup window against virtual mixers: what it shows from the settings file, what a change in
// a control sends and stores, changes made by other processes, the mixer page, and access.
#include <NorvaneMXRK7Setup.h>
#include <gtk/gtk.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "settings_document_io.h"
#include "settings_pages.h"
#include "support/scratch_dir.h"
#include "window_fixture.h"

namespace nvx::test {
namespace {

using mxrk7setup::SetupWindow;

// Beat FX word: bank in bits 15-14, position 13-11, item 10-8, value 7-0.
int64_t beatWord(int bank, int position, int item, int value) {
  return (bank << 14) | (position << 11) | (item << 8) | value;
}

bool has(const std::vector<std::string> &lines, const std::string &line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// Sent to both virtual mixers.
void expectSent(const VirtualBus &bus, uint16_t wIndex, uint16_t value) {
  const auto requests = bus.requests();
  EXPECT_TRUE(has(requests, writeLine(0, wIndex, value))) << writeLine(0, wIndex, value);
  EXPECT_TRUE(has(requests, writeLine(1, wIndex, value))) << writeLine(1, wIndex, value);
}

std::vector<std::string> libraryMenu(uint32_t count, const std::function<int32_t(uint32_t, const char **)> &text) {
  std::vector<std::string> texts;
  for (uint32_t i = 0; i < count; ++i) {
    const char *entry = nullptr;
    EXPECT_EQ(text(i, &entry), NVX_OK);
    texts.emplace_back(entry ? entry : "");
  }
  return texts;
}

class SetupWindowTest : public WindowTest {};

TEST_F(SetupWindowTest, ShowsTheValuesOfAPreparedSettingsFile) {
  home_.writeIntegers({
      {"Output0", 2}, {"Output1", 3}, {"Output2", 6}, {"Output3", 0}, {"MaxLevel", 1},
      {"BANKB_FILTER", 0x1340},                       // bank B: PITCH, parameter 0x40
      {"BFX_BANKA0_1", beatWord(0, 0, 1, 200)},       // bank A position 1 depth 200
      {"BFX_BANKB5_2", beatWord(1, 5, 2, 16)},        // bank B position 6 beat 16
      {"BFX_TEMP4_0", beatWord(2, 4, 0, 9)},          // temporary position 5 type 9
      {"CHFADERBANK_A", 0x0003},                      // bank A: mode 3
      {"CHFADERBANK_B", 0x2001},                      // set last for the temporary bank: mode 1
      {"TAIL_BANK_B", 0x1001},
      {"CRFaderCutLag", 200}, {"4BeatLpBtType", 1}, {"FaderStartMode", 2}, {"PADMode", 1},
      {"CRFaderCutLagMode", 0x0201},                  // cut lag mode 1; crossfader mode byte 2
  });
  open();
  EXPECT_EQ(selected("routing-0"), 2u);
  EXPECT_EQ(selected("routing-1"), 3u);
  EXPECT_EQ(selected("routing-2"), 6u);
  EXPECT_EQ(selected("routing-3"), 0u);
  EXPECT_EQ(selected("routing-4"), 0u);  // nothing stored: the library's default
  EXPECT_EQ(selected("boost"), 1u);
  EXPECT_EQ(selected("fx-1-filter-mode"), 3u);
  EXPECT_EQ(number("fx-1-filter-param"), 0x40);
  EXPECT_EQ(selected("fx-0-filter-mode"), GTK_INVALID_LIST_POSITION);  // nothing remembered
  EXPECT_FALSE(control<Gtk::SpinButton>("fx-0-filter-param").get_sensitive());
  EXPECT_EQ(number("fx-0-beat-0-depth"), 200);
  EXPECT_EQ(number("fx-1-beat-5-beat"), 16);
  EXPECT_EQ(selected("fx-2-beat-4-type"), 9u);
  EXPECT_EQ(selected("fx-0-beat-4-type"), GTK_INVALID_LIST_POSITION);
  EXPECT_EQ(selected("fx-0-channel-fader"), 3u);
  EXPECT_EQ(selected("fx-2-channel-fader"), 1u);
  EXPECT_EQ(selected("fx-1-channel-fader"), GTK_INVALID_LIST_POSITION);  // the shared word names the temporary bank
  EXPECT_TRUE(control<Gtk::Switch>("fx-1-tail").get_active());
  EXPECT_FALSE(control<Gtk::Switch>("fx-0-tail").get_active());
  EXPECT_EQ(number("crossfader-cut-lag"), 200);
  EXPECT_EQ(number("loop-button-type"), 1);
  EXPECT_EQ(number("fader-start"), 2);
  EXPECT_EQ(number("pad-mode"), 1);
  EXPECT_EQ(number("cut-lag-mode"), 1);
  EXPECT_EQ(control<Gtk::Label>("crossfader-mode").get_text(), "LARGE");
  // Showing the file sent nothing and wrote nothing.
  for (const auto &line : bus_.requests()) EXPECT_EQ(line.find(" 40 03 "), std::string::npos) << line;
  EXPECT_EQ(home_.keyCount(), 17u);
}

TEST_F(SetupWindowTest, MenusAreExactlyTheLibrarys) {
  open();
  for (int32_t channel = 0; channel < 5; ++channel) {
    uint32_t count = 0;
    ASSERT_EQ(NVX_GetNumOfInputAudioIndex(0, channel, &count), NVX_OK);
    EXPECT_EQ(items("routing-" + std::to_string(channel)),
              libraryMenu(count, [channel](uint32_t i, const char **t) {
                return NVX_GetUSBInputAudioText(0, channel, i, 0, t);
              }))
        << "channel " << channel;
  }
  EXPECT_TRUE(control<Gtk::DropDown>("routing-3").get_sensitive());
  EXPECT_FALSE(control<Gtk::DropDown>("routing-4").get_sensitive());  // the setter refuses channel 4

  uint32_t count = 0;
  ASSERT_EQ(NVX_GetNumOfBoostLevelIndex(0, &count), NVX_OK);
  EXPECT_EQ(items("boost"), libraryMenu(count, [](uint32_t i, const char **t) { return NVX_GetBoostLevelText(0, i, 0, t); }));
  ASSERT_EQ(NVX_GetNumOfFXBANKFILTERModeIndex(0, &count), NVX_OK);
  const auto filters = libraryMenu(count, [](uint32_t i, const char **t) { return NVX_GetFXBANKFILTERModeText(0, i, 0, t); });
  ASSERT_EQ(NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 0, &count), NVX_OK);
  const auto effects =
      libraryMenu(count, [](uint32_t i, const char **t) { return NVX_GetFXBANKBEATEFFECTModeText(0, 0, i, 0, t); });
  const std::vector<std::string> faderModes(std::begin(FXBANKChFaderModeText), std::end(FXBANKChFaderModeText));
  for (uint32_t bank = 0; bank < 3; ++bank) {
    EXPECT_EQ(items(mxrk7setup::filterModeId(bank)), filters);
    EXPECT_EQ(items(mxrk7setup::channelFaderId(bank)), faderModes);
    for (uint32_t position = 0; position < 6; ++position)
      EXPECT_EQ(items(mxrk7setup::beatFxId(bank, position, 0)), effects);
  }
}

// Every control the window has, changed through the widget: the request reaches both mixers and
// the value the file, and a new window shows it again.
TEST_F(SetupWindowTest, EverySettingRoundTripsThroughTheRequestLogAndTheFile) {
  open();
  struct Case {
    std::string id;
    std::function<void()> change;
    std::function<void()> check;  // in a new window
    std::string key;
    int64_t stored;
    uint16_t wIndex;
    uint16_t value;
  };
  const std::vector<Case> cases = {
      {"routing-1", [&] { pick("routing-1", 3); }, [&] { EXPECT_EQ(selected("routing-1"), 3u); }, "Output1", 3, 0x8002, 0x0207},
      {"routing-0", [&] { pick("routing-0", 5); }, [&] { EXPECT_EQ(selected("routing-0"), 5u); }, "Output0", 5, 0x8002, 0x0109},
      {"routing-3", [&] { pick("routing-3", 1); }, [&] { EXPECT_EQ(selected("routing-3"), 1u); }, "Output3", 1, 0x8002, 0x040F},
      {"boost", [&] { pick("boost", 0); }, [&] { EXPECT_EQ(selected("boost"), 0u); }, "MaxLevel", 0, 0x8003, 0x0300},
      {"fx-2-filter-mode", [&] { pick("fx-2-filter-mode", 4); }, [] {}, "TEMPORARY_FILTER", 0x2400, 0x850D, 0x2400},
      {"fx-2-filter-param", [&] { enter("fx-2-filter-param", 255); },
       [&] {
         EXPECT_EQ(selected("fx-2-filter-mode"), 4u);
         EXPECT_EQ(number("fx-2-filter-param"), 255);
       },
       "TEMPORARY_FILTER", 0x24FF, 0x850D, 0x24FF},
      {"fx-0-beat-0-type", [&] { pick("fx-0-beat-0-type", 9); }, [&] { EXPECT_EQ(selected("fx-0-beat-0-type"), 9u); },
       "BFX_BANKA0_0", 0x0009, 0x850E, 0x0009},
      {"fx-1-beat-3-depth", [&] { enter("fx-1-beat-3-depth", 0xC0); }, [&] { EXPECT_EQ(number("fx-1-beat-3-depth"), 0xC0); },
       "BFX_BANKB3_1", 0x59C0, 0x850E, 0x59C0},
      {"fx-2-beat-5-beat", [&] { enter("fx-2-beat-5-beat", 54); }, [&] { EXPECT_EQ(number("fx-2-beat-5-beat"), 54); },
       "BFX_TEMP5_2", 0xAA36, 0x850E, 0xAA36},
      {"fx-0-channel-fader", [&] { pick("fx-0-channel-fader", 3); }, [&] { EXPECT_EQ(selected("fx-0-channel-fader"), 3u); },
       "CHFADERBANK_A", 0x0003, 0x850F, 0x0003},
      {"fx-2-channel-fader", [&] { pick("fx-2-channel-fader", 1); }, [&] { EXPECT_EQ(selected("fx-2-channel-fader"), 1u); },
       "CHFADERBANK_B", 0x2001, 0x850F, 0x2001},
      {"fx-1-tail", [&] { flip("fx-1-tail", true); }, [&] { EXPECT_TRUE(control<Gtk::Switch>("fx-1-tail").get_active()); },
       "TAIL_BANK_B", 0x1001, 0x8510, 0x1001},
      {"crossfader-cut-lag", [&] { enter("crossfader-cut-lag", 255); }, [&] { EXPECT_EQ(number("crossfader-cut-lag"), 255); },
       "CRFaderCutLag", 255, 0x8511, 0xFF00},
      {"loop-button-type", [&] { enter("loop-button-type", 1); }, [&] { EXPECT_EQ(number("loop-button-type"), 1); },
       "4BeatLpBtType", 1, 0x8512, 0x0100},
      {"fader-start", [&] { enter("fader-start", 2); }, [&] { EXPECT_EQ(number("fader-start"), 2); }, "FaderStartMode", 2,
       0x8513, 0x0200},
      {"pad-mode", [&] { enter("pad-mode", 2); }, [&] { EXPECT_EQ(number("pad-mode"), 2); }, "PADMode", 2, 0x8514, 0x0200},
      {"cut-lag-mode", [&] { enter("cut-lag-mode", 3); }, [&] { EXPECT_EQ(number("cut-lag-mode"), 3); }, "CRFaderCutLagMode",
       3, 0x8515, 0x0300},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.id);
    bus_.clearLog();
    c.change();
    expectSent(bus_, c.wIndex, c.value);
    EXPECT_EQ(home_.value(c.key), c.stored);
  }
  // The crossfader mode is read from the cut lag mode's second byte, which the setter leaves 0.
  EXPECT_EQ(control<Gtk::Label>("crossfader-mode").get_text(), "NONE");

  open();
  for (const auto &c : cases) {
    SCOPED_TRACE(c.id);
    c.check();
  }
}

TEST_F(SetupWindowTest, ShowingAChangeMadeElsewhereSendsNothing) {
  open();
  bus_.clearLog();
  window().routingChanged(1, 4);
  window().boostChanged(2);
  drain();
  EXPECT_EQ(selected("routing-1"), 4u);
  EXPECT_EQ(selected("boost"), 2u);
  EXPECT_TRUE(bus_.requests().empty());
  EXPECT_FALSE(home_.exists());
}

TEST_F(SetupWindowTest, RoutingWarningShowsTheLibrarysTextInABanner) {
  bus_.setMixers({mixer({2, 4, 4, 4})});  // input selector 1 is not where the chosen signal needs it
  open();
  EXPECT_FALSE(window().bannerShown());
  pick("routing-0", 1);
  const char *warning = nullptr;
  ASSERT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 99, &warning), NVX_OK);
  ASSERT_NE(warning, nullptr);
  EXPECT_TRUE(window().bannerShown());
  EXPECT_EQ(window().bannerText(), warning);
  EXPECT_EQ(home_.value("Output0"), 1);  // stored and sent all the same
  EXPECT_TRUE(has(bus_.requests(), writeLine(0, 0x8002, 0x0100)));

  pick("routing-2", 1);  // channel 2 never warns: the banner goes
  EXPECT_FALSE(window().bannerShown());
}

TEST_F(SetupWindowTest, RoutingWarningFollowsTheUsersLanguage) {
  env_.set("LANG", "de_DE.UTF-8");
  bus_.setMixers({mixer({4, 3, 4, 4})});
  open();
  pick("routing-1", 2);
  ASSERT_TRUE(window().bannerShown());
  const char *text = nullptr;
  ASSERT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 1, NVX_WARNING, 99, &text), NVX_OK);
  ASSERT_NE(text, nullptr);
  const std::string german = text;
  env_.set("LANG", "C");
  ASSERT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 1, NVX_WARNING, 99, &text), NVX_OK);
  ASSERT_NE(text, nullptr);
  EXPECT_NE(german, std::string(text));
  EXPECT_EQ(window().bannerText(), german);
}

std::string runTool(const std::vector<std::string> &args) {
  std::vector<std::string> argv = {MXRK7_TOOL};
  argv.insert(argv.end(), args.begin(), args.end());
  std::string out, err;
  int status = -1;
  Glib::spawn_sync("", argv, Glib::SpawnFlags::DEFAULT, {}, &out, &err, &status);
  EXPECT_TRUE(g_spawn_check_wait_status(status, nullptr)) << out << err;
  return out + err;
}

TEST_F(SetupWindowTest, ChangesMadeByAnotherProcessAppearAtOnce) {
  open();
  ASSERT_EQ(selected("boost"), 3u);
  runTool({"set", "boost", "1"});
  EXPECT_TRUE(runUntil([&] { return selected("boost") == 1u; })) << "boost shows " << selected("boost");
  runTool({"set", "routing", "1", "Cross Fader B"});
  EXPECT_TRUE(runUntil([&] { return selected("routing-1") == 4u; })) << "routing 1 shows " << selected("routing-1");
  // Only what the other process sent: the window itself sent nothing.
  for (const auto &line : bus_.requests()) {
    if (line.find(" 40 03 ") == std::string::npos) continue;
    EXPECT_TRUE(line.find(" 03 80 ") != std::string::npos || line.find(" 02 80 ") != std::string::npos) << line;
  }
}

TEST_F(SetupWindowTest, SendAllSendsWhatIsRememberedAndNothingElse) {
  home_.writeIntegers({{"MaxLevel", 1}, {"Output0", 1}, {"PADMode", 2}, {"BANKA_FILTER", 0x0140},
                       {"TAIL_TEMP", 0x2001}, {"CHFADERBANK_B", 0x1002}});
  open();
  bus_.clearLog();
  window().sendAll();
  expectSent(bus_, 0x8003, 0x0200);  // boost index 1
  expectSent(bus_, 0x8002, 0x0100);  // channel 0 index 1
  expectSent(bus_, 0x8514, 0x0200);
  expectSent(bus_, 0x850D, 0x0140);
  expectSent(bus_, 0x8510, 0x2001);
  expectSent(bus_, 0x850F, 0x1002);
  const auto requests = bus_.requests();
  // Each mixer got exactly the six remembered settings: no default for a missing key.
  size_t writes = 0;
  for (const auto &line : requests) writes += line.find(" 40 03 ") != std::string::npos;
  EXPECT_EQ(writes, 12u);
  EXPECT_NE(window().statusText().find("6 remembered settings"), std::string::npos) << window().statusText();
}

TEST_F(SetupWindowTest, ExportThenImportRestoresTheSettings) {
  home_.writeIntegers({{"MaxLevel", 1}, {"Output1", 3}, {"PADMode", 2}, {"BFX_BANKB3_1", beatWord(1, 3, 1, 0xC0)}});
  open();
  ScratchDir files;
  const std::string exported = files.file("settings.json");
  std::string message;
  ASSERT_TRUE(window().exportTo(exported, message)) << message;
  EXPECT_NE(readFile(exported).find("mxrk7-settings"), std::string::npos);

  pick("boost", 0);
  enter("pad-mode", 0);
  pick("routing-1", 0);
  enter("fx-1-beat-3-depth", 7);
  ASSERT_EQ(home_.value("MaxLevel"), 0);

  std::string changes;
  ASSERT_TRUE(mxrk7setup::describeImport(exported, changes)) << changes;
  EXPECT_NE(changes.find("boost"), std::string::npos) << changes;

  bus_.clearLog();
  ASSERT_TRUE(window().importFrom(exported, message)) << message;
  EXPECT_EQ(selected("boost"), 1u);
  EXPECT_EQ(number("pad-mode"), 2);
  EXPECT_EQ(selected("routing-1"), 3u);
  EXPECT_EQ(number("fx-1-beat-3-depth"), 0xC0);
  EXPECT_EQ(home_.value("MaxLevel"), 1);
  EXPECT_EQ(home_.value("PADMode"), 2);
  EXPECT_EQ(home_.value("Output1"), 3);
  EXPECT_EQ(home_.value("BFX_BANKB3_1"), 0x59C0);
  expectSent(bus_, 0x8003, 0x0200);
  expectSent(bus_, 0x8514, 0x0200);
  expectSent(bus_, 0x8002, 0x0207);
  expectSent(bus_, 0x850E, 0x59C0);
}

TEST_F(SetupWindowTest, AnImportWithAMistakeChangesNothing) {
  home_.writeIntegers({{"MaxLevel", 1}});
  open();
  ScratchDir files;
  const std::string bad = files.write(
      "bad.json",
      R"({"format": "mxrk7-settings", "version": 1, "product": "MXR-K7", "settings": [)"
      R"({"setting": "boost", "args": {}, "fields": [{"name": "level", "index": 0}]},)"
      R"({"setting": "no-such-setting", "args": {}, "fields": []}]})");
  bus_.clearLog();
  std::string message;
  EXPECT_FALSE(window().importFrom(bad, message));
  EXPECT_TRUE(window().bannerShown());
  EXPECT_NE(window().bannerText().find("nothing was changed"), std::string::npos) << window().bannerText();
  EXPECT_EQ(home_.value("MaxLevel"), 1);
  EXPECT_EQ(selected("boost"), 1u);
  EXPECT_TRUE(bus_.requests().empty());

  const std::string notJson = files.write("notes.txt", "boost = 0\n");
  EXPECT_FALSE(window().importFrom(notJson, message));
  EXPECT_NE(message.find("not JSON"), std::string::npos) << message;
}

TEST_F(SetupWindowTest, MixerPageShowsTheStatusTheLibraryReads) {
  VirtualMixer first = mixer({4, 2, 1, 0});
  first.firmware = {0x10, 0x02};
  first.serato = 1;
  bus_.setMixers({first});
  open();
  auto &page = window().mixerPage();
  EXPECT_EQ(page.problem(), mxrk7setup::MixerPage::Problem::None);
  EXPECT_EQ(page.connectionText(), "Connected: 1 mixer, virtual");
  EXPECT_EQ(page.firmwareText(), "2.10");
  EXPECT_EQ(page.selectorsText(), "1: 4   2: 2   3: 1   4: 0");
  EXPECT_EQ(page.seratoText(), "active");
  EXPECT_EQ(window().visiblePage(), "routing");  // a usable mixer: straight to the settings
}

TEST_F(SetupWindowTest, PluggingAndUnpluggingShowsAndTheFixIsOffered) {
  open();
  auto &page = window().mixerPage();
  EXPECT_EQ(page.mixerCount(), 2u);

  bus_.setMixers({});
  EXPECT_EQ(page.poll(), 0u);
  EXPECT_EQ(page.problem(), mxrk7setup::MixerPage::Problem::NoMixer);
  EXPECT_EQ(page.connectionText(), "No mixer connected");

  VirtualMixer denied = mixer();
  denied.open = "denied";
  bus_.setMixers({denied});
  EXPECT_EQ(page.poll(), 1u);
  EXPECT_EQ(page.problem(), mxrk7setup::MixerPage::Problem::Denied);
  EXPECT_NE(page.problemText().find("udev rule"), std::string::npos) << page.problemText();

  VirtualMixer busy = mixer();
  busy.open = "busy";
  bus_.setMixers({busy, busy});
  EXPECT_EQ(page.poll(), 2u);
  EXPECT_EQ(page.problem(), mxrk7setup::MixerPage::Problem::Busy);

  bus_.setMixers({mixer()});
  EXPECT_EQ(page.poll(), 1u);
  EXPECT_EQ(page.problem(), mxrk7setup::MixerPage::Problem::None);
  EXPECT_EQ(page.connectionText(), "Connected: 1 mixer, virtual");

  // Watching an unchanged bus opens no mixer, so it never holds one that another program wants.
  bus_.clearLog();
  EXPECT_EQ(page.poll(), 1u);
  EXPECT_EQ(page.poll(), 1u);
  EXPECT_TRUE(bus_.log().empty());
}

TEST_F(SetupWindowTest, NoMixerAtAllOpensOnTheMixerPage) {
  bus_.setMixers({});
  home_.writeIntegers({{"MaxLevel", 2}});
  open();
  EXPECT_EQ(window().visiblePage(), "mixer");
  EXPECT_EQ(window().mixerPage().problem(), mxrk7setup::MixerPage::Problem::NoMixer);
  // Settings can still be changed: they are remembered.
  EXPECT_EQ(selected("boost"), 2u);
  pick("boost", 0);
  EXPECT_EQ(home_.value("MaxLevel"), 0);
  EXPECT_NE(window().statusText().find("No mixer is connected"), std::string::npos) << window().statusText();
}

// Walks the widget tree below `widget`.
void walk(GtkWidget *widget, const std::function<void(GtkWidget *)> &visit) {
  visit(widget);
  for (GtkWidget *child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    walk(child, visit);
}

TEST_F(SetupWindowTest, EveryControlHasAnAccessibleLabel) {
  open();
  const auto ids = window().controls().ids();
  // 5 routing channels, boost, 3 banks of (filter mode and parameter, 6 x 3 beat FX items, channel
  // fader, tail), 5 play settings and the crossfader mode.
  EXPECT_EQ(ids.size(), 5u + 1u + 3u * (2u + 18u + 2u) + 5u + 1u);
  std::set<std::string> labels;
  for (const auto &id : ids) {
    GtkAccessible *accessible = GTK_ACCESSIBLE(window().controls().find(id)->gobj());
    EXPECT_TRUE(gtk_test_accessible_has_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL)) << id;
  }
  // And every other interactive widget of the window (header buttons, banner, mixer page).
  size_t checked = 0;
  walk(GTK_WIDGET(window().gobj()), [&](GtkWidget *widget) {
    if (!GTK_IS_BUTTON(widget) || !gtk_widget_get_visible(widget)) return;
    if (gtk_widget_get_ancestor(widget, GTK_TYPE_DROP_DOWN) || gtk_widget_get_ancestor(widget, GTK_TYPE_SPIN_BUTTON))
      return;
    const std::string name = gtk_widget_get_name(widget);
    if (name.rfind("Gtk", 0) == 0) return;  // GTK's own parts (window controls, notebook tabs)
    ++checked;
    const bool labelled = gtk_test_accessible_has_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL) ||
                          gtk_button_get_label(GTK_BUTTON(widget)) != nullptr;
    EXPECT_TRUE(labelled) << name;
  });
  EXPECT_GE(checked, 4u);  // send all, export, import, refresh at least
}

// The keyboard alone reaches every control of a page.
TEST_F(SetupWindowTest, TheKeyboardReachesEveryControl) {
  open();
  for (const std::string page : {"routing", "play", "fx"}) {
    window().showPage(page);
    drain();
    std::set<std::string> reached;
    for (int step = 0; step < 400; ++step) {
      window().child_focus(Gtk::DirectionType::TAB_FORWARD);
      for (Gtk::Widget *focus = window().get_focus(); focus; focus = focus->get_parent())
        if (window().controls().find(focus->get_name()) == focus) reached.insert(focus->get_name());
    }
    for (const auto &id : window().controls().ids()) {
      Gtk::Widget *widget = window().controls().find(id);
      if (!widget->is_drawable() || !widget->get_sensitive() || dynamic_cast<Gtk::Label *>(widget)) continue;
      EXPECT_TRUE(reached.count(id)) << id << " cannot be reached with the Tab key on page " << page;
    }
  }
}

}  // namespace
}  // namespace nvx::test
