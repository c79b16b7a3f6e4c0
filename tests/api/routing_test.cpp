// USB audio routing beyond its setter row: the warning when a deck's input selector is elsewhere,
// the direct setter, and the warning's text.
#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr uint16_t kRouting = 0x8002;

// After the writes, the selectors of every mixer are read until one warns (where no warning can
// result too): four reads a mixer.
TEST_F(ApiTest, RoutingWarnsWhenADecksSelectorIsElsewhere) {
  struct Case {
    const char *what;
    std::vector<VirtualMixer> mixers;
    int32_t channel, result;
    size_t requests;
  };
  const Case cases[] = {
      {"selector 4: fine", {{}}, 0, NVX_OK, 5},
      {"selector 2 on deck 1", {{.selectors = {2, 4, 4, 4}}}, 0, NVX_WARNING, 5},
      {"selector 9 is no position", {{.selectors = {9, 4, 4, 4}}}, 0, NVX_OK, 5},
      {"deck 2 reads its own byte", {{.selectors = {4, 0, 4, 4}}}, 1, NVX_WARNING, 5},
      {"channel 2 never warns", {{.selectors = {0, 0, 0, 0}}}, 2, NVX_OK, 5},
      {"channel 3 reads every mixer", {{}, {}}, 3, NVX_OK, 10},
      {"second of two warns", {{}, {.selectors = {3, 4, 4, 4}}}, 0, NVX_WARNING, 10},
      {"first of two warns: the second is not read", {{.selectors = {1, 4, 4, 4}}, {}}, 0, NVX_WARNING, 6},
  };
  for (const auto &c : cases) {
    bus.setMixers(c.mixers);
    bus.clearLog();
    EXPECT_EQ(NVX_SetUSBInputAudio(0, c.channel, 1), c.result) << c.what;
    EXPECT_EQ(bus.requests().size(), c.requests) << c.what;
  }
}

TEST_F(ApiTest, DirectRoutingPacksGroupChannelAndSourceAndStoresNothing) {
  struct Case {
    int32_t channel, group;
    uint32_t source;
    uint16_t value;
  };
  const Case cases[] = {
      {1, 0, 3, 0x1203}, {1, -1, 3, 0x0203}, {1, 15, 3, 0x0203}, {4, 2, 15, 0x350F}, {0, 7, 0, 0x8100}};
  bus.setMixers({{.selectors = {5, 5, 5, 5}}});
  for (const auto &c : cases) {
    bus.clearLog();
    EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, c.channel, c.group, c.source), NVX_OK);
    EXPECT_EQ(bus.requests().front(), writeLine(0, kRouting, c.value));
  }
  EXPECT_FALSE(settings.exists());
}

TEST_F(ApiTest, DirectRoutingWarningRule) {
  for (uint32_t source : {0u, 2u, 3u, 5u})
    EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 0, 0, source), source < 3 ? NVX_WARNING : NVX_OK) << "no mixer, " << source;
  bus.setMixers({{.selectors = {5, 5, 5, 5}}});
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 1), NVX_OK);
  bus.setMixers({{.selectors = {5, 5, 5, 5}}, {.selectors = {4, 4, 4, 4}}});
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 4), NVX_WARNING) << "any channel, byte not 5";
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 5), NVX_OK) << "sources from 5 never warn";
}

// --- Warning text ------------------------------------------------------------------------------

std::string warningText(int32_t language) {
  const char *text = "untouched";
  EXPECT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, language, &text), NVX_OK);
  return text ? text : "<null>";
}

// Languages 0-11 leave the output alone; 99 follows the user's locale.
TEST_F(ApiTest, WarningTextFollowsTheUsersLocale) {
  for (int32_t language = 0; language <= 11; ++language) EXPECT_EQ(warningText(language), "untouched") << language;
  struct Case {
    const char *variable, *value, *fragment;
  };
  const Case cases[] = {
      {"LANG", "de_DE.UTF-8", "Eingangswahlschalter"},
      {"LC_MESSAGES", "fr_FR.UTF-8", "sélecteur d'entrée"},
      {"LC_ALL", "ja_JP.UTF-8", "インプットセレクター"},
      {"LANGUAGE", "sv:es", "selector de entrada"},  // the first listed language with a localization
      {"LANG", "zh_TW.UTF-8", "混音器"},
      {"LANG", "zh_CN.UTF-8", "调音台"},
      {"LANG", "pt_BR.UTF-8", "seletor de entrada"},
      {"LANG", "sv_SE.UTF-8", "input selector"},  // no Swedish localization: English
  };
  for (const auto &c : cases) {
    EnvGuard locale;
    locale.set(c.variable, c.value);
    EXPECT_NE(warningText(99).find(c.fragment), std::string::npos) << c.variable << "=" << c.value;
  }
}

TEST_F(ApiTest, WarningTextMissingBundleGivesNullAndMissingKeyGivesTheKey) {
  ScratchDir root;
  env.set("MXRK7_SYSROOT", root.path());
  EXPECT_EQ(warningText(99), "<null>");
  root.write(
      "System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/English.lproj/Localizable.strings",
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>OTHER</key><string>x</string></dict></plist>");
  EXPECT_EQ(warningText(99), "WARNING2");
}

}  // namespace
}  // namespace nvx::test
