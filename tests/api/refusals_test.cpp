// Arguments each function refuses, and each getter's answer for a missing file or key and for a
// stored word.
#include <filesystem>

#include "api_fixture.h"

namespace nvx::test {
namespace {

uint32_t out, param;
int32_t status;
const char *text;

// Refused before any mixer or file is touched, every output left as the caller had it. Where two
// tests fail at once the order decides nothing; the rows with one bad argument each pin every test.
const Call kRefusals[] = {
    CALL(NVX_GetFirmwareVersionIndex(1, &status)), CALL(NVX_GetFirmwareVersionIndex(0, nullptr)),
    CALL(NVX_GetMixerInputSelectorStatus(0, 5, &status)), CALL(NVX_GetMixerInputSelectorStatus(0, -1, &status)),
    CALL(NVX_GetMixerInputSelectorStatus(1, 1, &status)), CALL(NVX_GetMixerSeratoActiveStatus(1, &status)),
    CALL(NVX_GetMixerSeratoActiveStatus(0, nullptr)), CALL(NVX_GetProductId(nullptr, &status)),
    CALL(NVX_GetProductId("MXR-K7", nullptr)), CALL(NVX_GetNumOfInputAudioIndex(0, 5, &out)),
    CALL(NVX_GetNumOfInputAudioIndex(0, -1, &out)), CALL(NVX_GetUSBInputAudioText(0, 0, 8, 0, &text)),
    CALL(NVX_GetUSBInputAudioText(0, 0, 0, 0, nullptr)), CALL(NVX_SetUSBInputAudio(0, 4, 0)),
    CALL(NVX_SetUSBInputAudio(0, 0, 8)), CALL(NVX_SetUSBInputAudio(1, 0, 0)),
    CALL(NVX_SetUSBInputAudioDirect(0, 5, 0, 0)), CALL(NVX_SetUSBInputAudioDirect(0, 0, 0, 16)),
    CALL(NVX_SetUSBInputAudioDirect(1, 0, 0, 0)), CALL(NVX_SetCurrentUSBInputAudio(1, 0)),
    CALL(NVX_SetCurrentUSBInputAudio(0, 5)), CALL(NVX_GetCurrentUSBInputAudioIndex(0, 5, &out)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_OK, 99, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 5, NVX_WARNING, 99, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(1, 0, NVX_WARNING, 99, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 12, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 98, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, -1, &text)),
    CALL(NVX_GetWarningTextForSetUSBAudioInput(0, 0, NVX_WARNING, 99, nullptr)),
    CALL(NVX_GetBoostLevelText(0, 4, 0, &text)), CALL(NVX_GetBoostLevelText(1, 0, 0, &text)),
    CALL(NVX_SetBoostLevelIndex(0, 4)), CALL(NVX_SetBoostLevelIndex(1, 0)), CALL(NVX_SetCurrentBoostLevelIndex(1)),
    CALL(NVX_GetCurrentBoostLevelIndex(0, nullptr)), CALL(NVX_GetNumOfFXBANKFILTERModeIndex(0, nullptr)),
    CALL(NVX_GetFXBANKFILTERModeText(0, 6, 0, &text)), CALL(NVX_SetFXBANKFILTERModeIndex(0, 3, 0, 0)),
    CALL(NVX_SetFXBANKFILTERModeIndex(0, 0, 5, 0)), CALL(NVX_SetFXBANKFILTERModeIndex(1, 0, 0, 0)),
    CALL(NVX_GetFXBANKFILTERModeIndex(0, 3, &out, &param)), CALL(NVX_GetFXBANKFILTERModeIndex(0, 0, nullptr, &param)),
    CALL(NVX_SendFXBANKFILTERModeIndex(1)), CALL(NVX_GetFXBANKBEATEFFECTModeText(0, 7, 0, 0, &text)),
    CALL(NVX_GetFXBANKBEATEFFECTModeText(0, 0, 16, 0, &text)), CALL(NVX_GetNumOfFXBANKBEATEFFECTModeIndex(0, 7, &out)),
    CALL(NVX_SetCurrentFXBANKBEATEFFECTModeIndex(0, 7)), CALL(NVX_SetFXBANKBFXModeIndex(0, 0, 6, 0, 0)),
    CALL(NVX_SetFXBANKBFXModeIndex(0, 0, 0, 3, 0)), CALL(NVX_SetFXBANKBFXModeIndex(1, 0, 0, 0, 0)),
    CALL(NVX_SetFXBANKCHFADERModeIndex(0, 0, 4)), CALL(NVX_SetFXBANKCHFADERModeIndex(0, 4, 0)),
    CALL(NVX_SetFXBANKBFXTAILIndex(0, 0, 2)), CALL(NVX_GetFXBANKBFXTAILIndex(0, 4, &out)),
    CALL(NVX_SetCROSSFADERCUTLAGIndex(0, 256)), CALL(NVX_SetCROSSFADERCUTLAGIndex(1, 0)),
    CALL(NVX_Set4BEATLOOPBUTTONTypeIndex(0, 2)), CALL(NVX_SetFADERSTARTIndex(0, 3)),
    CALL(NVX_SetPADModeIndex(0, 3)), CALL(NVX_SetPADModeIndex(0, UINT32_MAX)),
    CALL(NVX_SetCROSSFADERCUTLAGModeIndex(0, 4)),
    CALL(NVX_GetPADModeIndex(1, &out)), CALL(NVX_GetPADModeIndex(0, nullptr)),
    CALL(NVX_GetNumOfCROSSFADERModeIndex(1, &out)), CALL(NVX_GetCROSSFADERModeText(0, 3, 0, &text)),
    CALL(NVX_GetCROSSFADERModeText(0, 0, 0, nullptr)),
    // MIDI is reserved: every function refuses, and Register stores nothing.
    CALL(NVX_GetNumOfMidiChannelIndex(0, &out)), CALL(NVX_GetMidiChannelText(0, 0, 0, &text)),
    CALL(NVX_SetMidiChannelIndex(0, 0)), CALL(NVX_GetCurrentMidiChannelIndex(0, &out)),
    CALL(NVX_SetCurrentMidiChannelIndex(0)), CALL(NVX_GetNumOfMidiKeyModeIndex(0, &out)),
    CALL(NVX_GetMidiKeyModeText(0, 0, 0, &text)), CALL(NVX_SetMidiKeyModeIndex(0, 0)),
    CALL(NVX_GetCurrentMidiKeyModeIndex(0, &out)), CALL(NVX_SetCurrentMidiKeyModeIndex(0)),
    CALL(NVX_RegisterMidiChannelChangedCallback(0, [](int32_t, void *) {}, &out)),
    CALL(NVX_UnregisterMidiChannelChangedCallback(0)),
    CALL(NVX_RegisterMidiKeyModeChangedCallback(0, [](int32_t, void *) {}, &out)),
    CALL(NVX_UnregisterMidiKeyModeChangedCallback(0)),
};

TEST_F(ApiTest, RefusedCallsTouchNoMixerNoFileAndNoOutput) {
  settings.writeIntegers({{"PADMode", 1}, {"BANKA_FILTER", 0x0213}, {"MaxLevel", 2}, {"TAIL_BANK_A", 1}});
  const std::string file = readFile(settings.filePath());
  bus.setMixers(mixers(1));
  for (const auto &c : kRefusals) {
    out = param = 77;
    status = -7;
    text = "untouched";
    EXPECT_EQ(c.call(), NVX_ERROR) << c.what;
    EXPECT_TRUE(out == 77 && param == 77 && status == -7 && std::string(text) == "untouched") << c.what;
  }
  EXPECT_TRUE(bus.log().empty());
  EXPECT_EQ(readFile(settings.filePath()), file);
  EXPECT_EQ(MidiChannelChangedCallbackFunc[0], nullptr);
  EXPECT_EQ(MidiKeyModeChangedContext[0], nullptr);
}

// A getter's answer without a file and without its key. (An unreadable file counts as none: the
// store's tests check that once for every reader.)
struct MissingCase {
  Call get;
  int32_t noFile;
  uint32_t noFileOut;
  int32_t noKey;
  uint32_t noKeyOut;
};

const MissingCase kMissing[] = {
    {CALL(NVX_GetCurrentUSBInputAudioIndex(0, 1, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetCurrentBoostLevelIndex(0, &out)), NVX_OK, 3, NVX_OK, 3},
    {CALL(NVX_GetFXBANKFILTERModeIndex(0, 1, &out, &param)), NVX_ERROR, 77, NVX_OK, 77},
    {CALL(NVX_GetCurrentFXBANKFILTERModeIndex(0, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetCurrentFXBANKBEATEFFECTModeIndex(0, 3, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetFXBANKBFXModeIndex(0, 0, 4, 0, &out)), NVX_ERROR, 77, NVX_OK, 77},
    // The file is read before the bank is tested.
    {CALL(NVX_GetFXBANKBFXModeIndex(0, 9, 0, 0, &out)), NVX_ERROR, 77, NVX_ERROR, 77},
    // The output is written 0 before the file is read.
    {CALL(NVX_GetFXBANKBFXTAILIndex(0, 1, &out)), NVX_ERROR, 0, NVX_OK, 0},
    {CALL(NVX_GetFXBANKBFXTAILIndex(0, 3, &out)), NVX_ERROR, 0, NVX_ERROR, 0},
    {CALL(NVX_GetCROSSFADERCUTLAGIndex(0, &out)), NVX_OK, 77, NVX_OK, 77},
    {CALL(NVX_Get4BEATLOOPBUTTONTypeIndex(0, &out)), NVX_OK, 77, NVX_OK, 77},
    {CALL(NVX_GetFADERSTARTIndex(0, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetPADModeIndex(0, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetCROSSFADERCUTLAGModeIndex(0, &out)), NVX_OK, 0, NVX_OK, 0},
    {CALL(NVX_GetCurrentCROSSFADERModeIndex(0, &out)), NVX_OK, 0, NVX_OK, 0},
};

TEST_F(ApiTest, GettersAnswerForAMissingFileOrKeyByTheirFamilysRule) {
  const auto answer = [](const Call &c) {
    out = param = 77;
    return std::pair{c.call(), out};
  };
  for (const auto &c : kMissing) {
    std::filesystem::remove(settings.filePath());
    EXPECT_EQ(answer(c.get), std::pair(c.noFile, c.noFileOut)) << c.get.what << ", no file";
    settings.writeIntegers({{"SomethingElse", 5}});
    EXPECT_EQ(answer(c.get), std::pair(c.noKey, c.noKeyOut)) << c.get.what << ", key missing";
  }
}

// What a getter hands out of the word its key holds.
struct ReadCase {
  const char *key;
  int64_t stored;
  Call get;
  int32_t result;
  uint32_t out;
};

const ReadCase kReads[] = {
    {"Output2", 9, CALL(NVX_GetCurrentUSBInputAudioIndex(0, 2, &out)), NVX_OK, 9},  // no range test
    {"BANKB_FILTER", 0x2F7E, CALL(NVX_GetFXBANKFILTERModeIndex(0, 1, &out, &param)), NVX_OK, 15},  // nor here
    {"PopUp", 16, CALL(NVX_GetCurrentFXBANKFILTERModeIndex(0, &out)), NVX_OK, 16},
    {"PopUp", 16, CALL(NVX_GetCurrentFXBANKBEATEFFECTModeIndex(0, 0, &out)), NVX_OK, 16},
    {"BFX_BANKA1_0", 15, CALL(NVX_GetFXBANKBFXModeIndex(0, 0, 1, 0, &out)), NVX_OK, 77},  // past the last effect
    {"BFX_BANKA1_3", 9, CALL(NVX_GetFXBANKBFXModeIndex(0, 0, 1, 3, &out)), NVX_OK, 0},  // an item past the table
    {"BFX_BANKA2_0", 0x0F0E, CALL(NVX_GetFXBANKBFXModeIndex(0, 0, 2, 0, &out)), NVX_OK, 14},  // the low byte
    {"TAIL_BANK_A", 0x1002, CALL(NVX_GetFXBANKBFXTAILIndex(0, 0, &out)), NVX_ERROR, 0},
    {"FaderStartMode", 0x0102, CALL(NVX_GetFADERSTARTIndex(0, &out)), NVX_OK, 2},  // the low byte, no range test
    {"FaderStartMode", -1, CALL(NVX_GetFADERSTARTIndex(0, &out)), NVX_OK, 255},
    {"CRFaderCutLagMode", 0x0201, CALL(NVX_GetCROSSFADERCUTLAGModeIndex(0, &out)), NVX_OK, 1},
    // The crossfader mode is bits 8-15 of the cut lag mode's key (what this library stores reads as 0).
    {"CRFaderCutLagMode", 0x0201, CALL(NVX_GetCurrentCROSSFADERModeIndex(0, &out)), NVX_OK, 2},
};

TEST_F(ApiTest, GettersHandOutAStoredWordByTheirFamilysRule) {
  for (const auto &c : kReads) {
    settings.writeIntegers({{c.key, c.stored}});
    out = param = 77;
    EXPECT_EQ(c.get.call(), c.result) << c.get.what;
    EXPECT_EQ(out, c.out) << c.get.what;
  }
}

}  // namespace
}  // namespace nvx::test
