// Every setter once: the setup bytes each mixer receives, the one key the settings file then holds
// (with or without mixers), and what the family's getter reads back. The bytes are the wire format:
// bmRequestType, bRequest, wValue and wIndex little-endian, wLength.
#include <functional>

#include "api_fixture.h"

namespace nvx::test {
namespace {

constexpr uint32_t kUntouched = 77;

struct SetterCase {
  const char *name;
  std::function<int32_t()> set;
  const char *wire;
  const char *key;
  int64_t stored;
  std::function<int32_t(uint32_t *out)> get;  // out has room for two values; none: the family has no getter
  std::vector<uint32_t> readBack;
  int32_t result = NVX_OK;
};

void PrintTo(const SetterCase &c, std::ostream *os) { *os << c.name; }

template <int32_t (*Get)(int32_t, uint32_t *)>
int32_t plain(uint32_t *out) {
  return Get(0, out);
}

const SetterCase kSetters[] = {
    {"routing", [] { return NVX_SetUSBInputAudio(0, 1, 3); }, "40 03 07 02 02 80 00 00", "Output1", 3,
     [](uint32_t *o) { return NVX_GetCurrentUSBInputAudioIndex(0, 1, o); }, {3}},
    {"routing_channel2", [] { return NVX_SetUSBInputAudio(0, 2, 5); }, "40 03 11 03 02 80 00 00", "Output2", 5,
     [](uint32_t *o) { return NVX_GetCurrentUSBInputAudioIndex(0, 2, o); }, {5}},
    {"routing_channel3", [] { return NVX_SetUSBInputAudio(0, 3, 1); }, "40 03 0F 04 02 80 00 00", "Output3", 1,
     [](uint32_t *o) { return NVX_GetCurrentUSBInputAudioIndex(0, 3, o); }, {1}},
    {"boost_loudest", [] { return NVX_SetBoostLevelIndex(0, 0); }, "40 03 00 03 03 80 00 00", "MaxLevel", 0,
     plain<NVX_GetCurrentBoostLevelIndex>, {0}},
    {"boost_quietest", [] { return NVX_SetBoostLevelIndex(0, 3); }, "40 03 00 00 03 80 00 00", "MaxLevel", 3,
     plain<NVX_GetCurrentBoostLevelIndex>, {3}},
    {"filter", [] { return NVX_SetFXBANKFILTERModeIndex(0, 1, 3, 0x40); }, "40 03 40 13 0D 85 00 00", "BANKB_FILTER",
     0x1340, [](uint32_t *o) { return NVX_GetFXBANKFILTERModeIndex(0, 1, &o[0], &o[1]); }, {3, 0x40}},
    {"filter_param_low_byte", [] { return NVX_SetFXBANKFILTERModeIndex(0, 2, 4, 0x1FF); }, "40 03 FF 24 0D 85 00 00",
     "TEMPORARY_FILTER", 0x24FF, [](uint32_t *o) { return NVX_GetFXBANKFILTERModeIndex(0, 2, &o[0], &o[1]); },
     {4, 0xFF}},
    {"beat_fx_type", [] { return NVX_SetFXBANKBFXModeIndex(0, 1, 3, 0, 9); }, "40 03 09 58 0E 85 00 00",
     "BFX_BANKB3_0", 0x5809, [](uint32_t *o) { return NVX_GetFXBANKBFXModeIndex(0, 1, 3, 0, o); }, {9}},
    {"beat_fx_depth_low_byte", [] { return NVX_SetFXBANKBFXModeIndex(0, 1, 3, 1, 0x1C0); }, "40 03 C0 59 0E 85 00 00",
     "BFX_BANKB3_1", 0x59C0, [](uint32_t *o) { return NVX_GetFXBANKBFXModeIndex(0, 1, 3, 1, o); }, {0xC0}},
    {"beat_fx_beat", [] { return NVX_SetFXBANKBFXModeIndex(0, 0, 0, 2, 54); }, "40 03 36 02 0E 85 00 00",
     "BFX_BANKA0_2", 0x0236, [](uint32_t *o) { return NVX_GetFXBANKBFXModeIndex(0, 0, 0, 2, o); }, {54}},
    // A beat above 54 is sent and stored, but the getter does not hand it out.
    {"beat_fx_temporary", [] { return NVX_SetFXBANKBFXModeIndex(0, 2, 5, 2, 0xFF); }, "40 03 FF AA 0E 85 00 00",
     "BFX_TEMP5_2", 0xAAFF, [](uint32_t *o) { return NVX_GetFXBANKBFXModeIndex(0, 2, 5, 2, o); }, {kUntouched}},
    // Bank 3 has no key: sent, nothing stored.
    {"beat_fx_bank3", [] { return NVX_SetFXBANKBFXModeIndex(0, 3, 0, 0, 1); }, "40 03 01 C0 0E 85 00 00", nullptr, 0,
     nullptr, {}},
    {"channel_fader_a", [] { return NVX_SetFXBANKCHFADERModeIndex(0, 0, 3); }, "40 03 03 00 0F 85 00 00",
     "CHFADERBANK_A", 0x0003, nullptr, {}},
    {"channel_fader_b", [] { return NVX_SetFXBANKCHFADERModeIndex(0, 1, 2); }, "40 03 02 10 0F 85 00 00",
     "CHFADERBANK_B", 0x1002, nullptr, {}},
    // The temporary bank and bank 3 overwrite bank B's key.
    {"channel_fader_temporary", [] { return NVX_SetFXBANKCHFADERModeIndex(0, 2, 1); }, "40 03 01 20 0F 85 00 00",
     "CHFADERBANK_B", 0x2001, nullptr, {}},
    {"channel_fader_bank3", [] { return NVX_SetFXBANKCHFADERModeIndex(0, 3, 3); }, "40 03 03 30 0F 85 00 00",
     "CHFADERBANK_B", 0x3003, nullptr, {}},
    {"tail_b", [] { return NVX_SetFXBANKBFXTAILIndex(0, 1, 1); }, "40 03 01 10 10 85 00 00", "TAIL_BANK_B", 0x1001,
     [](uint32_t *o) { return NVX_GetFXBANKBFXTAILIndex(0, 1, o); }, {1}},
    {"tail_temporary", [] { return NVX_SetFXBANKBFXTAILIndex(0, 2, 1); }, "40 03 01 20 10 85 00 00", "TAIL_TEMP",
     0x2001, [](uint32_t *o) { return NVX_GetFXBANKBFXTAILIndex(0, 2, o); }, {1}},
    // Bank 3 is sent, then refused for want of a key.
    {"tail_bank3", [] { return NVX_SetFXBANKBFXTAILIndex(0, 3, 1); }, "40 03 01 30 10 85 00 00", nullptr, 0, nullptr,
     {},
     NVX_ERROR},
    {"cut_lag", [] { return NVX_SetCROSSFADERCUTLAGIndex(0, 255); }, "40 03 00 FF 11 85 00 00", "CRFaderCutLag", 255,
     plain<NVX_GetCROSSFADERCUTLAGIndex>, {255}},
    {"loop_button", [] { return NVX_Set4BEATLOOPBUTTONTypeIndex(0, 1); }, "40 03 00 01 12 85 00 00", "4BeatLpBtType",
     1, plain<NVX_Get4BEATLOOPBUTTONTypeIndex>, {1}},
    {"fader_start", [] { return NVX_SetFADERSTARTIndex(0, 2); }, "40 03 00 02 13 85 00 00", "FaderStartMode", 2,
     plain<NVX_GetFADERSTARTIndex>, {2}},
    {"pad_mode", [] { return NVX_SetPADModeIndex(0, 2); }, "40 03 00 02 14 85 00 00", "PADMode", 2,
     plain<NVX_GetPADModeIndex>, {2}},
    {"cut_lag_mode", [] { return NVX_SetCROSSFADERCUTLAGModeIndex(0, 3); }, "40 03 00 03 15 85 00 00",
     "CRFaderCutLagMode", 3, plain<NVX_GetCROSSFADERCUTLAGModeIndex>, {3}},
};

class ApiSetters : public ApiTest, public ::testing::WithParamInterface<SetterCase> {};

TEST_P(ApiSetters, SendToEveryMixerStoreOneKeyAndReadBack) {
  const auto &c = GetParam();
  ASSERT_EQ(c.set(), c.result) << "without mixers";
  ASSERT_EQ(settings.exists(), c.key != nullptr);
  if (c.key) {
    EXPECT_EQ(settings.integers(), (std::map<std::string, int64_t>{{c.key, c.stored}}));
  }
  bus.setMixers(mixers(2));
  ASSERT_EQ(c.set(), c.result);
  EXPECT_EQ(bus.writes(), (std::vector<std::string>{std::string("0 ") + c.wire, std::string("1 ") + c.wire}));
  if (!c.get) return;
  uint32_t out[2] = {kUntouched, kUntouched};
  EXPECT_EQ(c.get(out), NVX_OK);
  EXPECT_EQ(std::vector<uint32_t>(out, out + c.readBack.size()), c.readBack);
}

INSTANTIATE_TEST_SUITE_P(, ApiSetters, ::testing::ValuesIn(kSetters),
                         [](const auto &p) { return std::string(p.param.name); });

}  // namespace
}  // namespace nvx::test
