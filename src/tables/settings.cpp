#include "tables/settings.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "NorvaneMXRK7Setup.h"
#include "tables/code_tables.h"

// Marks a text for people: the translations of the setup application pick these up.
#define N_(text) text

namespace nvx::tables {

namespace {

// --- Instances ----------------------------------------------------------------------------------

constexpr uint32_t kBanks = 3;
constexpr uint32_t kPositions = 6;
constexpr uint32_t kItems = 3;
constexpr uint32_t kLastSettableChannel = 3;

constexpr ParamSpec kChannel{Param::Channel, kUsbAudioChannels};
constexpr ParamSpec kBank{Param::Bank, kBanks};
constexpr ParamSpec kPosition{Param::Position, kPositions};
constexpr ParamSpec kItem{Param::Item, kItems};

constexpr std::array<ParamSpec, 0> kNoParams{};
constexpr std::array<ParamSpec, 1> kByChannel{kChannel};
constexpr std::array<ParamSpec, 1> kByBank{kBank};
constexpr std::array<ParamSpec, 3> kByBeatFxSlot{kBank, kPosition, kItem};

// --- Values -------------------------------------------------------------------------------------

// A menu from a text table with `size` entries; the entries end at the first null one.
template <const char *const *Table, uint32_t Size>
const char *tableText(Numbers, uint32_t index) {
  return index < Size ? Table[index] : nullptr;
}
template <const char *const *Table, uint32_t Size>
uint32_t tableLast(Numbers args) {
  uint32_t count = 0;
  while (count < Size && tableText<Table, Size>(args, count)) ++count;
  return count - 1;
}
template <uint32_t Last>
uint32_t upTo(Numbers) {
  return Last;
}

// Channel c's routing menu: entry i names InputAudioText[MXRK7_TEXT[c][i]].
const char *routingText(Numbers args, uint32_t index) {
  return index < kRoutingMenuSize ? InputAudioText[MXRK7_TEXT[args[0]][index]] : nullptr;
}

// The beat FX value depends on the item: the effect (its menu), the depth (any byte), or the beat
// (a code 0-54 of the mixer).
constexpr uint32_t kLastBeatCode = 54;
constexpr uint32_t kTypeItem = 0;
constexpr uint32_t kDepthItem = 1;
const char *beatFxText(Numbers args, uint32_t index) {
  return args[2] == kTypeItem ? tableText<BFXTypeText, 16>(args, index) : nullptr;
}
uint32_t beatFxLast(Numbers args) {
  if (args[2] == kTypeItem) return tableLast<BFXTypeText, 16>(args);
  return args[2] == kDepthItem ? 255 : kLastBeatCode;
}

constexpr std::array<FieldSpec, 1> kRoutingFields{{{"source", routingText, upTo<kRoutingMenuSize - 1>, 0}}};
constexpr std::array<FieldSpec, 1> kBoostFields{
    {{"level", tableText<BoostLevelText, 4>, tableLast<BoostLevelText, 4>}}};
constexpr std::array<FieldSpec, 2> kFilterFields{{
    {"mode", tableText<FXBANKFilterModeText, 6>, tableLast<FXBANKFilterModeText, 6>},
    {"param", nullptr, upTo<255>},
}};
constexpr std::array<FieldSpec, 1> kBeatFxFields{{{"value", beatFxText, beatFxLast, 2}}};
constexpr std::array<FieldSpec, 1> kChannelFaderFields{
    {{"mode", tableText<FXBANKChFaderModeText, 4>, tableLast<FXBANKChFaderModeText, 4>}}};
constexpr std::array<FieldSpec, 1> kTailFields{{{"tail", nullptr, upTo<1>, -1, true}}};
constexpr std::array<FieldSpec, 1> kCutLagFields{{{"value", nullptr, upTo<255>}}};
constexpr std::array<FieldSpec, 1> kLoopButtonFields{{{"value", nullptr, upTo<1>}}};
constexpr std::array<FieldSpec, 1> kFaderStartFields{{{"value", nullptr, upTo<2>}}};
constexpr std::array<FieldSpec, 1> kPadModeFields{{{"value", nullptr, upTo<2>}}};
constexpr std::array<FieldSpec, 1> kCutLagModeFields{{{"value", nullptr, upTo<3>}}};
constexpr std::array<FieldSpec, 1> kCrossfaderModeFields{
    {{"mode", tableText<CrossFaderModeText, 4>, tableLast<CrossFaderModeText, 4>}}};

// --- Words on the wire --------------------------------------------------------------------------

uint16_t routingWord(Numbers args, Numbers values) { return _convTable_K7[args[0]][values[0]]; }
uint16_t boostWord(Numbers, Numbers values) { return static_cast<uint16_t>(_convDbTable[values[0]] << 8); }
// Bits 15-12 bank, 11-8 mode, 7-0 parameter.
uint16_t filterWord(Numbers args, Numbers values) {
  return static_cast<uint16_t>((args[0] << 12 | (values[0] & 0xF) << 8 | (values[1] & 0xFF)) & 0xFFFF);
}
// Bits 15-14 bank, 13-11 position, 10-8 item, 7-0 value.
uint16_t beatFxWord(Numbers args, Numbers values) {
  return static_cast<uint16_t>((args[0] << 14 | (args[1] & 7) << 11 | (args[2] & 7) << 8 | (values[0] & 0xFF)) &
                               0xFFFF);
}
// Bits 15-12 bank, then the mode.
uint16_t channelFaderWord(Numbers args, Numbers values) { return static_cast<uint16_t>(args[0] << 12 | values[0]); }
// Bits 15-12 bank, 7-0 tail.
uint16_t tailWord(Numbers args, Numbers values) { return static_cast<uint16_t>(args[0] << 12 | (values[0] & 0xFF)); }
// The play settings carry their index in the high byte.
uint16_t highByteWord(Numbers, Numbers values) { return static_cast<uint16_t>((values[0] << 8) & 0xFFFF); }

// --- Keys and stored numbers --------------------------------------------------------------------

template <const std::string_view *Key>
std::optional<std::string> fixedKey(Numbers) {
  return std::string(*Key);
}

constexpr std::string_view kMaxLevel = "MaxLevel";
constexpr std::string_view kCrossfaderCutLag = "CRFaderCutLag";
constexpr std::string_view kLoopButtonType = "4BeatLpBtType";
constexpr std::string_view kFaderStart = "FaderStartMode";
constexpr std::string_view kPadMode = "PADMode";
constexpr std::string_view kCutLagMode = "CRFaderCutLagMode";

constexpr std::array<std::string_view, kBanks> kFilterKeys = {"BANKA_FILTER", "BANKB_FILTER", "TEMPORARY_FILTER"};
// One template per bank and position; "%d" = the item.
constexpr std::array<std::array<std::string_view, kPositions>, kBanks> kBeatFxTemplates = {{
    {"BFX_BANKA0_%d", "BFX_BANKA1_%d", "BFX_BANKA2_%d", "BFX_BANKA3_%d", "BFX_BANKA4_%d", "BFX_BANKA5_%d"},
    {"BFX_BANKB0_%d", "BFX_BANKB1_%d", "BFX_BANKB2_%d", "BFX_BANKB3_%d", "BFX_BANKB4_%d", "BFX_BANKB5_%d"},
    {"BFX_TEMP0_%d", "BFX_TEMP1_%d", "BFX_TEMP2_%d", "BFX_TEMP3_%d", "BFX_TEMP4_%d", "BFX_TEMP5_%d"},
}};
// Bank A has its own channel fader key; every other bank shares the second.
constexpr std::array<std::string_view, 2> kChannelFaderKeys = {"CHFADERBANK_A", "CHFADERBANK_B"};
constexpr std::array<std::string_view, kBanks> kTailKeys = {"TAIL_BANK_A", "TAIL_BANK_B", "TAIL_TEMP"};
constexpr uint32_t kStoredTailMask = 0xF0FF;

std::optional<std::string> routingKey(Numbers args) { return keys::makeKey("Output%d", args[0]); }
std::optional<std::string> filterKey(Numbers args) {
  if (args[0] >= kBanks) return std::nullopt;
  return std::string(kFilterKeys[args[0]]);
}
std::optional<std::string> beatFxKey(Numbers args) {
  if (args[0] >= kBanks || args[1] >= kPositions) return std::nullopt;
  return keys::makeKey(kBeatFxTemplates[args[0]][args[1]], args[2]);
}
std::optional<std::string> channelFaderKey(Numbers args) { return std::string(kChannelFaderKeys[args[0] == 0 ? 0 : 1]); }
std::optional<std::string> tailKey(Numbers args) {
  if (args[0] >= kBanks) return std::nullopt;
  return std::string(kTailKeys[args[0]]);
}

int32_t storedIndex(Numbers, Numbers values, uint16_t) { return static_cast<int32_t>(values[0]); }
int32_t storedWord(Numbers, Numbers, uint16_t word) { return word; }
// The filter word is kept as a signed 16-bit number.
int32_t storedSignedWord(Numbers, Numbers, uint16_t word) { return static_cast<int16_t>(word); }
int32_t storedTail(Numbers, Numbers, uint16_t word) { return static_cast<int32_t>(word & kStoredTailMask); }

uint32_t lowByte(int32_t stored) { return static_cast<uint32_t>(stored) & 0xFF; }

std::optional<Values> wholeNumber(Numbers, int32_t stored) { return Values{static_cast<uint32_t>(stored)}; }
std::optional<Values> lowByteValue(Numbers, int32_t stored) { return Values{lowByte(stored)}; }
std::optional<Values> filterValues(Numbers, int32_t stored) {
  return Values{(static_cast<uint32_t>(stored) >> 8) & 0xF, lowByte(stored)};
}
// The shared word of banks B and temporary holds the mode of the bank it names in bits 15-12.
std::optional<Values> channelFaderValues(Numbers args, int32_t stored) {
  if (((static_cast<uint32_t>(stored) >> 12) & 0xF) != args[0]) return std::nullopt;
  return Values{static_cast<uint32_t>(stored) & 0xFFF};
}
// The crossfader mode is bits 8-15 of the cut lag mode's number.
std::optional<Values> highByteValue(Numbers, int32_t stored) {
  return Values{(static_cast<uint32_t>(stored) >> 8) & 0xFF};
}

// --- The library's answers ----------------------------------------------------------------------

// Preset into a getter's outputs to see whether it wrote them: no value the library reports for a
// setting whose getter may leave its output untouched comes near it.
constexpr uint32_t kUntouched = 0xFFFFFFFFu;

template <size_t N, class Get>
std::optional<Values> answer(Get get) {
  Values values(N, kUntouched);
  if (get(values.data()) != NVX_OK) return std::nullopt;
  if (std::find(values.begin(), values.end(), kUntouched) != values.end()) return std::nullopt;
  return values;
}

std::optional<Values> readRouting(Numbers args) {
  return answer<1>([&](uint32_t *out) { return NVX_GetCurrentUSBInputAudioIndex(0, static_cast<int32_t>(args[0]), out); });
}
std::optional<Values> readBoost(Numbers) {
  return answer<1>([](uint32_t *out) { return NVX_GetCurrentBoostLevelIndex(0, out); });
}
std::optional<Values> readFilter(Numbers args) {
  return answer<2>([&](uint32_t *out) { return NVX_GetFXBANKFILTERModeIndex(0, args[0], &out[0], &out[1]); });
}
std::optional<Values> readBeatFx(Numbers args) {
  return answer<1>([&](uint32_t *out) { return NVX_GetFXBANKBFXModeIndex(0, args[0], args[1], args[2], out); });
}
std::optional<Values> readTail(Numbers args) {
  return answer<1>([&](uint32_t *out) { return NVX_GetFXBANKBFXTAILIndex(0, args[0], out); });
}
template <int32_t (*Get)(int32_t, uint32_t *)>
std::optional<Values> readPlain(Numbers) {
  return answer<1>([](uint32_t *out) { return Get(0, out); });
}

bool routingSettable(Numbers args) { return args[0] <= kLastSettableChannel; }

// Decks 1 and 2 warn when their selector is on another position than 4 (a real position, below 8).
bool routingWarnsOn(Numbers args, uint8_t selector) { return selector != 4 && args[0] <= 1 && selector < 8; }

// Readers without a getter of their own (the channel fader words) take the file's number.
constexpr keys::ReadRule kFileOnly{keys::Missing::Untouched, keys::Missing::Untouched, 0};

}  // namespace

using R = usb::Request;

constexpr std::array<SettingDescriptor, static_cast<size_t>(SettingId::Count)> kSettings = {{
    {SettingId::Routing, Area::Audio, "routing", N_("Audio to the computer"),
     N_("Which mixer signal each USB channel carries to the computer: what your DJ software records or "
        "uses for timecode."),
     kByChannel, kRoutingFields, routingSettable, R::SetMixerOutputSetting, routingWord, routingKey, storedIndex,
     wholeNumber, readRouting, keys::rules::kRouting, Notice::InputAudio, routingWarnsOn},
    {SettingId::Boost, Area::Audio, "boost", N_("Output boost"),
     N_("How loud the mixer sends its audio to the computer. Lower it if recordings clip."), kNoParams,
     kBoostFields, nullptr, R::SetUSBOutputLevelSetting, boostWord, fixedKey<&kMaxLevel>, storedIndex, wholeNumber,
     readBoost, keys::rules::kBoost, Notice::BoostLevel, nullptr},
    {SettingId::FxFilter, Area::FxBank, "fx-filter", N_("Filter"),
     N_("Which filter the bank uses, and the value that shapes it."), kByBank, kFilterFields,
     nullptr, R::SetFXBANKFILTERModeSetting, filterWord, filterKey, storedSignedWord, filterValues, readFilter,
     keys::rules::kFilterGet, Notice::None, nullptr},
    {SettingId::BeatFx, Area::FxBank, "beat-fx", N_("Beat FX"),
     N_("The effect, its depth and its beat length on each of the six beat FX positions of the bank."),
     kByBeatFxSlot, kBeatFxFields,
     nullptr, R::SetFXBANKBFXModeSetting, beatFxWord, beatFxKey, storedWord, lowByteValue, readBeatFx,
     keys::rules::kBeatFx, Notice::None, nullptr},
    {SettingId::ChannelFader, Area::FxBank, "channel-fader", N_("Channel fader"),
     N_("What the channel fader does while this bank's effects are in use."),
     kByBank, kChannelFaderFields, nullptr, R::SetFXBANKCHFADERModeSetting, channelFaderWord, channelFaderKey,
     storedWord, channelFaderValues, nullptr, kFileOnly, Notice::None, nullptr},
    {SettingId::BeatFxTail, Area::FxBank, "beat-fx-tail", N_("Beat FX tail"),
     N_("Let an echo or delay ring out after you switch the beat effect off, instead of cutting it."),
     kByBank, kTailFields, nullptr, R::SetFXBANKBFXTAILSetting, tailWord, tailKey, storedTail, lowByteValue,
     readTail, keys::rules::kTail, Notice::None, nullptr},
    {SettingId::CrossfaderCutLag, Area::Play, "crossfader-cut-lag", N_("Crossfader cut lag"),
     N_("How far the crossfader travels before the other side comes in: small values give the sharp cut "
        "that scratching needs."), kNoParams,
     kCutLagFields, nullptr, R::SetCROSSFADERCUTLAGSetting, highByteWord, fixedKey<&kCrossfaderCutLag>,
     storedIndex, lowByteValue, readPlain<NVX_GetCROSSFADERCUTLAGIndex>, keys::rules::kPlayUntouched,
     Notice::None, nullptr},
    {SettingId::LoopButtonType, Area::Play, "loop-button-type", N_("4-beat loop button"),
     N_("How the 4-beat loop button behaves when you press it."), kNoParams, kLoopButtonFields, nullptr,
     R::Set4BEETLOOPBUTTONTYPESetting, highByteWord, fixedKey<&kLoopButtonType>, storedIndex, lowByteValue,
     readPlain<NVX_Get4BEATLOOPBUTTONTypeIndex>, keys::rules::kPlayUntouched, Notice::None, nullptr},
    {SettingId::FaderStart, Area::Play, "fader-start", N_("Fader start"),
     N_("Whether moving a fader starts playback on the deck it belongs to."), kNoParams,
     kFaderStartFields, nullptr, R::SetFADERSTARTSetting, highByteWord, fixedKey<&kFaderStart>, storedIndex,
     lowByteValue, readPlain<NVX_GetFADERSTARTIndex>, keys::rules::kPlayZero, Notice::None, nullptr},
    {SettingId::PadMode, Area::Play, "pad-mode", N_("Pad mode"),
     N_("What the performance pads do when you press them."),
     kNoParams, kPadModeFields, nullptr, R::SetPADModeSetting, highByteWord, fixedKey<&kPadMode>, storedIndex,
     lowByteValue, readPlain<NVX_GetPADModeIndex>, keys::rules::kPlayZero, Notice::None, nullptr},
    // The cut lag mode travels in the request named for the crossfader fade.
    {SettingId::CutLagMode, Area::Play, "cut-lag-mode", N_("Cut lag mode"),
     N_("How the mixer applies the crossfader cut lag."), kNoParams, kCutLagModeFields, nullptr,
     R::SetCROSSFADERFADESetting, highByteWord, fixedKey<&kCutLagMode>, storedIndex, lowByteValue,
     readPlain<NVX_GetCROSSFADERCUTLAGModeIndex>, keys::rules::kPlayZero, Notice::None, nullptr},
    // Read only: bits 8-15 of the number stored for the cut lag mode.
    {SettingId::CrossfaderMode, Area::Play, "crossfader-mode", N_("Crossfader mode"),
     N_("The crossfader curve stored along with the cut lag mode. Shown for information: it cannot be "
        "set here."), kNoParams,
     kCrossfaderModeFields, nullptr, std::nullopt, nullptr, fixedKey<&kCutLagMode>, nullptr, highByteValue,
     readPlain<NVX_GetCurrentCROSSFADERModeIndex>, keys::rules::kPlayZero, Notice::None, nullptr},
}};

namespace {

constexpr bool inIdOrder() {
  for (size_t i = 0; i < kSettings.size(); ++i)
    if (static_cast<size_t>(kSettings[i].id) != i) return false;
  return true;
}

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

// Every instance the library can address with a key: the people's instances, and bank 3 where a
// setter takes it.
void collectKeys(const SettingDescriptor &d, std::vector<uint32_t> &args, std::set<std::string, std::less<>> &all) {
  if (args.size() == d.params.size()) {
    if (const auto key = d.key(args)) all.insert(*key);
    return;
  }
  const uint32_t count = d.params[args.size()].count + (d.params[args.size()].kind == Param::Bank ? 1 : 0);
  for (uint32_t n = 0; n < count; ++n) {
    args.push_back(n);
    collectKeys(d, args, all);
    args.pop_back();
  }
}

}  // namespace

const SettingDescriptor *findSetting(std::string_view name) {
  for (const auto &d : kSettings)
    if (sameName(d.name, name)) return &d;
  return nullptr;
}

bool isLibraryKey(std::string_view key) {
  static const auto all = [] {
    std::set<std::string, std::less<>> keys{std::string(keys::kPopUp)};
    std::vector<uint32_t> args;
    for (const auto &d : kSettings) collectKeys(d, args, keys);
    return keys;
  }();
  return all.contains(key);
}

static_assert(inIdOrder(), "the table follows the order of SettingId");

}  // namespace nvx::tables
