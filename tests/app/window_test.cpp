// The setup window against virtual mixers, as the user sees it: what it shows from the settings
// file, what a change says, Undo, changes made elsewhere, every mixer's own state, the narrow layout
// and a translated start.
#include <NorvaneMXRK7Setup.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "support/process.h"
#include "window_fixture.h"

namespace nvx::test {
namespace {

TEST_F(SetupWindowTest, ShowsTheSettingsFileAndSaysNotSet) {
  settings.writeIntegers(
      {{"Output1", 3}, {"BFX_BANKA0_1", 0x01C8}, {"CHFADERBANK_B", 0x2001}, {"CRFaderCutLagMode", 0x0201}});
  open();
  EXPECT_EQ(shown("routing-1"), 3u);
  EXPECT_EQ(shown("beat-fx-0-0-1"), 200u);
  EXPECT_EQ(shown("channel-fader-2"), 1u);
  EXPECT_EQ(shown("crossfader-mode"), 2u);
  // Nothing stored is said as such, never shown as 0; a parameter waits for its mode.
  for (const std::string id : {"beat-fx-0-0-2", "fx-filter-0-mode", "channel-fader-1", "crossfader-cut-lag"}) {
    EXPECT_EQ(shown(id), std::nullopt) << id;
    EXPECT_EQ(row(id).stateText(), "Not set") << id;
  }
  EXPECT_FALSE(row("fx-filter-0-param").changeable());
  EXPECT_EQ(row("routing-0").stateText(), "Default");
  EXPECT_FALSE(row("routing-4").changeable());  // the library sets channels 0-3 only
  // The mixer's own words, as the library gives them.
  EXPECT_STREQ(adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row("beat-fx-0-0-1").widget())), "Deprh");
  EXPECT_EQ(bus.writes().size(), 0u);  // showing sent nothing
}

// Each kind of row (menu, number, switch) changes its setting on both mixers and says so (the menu's
// toast in the translated start); the words on the wire and the keys are the library's, checked there.
TEST_F(SetupWindowTest, EveryKindOfRowChangesItsSettingAndSaysSo) {
  open();
  for (const auto &[id, value] : std::vector<std::pair<std::string, uint32_t>>{
           {"routing-1", 3}, {"beat-fx-tail-1", 1}, {"crossfader-cut-lag", 255}}) {
    SCOPED_TRACE(id);
    bus.clearLog();
    choose(id, value);
    EXPECT_EQ(bus.writes().size(), 2u);
    EXPECT_EQ(shown(id), value);
  }
  EXPECT_EQ(window().lastToast(), "Crossfader cut lag set to 255.");
}

TEST_F(SetupWindowTest, UndoSendsThePreviousValueAndSaysSo) {
  settings.writeIntegers({{"MaxLevel", 1}});
  open();
  choose("pad-mode", 2);  // set for the first time: nothing to go back to
  EXPECT_FALSE(window().canUndo());
  choose("boost", 3);
  ASSERT_TRUE(window().canUndo());
  bus.clearLog();
  window().undo();
  EXPECT_EQ(bus.writes().size(), 2u);
  EXPECT_EQ(shown("boost"), 1u);
  EXPECT_EQ(window().lastToast(), "Output boost back to -10 dB.");
  EXPECT_FALSE(window().canUndo());
}

// A change made elsewhere appears within a second: routing through the library's callbacks and the
// file, pad mode through the settings file only, here a link into another folder.
TEST_F(SetupWindowTest, AChangeFromOutsideAppearsWithinASecond) {
  ScratchDir elsewhere;
  settings.writeIntegers({{"MaxLevel", 3}});
  std::filesystem::rename(settings.filePath(), elsewhere.file("settings.plist"));
  std::filesystem::create_symlink(elsewhere.file("settings.plist"), settings.filePath());
  open();
  EXPECT_EQ(run({MXRK7_TOOL, "set", "pad-mode", "2"}).exitCode, 0);
  EXPECT_TRUE(runUntil([&] { return shown("pad-mode") == 2u; }, std::chrono::seconds(1)));
  EXPECT_EQ(run({MXRK7_TOOL, "set", "routing", "1", "Cross Fader B"}).exitCode, 0);
  EXPECT_TRUE(runUntil([&] { return shown("routing-1") == 4u; }, std::chrono::seconds(1)));
  EXPECT_EQ(bus.writes().size(), 4u);  // only the tool's: the window sent nothing back
  EXPECT_TRUE(std::filesystem::is_symlink(settings.filePath()));
}

