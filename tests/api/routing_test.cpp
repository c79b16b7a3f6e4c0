// USB audio routing: the model's code table, the warning, the direct setter and the replay; the
// warning's text; the boost replay.
#include <string_view>

#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr uint16_t kRouting = 0x8002, kBoost = 0x8003;

class ApiRouting : public ApiTest {};

TEST_F(ApiRouting, EveryChannelAndIndexSendsItsCodeAndStoresTheIndex) {
  const uint16_t codes[4][8] = {
      {0x0103, 0x0100, 0x0106, 0x0107, 0x0108, 0x0109, 0x010D, 0x010F},
      {0x0203, 0x0200, 0x0206, 0x0207, 0x0208, 0x0209, 0x020D, 0x020F},
      {0x030A, 0x0307, 0x0308, 0x0309, 0x030D, 0x0311, 0x0312, 0x030F},
      {0x040C, 0x040F, 0x040F, 0x040F, 0x040F, 0x040F, 0x040F, 0x040F},
  };
  bus.setMixers(mixers(1));
  for (int32_t channel = 0; channel < 4; ++channel) {
    for (uint32_t index = 0; index < 8; ++index) {
      bus.clearLog();
      ASSERT_EQ(NVX_SetUSBInputAudio(0, channel, index), NVX_OK);
      const auto requests = bus.requests();
      ASSERT_FALSE(requests.empty());
      EXPECT_EQ(requests.front(), writeLine(0, kRouting, codes[channel][index])) << channel << "/" << index;
      EXPECT_EQ(settings.value("Output" + std::to_string(channel)), index);
    }
  }
  EXPECT_EQ(settings.keyCount(), 4u);
}

struct WarningCase {
  const char *what;
  std::vector<std::array<int, 4>> selectors;  // per mixer
  std::vector<std::string> open;              // per mixer
  int32_t channel;
  int32_t result;
};

class ApiRoutingWarning : public ApiTest, public ::testing::WithParamInterface<WarningCase> {};

TEST_P(ApiRoutingWarning, WarnsWhenADecksSelectorIsElsewhere) {
  const auto &c = GetParam();
  std::vector<VirtualMixer> list;
  for (size_t i = 0; i < c.selectors.size(); ++i) {
    VirtualMixer m;
    m.selectors = c.selectors[i];
    m.open = c.open[i];
    list.push_back(m);
  }
  bus.setMixers(list);
  EXPECT_EQ(NVX_SetUSBInputAudio(0, c.channel, 1), c.result);
}

INSTANTIATE_TEST_SUITE_P(
    , ApiRoutingWarning,
    ::testing::Values(WarningCase{"selector 4: fine", {{4, 4, 4, 4}}, {"ok"}, 0, NVX_OK},
                      WarningCase{"selector 2 on deck 1", {{2, 4, 4, 4}}, {"ok"}, 0, NVX_WARNING},
                      WarningCase{"selector 9 is no position", {{9, 4, 4, 4}}, {"ok"}, 0, NVX_OK},
                      WarningCase{"deck 2 reads its own byte", {{4, 0, 4, 4}}, {"ok"}, 1, NVX_WARNING},
                      WarningCase{"channel 2 never warns", {{0, 0, 0, 0}}, {"ok"}, 2, NVX_OK},
                      WarningCase{"busy first mixer, warning second", {{4, 4, 4, 4}, {1, 4, 4, 4}}, {"busy", "ok"}, 0,
                                  NVX_WARNING},
                      WarningCase{"second of two warns", {{4, 4, 4, 4}, {3, 4, 4, 4}}, {"ok", "ok"}, 0, NVX_WARNING}),
    [](const auto &param) { return "case" + std::to_string(param.index); });

TEST_F(ApiRouting, TheWarningCheckReadsEveryMixerUntilOneWarns) {
  VirtualMixer warns;
  warns.selectors = {1, 4, 4, 4};
  bus.setMixers({warns, VirtualMixer{}});
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 0, 0), NVX_WARNING);
  const auto requests = bus.requests();
  // Two writes, then the four selector reads of the first mixer only.
  ASSERT_EQ(requests.size(), 6u);
  EXPECT_EQ(requests[0], writeLine(0, kRouting, 0x0103));
  EXPECT_EQ(requests[1], writeLine(1, kRouting, 0x0103));
  for (size_t i = 2; i < 6; ++i) EXPECT_EQ(requests[i].substr(0, 4), "0 C0");

  bus.clearLog();
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 3, 0), NVX_OK);
  EXPECT_EQ(bus.requests().size(), 2u + 8u) << "selectors are read from every mixer even where no warning can result";
}

