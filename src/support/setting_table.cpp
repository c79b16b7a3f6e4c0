#include "support/setting_table.h"

#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "support/product.h"
#include "tables/play_settings.h"

// Marks a text for the translation catalogue of the setup application without translating it here:
// the application looks the text up in its own language when it shows it.
#define N_(text) text

namespace nvx::support {

namespace {

namespace keys = nvx::keys;

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

// Preset into a getter's output to see whether the getter wrote it: no value the library reports
// for a setting whose getter may leave its output untouched comes near it.
constexpr uint32_t kUntouched = 0xFFFFFFFFu;

std::optional<Values> readOutputs(size_t count, const std::function<int32_t(uint32_t *)> &get) {
  Values values(count, kUntouched);
  if (get(values.data()) != NVX_OK) return std::nullopt;
  if (std::any_of(values.begin(), values.end(), [](uint32_t v) { return v == kUntouched; })) return std::nullopt;
  return values;
}

// A setting whose getter has one output.
std::function<std::optional<Values>(const Args &, const StoredSettings &)> getter(
    std::function<int32_t(const Args &, uint32_t *)> get) {
  return [get = std::move(get)](const Args &args, const StoredSettings &) {
    return readOutputs(1, [&](uint32_t *out) { return get(args, out); });
  };
}

// The setting's key, and its stored integer read from that key.
void keyed(Setting &s, std::function<std::string(const Args &)> key) {
  s.key = std::move(key);
  s.stored = [key = s.key](const Args &args, const StoredSettings &file) { return file.integer(key(args)); };
}

std::function<WriteResult(const Args &, const Values &)> setter(
    std::function<int32_t(const Args &, const Values &)> set) {
  return [set = std::move(set)](const Args &args, const Values &values) {
    return WriteResult{set(args, values), std::nullopt};
  };
}

Field fixedField(std::string name, Domain domain) {
  return {std::move(name), [domain = std::move(domain)](const Args &) { return domain; }, std::nullopt};
}

// Menus read from the library's text functions.
Domain textMenu(const std::function<int32_t(uint32_t, const char **)> &text) {
  return menuDomain([&](uint32_t index) -> const char * {
    const char *entry = nullptr;
    return text(index, &entry) == NVX_OK ? entry : nullptr;
  });
}

Domain routingMenu(uint32_t channel) {
  return textMenu([&](uint32_t index, const char **text) {
    return NVX_GetUSBInputAudioText(productId(), static_cast<int32_t>(channel), index, 0, text);
  });
}

Domain beatEffectMenu() {
  // The slot argument selects nothing; 0 is as good as any.
  return textMenu([](uint32_t index, const char **text) {
    return NVX_GetFXBANKBEATEFFECTModeText(productId(), 0, index, 0, text);
  });
}

// --- Parameters ---------------------------------------------------------------------------------

constexpr uint32_t kChannels = 5;
constexpr uint32_t kBanks = 3;
constexpr uint32_t kPositions = 6;
constexpr uint32_t kItems = 3;

Param channelParam() { return {"channel", rangeDomain(0, kChannels - 1)}; }

// Banks by short name, the library's own bank names (FXBANKKeyText) or number.
Param bankParam() {
  static constexpr std::array<const char *, kBanks> kNames = {"A", "B", "temporary"};
  Domain domain;
  for (uint32_t bank = 0; bank < kBanks; ++bank) {
    Choice choice{bank, kNames[bank], {}};
    if (!sameName(choice.text, FXBANKKeyText[bank])) choice.aliases.emplace_back(FXBANKKeyText[bank]);
    domain.choices.push_back(std::move(choice));
  }
  domain.indices = IndexRange{0, kBanks - 1};
  return {"bank", std::move(domain)};
}

// Positions count from 1 as their names BTFX_1 to BTFX_6 do; the library counts from 0.
Param positionParam() {
  Domain domain;
  for (uint32_t position = 0; position < kPositions; ++position)
    domain.choices.push_back({position, std::to_string(position + 1), {FXBANKBFXPositionText[position]}});
  return {"position", std::move(domain)};
}

// Items by short name, the library's own item names (FXBANKBFXtypeText: "FXType", "Deprh",
// "BEAT") or number.
Param itemParam() {
  static constexpr std::array<const char *, kItems> kNames = {"type", "depth", "beat"};
  Domain domain;
  for (uint32_t item = 0; item < kItems; ++item) domain.choices.push_back({item, kNames[item], {FXBANKBFXtypeText[item]}});
  domain.indices = IndexRange{0, kItems - 1};
  return {"item", std::move(domain)};
}

// --- The settings -------------------------------------------------------------------------------

Setting routing() {
  Setting s;
  s.name = "routing";
  s.summary = "Source of a USB audio channel: the mixer signal the computer receives on it.";
  s.title = N_("Audio to the computer");
  s.sentence = N_("Which mixer signal each USB channel carries to the computer: what your DJ software records or uses for timecode.");
  s.params = {channelParam()};
  s.fields = {{"source", [](const Args &args) { return routingMenu(args[0]); }, 0}};
  keyed(s, [](const Args &args) { return keys::makeKey(keys::kOutputTemplate, args[0]); });
  s.read = getter([](const Args &args, uint32_t *out) {
    return NVX_GetCurrentUSBInputAudioIndex(productId(), static_cast<int32_t>(args[0]), out);
  });
  s.write = [](const Args &args, const Values &values) {
    const auto channel = static_cast<int32_t>(args[0]);
    WriteResult out{NVX_SetUSBInputAudio(productId(), channel, values[0]), std::nullopt};
    if (out.result == NVX_WARNING) {
      const char *text = nullptr;
      constexpr int32_t kUserLanguage = 99;
      if (NVX_GetWarningTextForSetUSBAudioInput(productId(), channel, out.result, kUserLanguage, &text) == NVX_OK &&
          text)
        out.warning = text;
      else
        out.warning = "the mixer's input selector of this deck is not set for the chosen source";
    }
    return out;
  };
  s.refuseSet = [](const Args &args) -> std::optional<std::string> {
    if (args[0] <= 3) return std::nullopt;
    return fmt::format("routing channel {} cannot be set: the library sets channels 0-3", args[0]);
  };
  s.replay = [](const Args &args) { return NVX_SetCurrentUSBInputAudio(productId(), static_cast<int32_t>(args[0])); };
  return s;
}

Setting boost() {
  Setting s;
  s.name = "boost";
  s.summary = "Level of the mixer's USB audio output to the computer.";
  s.title = N_("Output boost");
  s.sentence = N_("How loud the mixer sends its audio to the computer. Lower it if recordings clip.");
  s.fields = {fixedField("level", textMenu([](uint32_t index, const char **text) {
                           return NVX_GetBoostLevelText(productId(), index, 0, text);
                         }))};
  keyed(s, [](const Args &) { return std::string(keys::kMaxLevel); });
  s.read = getter([](const Args &, uint32_t *out) { return NVX_GetCurrentBoostLevelIndex(productId(), out); });
  s.write = setter([](const Args &, const Values &v) { return NVX_SetBoostLevelIndex(productId(), v[0]); });
  s.replay = [](const Args &) { return NVX_SetCurrentBoostLevelIndex(productId()); };
  return s;
}

Setting fxFilter() {
  Setting s;
  s.name = "fx-filter";
  s.summary = "Filter assignment of an FX bank: the filter mode and its parameter byte.";
  s.title = N_("Filter");
  s.sentence = N_("Which filter the bank uses, and the value that shapes it.");
  s.params = {bankParam()};
  s.fields = {fixedField("mode", textMenu([](uint32_t index, const char **text) {
                           return NVX_GetFXBANKFILTERModeText(productId(), index, 0, text);
                         })),
              fixedField("param", rangeDomain(0, 255))};
  keyed(s, [](const Args &args) { return std::string(keys::kFilterKeys[args[0]]); });
  s.read = [](const Args &args, const StoredSettings &) {
    return readOutputs(2, [&](uint32_t *out) {
      return NVX_GetFXBANKFILTERModeIndex(productId(), args[0], &out[0], &out[1]);
    });
  };
  s.write = setter([](const Args &args, const Values &v) {
    return NVX_SetFXBANKFILTERModeIndex(productId(), args[0], v[0], v[1]);
  });
  s.replayAll = [] { return NVX_SendFXBANKFILTERModeIndex(productId()); };
  return s;
}

Setting beatFx() {
  Setting s;
  s.name = "beat-fx";
  s.summary = "Beat FX of an FX bank: effect type, depth and beat of each of the six positions.";
  s.title = N_("Beat FX");
  s.sentence = N_("The effect, its depth and its beat length on each of the six beat FX positions of the bank.");
  s.params = {bankParam(), positionParam(), itemParam()};
  constexpr size_t kItemParam = 2;
  s.fields = {{"value",
               [](const Args &args) {
                 switch (args[kItemParam]) {
                   case 0:
                     return beatEffectMenu();
                   case 1:
                     return rangeDomain(0, 255);  // depth: any byte
                   default:
                     return rangeDomain(0, 54);  // beat: a code of the mixer
                 }
               },
               kItemParam}};
  keyed(s, [](const Args &args) { return keys::makeKey(keys::kBeatFxTemplates[args[0]][args[1]], args[2]); });
  s.read = getter([](const Args &args, uint32_t *out) {
    return NVX_GetFXBANKBFXModeIndex(productId(), args[0], args[1], args[2], out);
  });
  s.write = setter([](const Args &args, const Values &v) {
    return NVX_SetFXBANKBFXModeIndex(productId(), args[0], args[1], args[2], v[0]);
  });
  return s;
}

// The library has no getter for the channel fader: its stored word is read from the file. Bank A
// has a key of its own; banks B and temporary share the second key, whose word names the bank it
// was last set for in bits 15-12, and so holds a value for that bank only.
Setting channelFader() {
  Setting s;
  s.name = "channel-fader";
  s.summary = "What the channel fader does while an FX bank is in use.";
  s.title = N_("Channel fader");
  s.sentence = N_("What the channel fader does while this bank's effects are in use.");
  s.params = {bankParam()};
  s.fields = {fixedField("mode", tableDomain(FXBANKChFaderModeText, 4))};
  s.key = [](const Args &args) { return std::string(keys::kChannelFaderKeys[args[0] == 0 ? 0 : 1]); };
  s.stored = [key = s.key](const Args &args, const StoredSettings &file) -> std::optional<int32_t> {
    const auto word = file.integer(key(args));
    if (!word || ((static_cast<uint32_t>(*word) >> 12) & 0xF) != args[0]) return std::nullopt;
    return word;
  };
  s.read = [stored = s.stored](const Args &args, const StoredSettings &file) -> std::optional<Values> {
    const auto word = stored(args, file);
    if (!word) return std::nullopt;
    return Values{static_cast<uint32_t>(*word) & 0xFFF};
  };
  s.write = setter([](const Args &args, const Values &v) {
    return NVX_SetFXBANKCHFADERModeIndex(productId(), args[0], v[0]);
  });
  return s;
}

Setting beatFxTail() {
  Setting s;
  s.name = "beat-fx-tail";
  s.summary = "Beat FX tail of an FX bank (0 or 1).";
  s.title = N_("Beat FX tail");
  s.sentence = N_("Let an echo or delay ring out after you switch the beat effect off, instead of cutting it.");
  s.params = {bankParam()};
  s.fields = {fixedField("tail", rangeDomain(0, 1))};
  keyed(s, [](const Args &args) { return std::string(keys::kTailKeys[args[0]]); });
  s.read = getter([](const Args &args, uint32_t *out) { return NVX_GetFXBANKBFXTAILIndex(productId(), args[0], out); });
  s.write = setter([](const Args &args, const Values &v) {
    return NVX_SetFXBANKBFXTAILIndex(productId(), args[0], v[0]);
  });
  return s;
}

// The five play settings share one shape: an index 0 to the library's maximum, stored under the key
// of the library's play-setting row.
struct PlayTexts {
  const char *name;
  const char *summary;
  const char *title;
  const char *sentence;
};

Setting playSetting(const PlayTexts &texts, nvx::tables::PlaySetting which, int32_t (*set)(int32_t, uint32_t),
                    int32_t (*get)(int32_t, uint32_t *)) {
  const auto &row = nvx::tables::row(which);
  Setting s;
  s.name = texts.name;
  s.summary = texts.summary;
  s.title = texts.title;
  s.sentence = texts.sentence;
  s.fields = {fixedField("value", rangeDomain(0, row.maximum))};
  keyed(s, [key = std::string(row.key)](const Args &) { return key; });
  s.read = getter([get](const Args &, uint32_t *out) { return get(productId(), out); });
  s.write = setter([set](const Args &, const Values &v) { return set(productId(), v[0]); });
  return s;
}

// Read-only: the mode is bits 8-15 of the number stored for the cut lag mode.
Setting crossfaderMode() {
  Setting s;
  s.name = "crossfader-mode";
  s.summary = "Crossfader mode, read from the number stored for the cut lag mode.";
  s.title = N_("Crossfader mode");
  s.sentence = N_("The crossfader curve stored along with the cut lag mode. Shown for information: it cannot be set here.");
  s.fields = {fixedField("mode", textMenu([](uint32_t index, const char **text) {
                           return NVX_GetCROSSFADERModeText(productId(), index, 0, text);
                         }))};
  keyed(s, [](const Args &) { return std::string(keys::kCutLagMode); });
  s.read = getter([](const Args &, uint32_t *out) { return NVX_GetCurrentCROSSFADERModeIndex(productId(), out); });
  return s;
}

std::vector<Setting> makeTable() {
  using nvx::tables::PlaySetting;
  std::vector<Setting> table;
  table.push_back(routing());
  table.push_back(boost());
  table.push_back(fxFilter());
  table.push_back(beatFx());
  table.push_back(channelFader());
  table.push_back(beatFxTail());
  table.push_back(playSetting({"crossfader-cut-lag", "Crossfader cut lag.", N_("Crossfader cut lag"),
                               N_("How far the crossfader travels before the other side comes in: small values "
                                  "give the sharp cut that scratching needs.")},
                              PlaySetting::CrossfaderCutLag, NVX_SetCROSSFADERCUTLAGIndex, NVX_GetCROSSFADERCUTLAGIndex));
  table.push_back(playSetting({"loop-button-type", "4-beat loop button type.", N_("4-beat loop button"),
                               N_("How the 4-beat loop button behaves when you press it.")},
                              PlaySetting::LoopButtonType, NVX_Set4BEATLOOPBUTTONTypeIndex,
                              NVX_Get4BEATLOOPBUTTONTypeIndex));
  table.push_back(playSetting({"fader-start", "Fader start.", N_("Fader start"),
                               N_("Whether moving a fader starts playback on the deck it belongs to.")},
                              PlaySetting::FaderStart, NVX_SetFADERSTARTIndex, NVX_GetFADERSTARTIndex));
  table.push_back(playSetting({"pad-mode", "Pad mode.", N_("Pad mode"),
                               N_("What the performance pads do when you press them.")},
                              PlaySetting::PadMode, NVX_SetPADModeIndex, NVX_GetPADModeIndex));
  table.push_back(playSetting({"cut-lag-mode", "Crossfader cut lag mode.", N_("Cut lag mode"),
                               N_("How the mixer applies the crossfader cut lag.")},
                              PlaySetting::CutLagMode, NVX_SetCROSSFADERCUTLAGModeIndex,
                              NVX_GetCROSSFADERCUTLAGModeIndex));
  table.push_back(crossfaderMode());
  return table;
}

}  // namespace

const std::vector<Setting> &settingTable() {
  static const std::vector<Setting> table = makeTable();
  return table;
}

const Setting *findSetting(std::string_view name) {
  for (const auto &setting : settingTable())
    if (sameName(setting.name, name)) return &setting;
  return nullptr;
}

std::string settingNames() {
  std::vector<std::string_view> names;
  for (const auto &setting : settingTable()) names.push_back(setting.name);
  return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace nvx::support