TEST_F(SetupWindowTest, EveryMixerShowsItsOwnStateAndADeniedOneIsReported) {
  VirtualMixer first, denied;
  first.firmware = {0x10, 0x02};
  first.selectors = {4, 2, 1, 0};
  first.serato = 1;
  denied.open = "denied";
  bus.setMixers({first, denied});
  open();
  EXPECT_EQ(window().visiblePage(), "audio");  // one usable mixer: straight to the settings
  auto &page = window().mixerPage();
  EXPECT_EQ(page.mixerLines(), (std::vector<std::string>{"Mixer 1: Ready · Virtual mixer",
                                                         "Mixer 2: No permission · Virtual mixer"}));
  EXPECT_EQ(page.detailLines(0), (std::vector<std::string>{"Firmware: 2.10", "Input selectors 1–4: 4 · 2 · 1 · 0",
                                                           "Serato software: Active"}));
  EXPECT_TRUE(window().bannerShown());
  EXPECT_EQ(window().bannerText(), "Mixer 2 cannot be used: No permission.");

  choose("pad-mode", 1);
  EXPECT_EQ(window().lastToast(), "Pad mode set to 1. Not on Mixer 2 (no permission).");

  // The cause goes, and so does the banner (the virtual mixers' file is watched, not polled).
  bus.setMixers({first});
  EXPECT_TRUE(runUntil([&] { return !window().bannerShown(); }, std::chrono::seconds(1)));
  EXPECT_EQ(page.mixerLines().size(), 1u);
  bus.setMixers({});
  EXPECT_TRUE(runUntil([&] { return page.showsNoMixer(); }, std::chrono::seconds(1)));
  choose("pad-mode", 2);
  EXPECT_EQ(window().lastToast(), "Pad mode set to 2. No mixer is connected.");
}

TEST_F(SetupWindowTest, TheRoutingWarningShowsTheLibrarysTextAndClears) {
  VirtualMixer deckOff;
  deckOff.selectors = {2, 4, 4, 4};
  bus.setMixers({deckOff});  // input selector 1 is not where the chosen signal needs it
  open();
  choose("routing-0", 1);
  const char *warning = nullptr;
  ASSERT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 99, &warning), NVX_OK);
  ASSERT_NE(warning, nullptr);
  EXPECT_TRUE(window().routingWarningShown());
  EXPECT_EQ(window().routingWarningText(), warning);
  EXPECT_FALSE(window().bannerShown());
  choose("routing-2", 1);  // channel 2 never warns: the warning goes
  EXPECT_FALSE(window().routingWarningShown());
}

TEST_F(SetupWindowTest, ExportImportAndReapply) {
  settings.writeIntegers({{"MaxLevel", 1}, {"PADMode", 2}, {"BFX_BANKB3_1", 0x59C0}});
  open();
  ScratchDir files;
  const std::string exported = files.file("settings.json");
  window().exportTo(exported);
  EXPECT_EQ(window().lastToast(), "3 settings exported to " + exported + ".");
  choose("boost", 0);
  choose("beat-fx-1-3-1", 7);
  bus.clearLog();
  window().importFrom(exported);
  EXPECT_EQ(window().lastToast(), "3 settings imported.");
  EXPECT_EQ(shown("boost"), 1u);
  EXPECT_EQ(shown("beat-fx-1-3-1"), 0xC0u);
  bus.clearLog();
  window().reapply();  // what the file holds, and nothing else
  EXPECT_EQ(window().lastToast(), "3 saved settings sent.");
  EXPECT_EQ(bus.writes().size(), 2u * 3u);
}

TEST_F(SetupWindowTest, TheNarrowLayoutFitsAPhonesWidth) {
  open(360);
  int minimum = 0, natural = 0;
  for (const auto &name : mxrk7setup::SetupWindow::pageNames()) {
    window().showPage(name);
    drain();
    gtk_widget_measure(GTK_WIDGET(window().gobj()), GTK_ORIENTATION_HORIZONTAL, -1, &minimum, &natural, nullptr,
                       nullptr);
    EXPECT_LE(minimum, 360) << name;
  }
  EXPECT_LE(window().get_width(), 360);
}

TEST_F(SetupWindowTest, ATranslatedStartShowsTranslatedLabels) {
  env.set("LANGUAGE", "de");
  env.set("LC_ALL", "C.UTF-8");
  std::setlocale(LC_ALL, "");
  open();
  // People count from 1.
  EXPECT_STREQ(adw_preferences_row_get_title(ADW_PREFERENCES_ROW(row("routing-0").widget())), "USB-Kanal 1");
  EXPECT_EQ(row("beat-fx-0-0-2").stateText(), "Nicht gesetzt");
  choose("boost", 2);
  EXPECT_EQ(window().lastToast(), "Ausgangspegel auf -15 dB gesetzt.");
  std::setlocale(LC_ALL, "C");
}

// The primary menu's windows open (the shortcuts window is built from a description at run time).
TEST_F(SetupWindowTest, TheShortcutsAndAboutWindowsOpen) {
  open();
  for (const char *action : {"win.shortcuts", "win.about"})
    ASSERT_TRUE(gtk_widget_activate_action(GTK_WIDGET(window().gobj()), action, nullptr)) << action;
  drain();
  std::set<std::string> kinds;
  GList *windows = gtk_window_list_toplevels();
  for (GList *w = windows; w; w = w->next) {
    kinds.insert(G_OBJECT_TYPE_NAME(w->data));
    if (w->data != window().gobj()) gtk_window_destroy(GTK_WINDOW(w->data));
  }
  g_list_free(windows);
  EXPECT_TRUE(kinds.contains("GtkShortcutsWindow"));
  EXPECT_TRUE(kinds.contains("AdwAboutWindow"));
}

}  // namespace
}  // namespace nvx::test