TEST_F(ApiRouting, DirectSetterPacksGroupChannelAndSource) {
  struct Case {
    int32_t channel, group;
    uint32_t source;
    uint16_t value;
  };
  const Case cases[] = {{1, 0, 3, 0x1203}, {1, -1, 3, 0x0203}, {1, 15, 3, 0x0203}, {4, 2, 15, 0x350F}, {0, 7, 0, 0x8100}};
  bus.setMixers({[] {
    VirtualMixer m;
    m.selectors = {5, 5, 5, 5};
    return m;
  }()});
  for (const auto &c : cases) {
    bus.clearLog();
    EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, c.channel, c.group, c.source), NVX_OK);
    EXPECT_EQ(bus.requests().front(), writeLine(0, kRouting, c.value));
  }
  EXPECT_FALSE(settings.exists()) << "the direct setter stores nothing";
}

TEST_F(ApiRouting, DirectSetterWarningRule) {
  for (uint32_t source : {0u, 2u, 3u, 5u}) {
    bus.setMixers({});
    EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 0, 0, source), source < 3 ? NVX_WARNING : NVX_OK) << "no mixer, " << source;
  }
  VirtualMixer five, four;
  five.selectors = {5, 5, 5, 5};
  four.selectors = {4, 4, 4, 4};
  bus.setMixers({five});
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 1), NVX_OK);
  bus.setMixers({five, four});
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 4), NVX_WARNING) << "any channel, byte not 5";
  EXPECT_EQ(NVX_SetUSBInputAudioDirect(0, 3, 0, 5), NVX_OK) << "sources from 5 never warn";
}

TEST_F(ApiRouting, CurrentIndexAndReapply) {
  bus.setMixers(mixers(1));
  uint32_t index = 77;
  settings.writeIntegers({{"Output4", 5}, {"Output2", 9}, {"Output0", -1}});
  EXPECT_EQ(NVX_GetCurrentUSBInputAudioIndex(0, 4, &index), NVX_OK);
  EXPECT_EQ(index, 5u);
  EXPECT_EQ(NVX_SetCurrentUSBInputAudio(0, 4), NVX_OK);
  EXPECT_EQ(bus.requests(), writesToEach(1, kRouting, 0x0512)) << "row 4 is reachable only here";

  bus.clearLog();
  EXPECT_EQ(NVX_GetCurrentUSBInputAudioIndex(0, 2, &index), NVX_OK);
  EXPECT_EQ(index, 9u) << "the getter does not range-test";
  EXPECT_EQ(NVX_SetCurrentUSBInputAudio(0, 2), NVX_OK);
  EXPECT_EQ(NVX_SetCurrentUSBInputAudio(0, 0), NVX_OK);
  EXPECT_TRUE(bus.requests().empty()) << "an index outside the menu is refused, nothing sent";
  EXPECT_EQ(settings.keyCount(), 3u) << "re-applying stores nothing";
}

// --- Warning text ------------------------------------------------------------------------------

class ApiWarningText : public ApiTest {
 protected:
  std::string text99() {
    const char *text = nullptr;
    EXPECT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 99, &text), NVX_OK);
    return text ? text : "<null>";
  }
};

TEST_F(ApiWarningText, NumberedLanguagesLeaveTheOutput) {
  for (int32_t language = 0; language <= 11; ++language) {
    const char *text = "untouched";
    EXPECT_EQ(NVX_GetWarningTextForSetUSBAudioInput(0, 4, NVX_WARNING, language, &text), NVX_OK);
    EXPECT_STREQ(text, "untouched") << language;
  }
}

TEST_F(ApiWarningText, LanguageNinetyNineFollowsTheUsersLocale) {
  const std::string english = text99();
  EXPECT_NE(english.find("input selector"), std::string::npos) << english;
  struct Case {
    const char *variable, *value;
    const char *fragment;
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
    EXPECT_NE(text99().find(c.fragment), std::string::npos) << c.variable << "=" << c.value;
  }
}

TEST_F(ApiWarningText, MissingBundleGivesNullAndMissingKeyGivesTheKey) {
  ScratchDir root;
  env.set("MXRK7_SYSROOT", root.path());
  EXPECT_EQ(text99(), "<null>");
  root.write("System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/English.lproj/Localizable.strings",
             "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>OTHER</key><string>x</string></dict></plist>");
  EXPECT_EQ(text99(), "WARNING2");
}

TEST_F(ApiTest, BoostReplayAdmitsAStoredFourAndRefusesMore) {
  bus.setMixers(mixers(1));
  struct Case {
    int64_t stored;
    int32_t result;
    std::vector<std::string> sent;
  };
  const std::vector<Case> cases = {{0, NVX_OK, writesToEach(1, kBoost, 0x0300)},
                                   {4, NVX_OK, writesToEach(1, kBoost, 0x0000)},
                                   {5, NVX_ERROR, {}},
                                   {-1, NVX_ERROR, {}}};
  for (const auto &c : cases) {
    settings.writeIntegers({{"MaxLevel", c.stored}});
    bus.clearLog();
    EXPECT_EQ(NVX_SetCurrentBoostLevelIndex(0), c.result) << c.stored;
    EXPECT_EQ(bus.requests(), c.sent) << c.stored;
  }
}

}  // namespace
}  // namespace nvx::test
