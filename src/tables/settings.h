// The settings of the mixer, each described once: its names, its instances (channels, banks,
// positions, items), the values it takes and their texts, the key and number it is stored as, the
// request and word that carry it to the mixer, how the library reads it back, and what a change of
// it announces. The exported functions, the tool, the setup application, the shell completion and
// the reference tables of the documentation all work from this table.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tables/stored_keys.h"
#include "usb/request_table.h"

namespace nvx::tables {

using Numbers = std::span<const uint32_t>;  // the library's numbers of an instance or of a value
using Values = std::vector<uint32_t>;

// What addresses one instance of a setting.
enum class Param : uint8_t {
  Channel,   // USB audio channel 0-4
  Bank,      // FX bank: 0 A, 1 B, 2 temporary
  Position,  // beat FX position 0-5 (BTFX_1 to BTFX_6)
  Item,      // beat FX item: 0 type, 1 depth, 2 beat
};

struct ParamSpec {
  Param kind;
  uint32_t count;  // instances 0..count-1 offered to people
};

// One part of a setting's value: the menu of a text table, or plain numbers 0..last.
struct FieldSpec {
  std::string_view name;  // "source", "level", "mode", "param", "value", "tail"
  // The text of menu entry `index` for this instance; nullptr past the menu's end. Null for a field
  // of plain numbers.
  const char *(*text)(Numbers args, uint32_t index);
  // The highest number the field takes for this instance.
  uint32_t (*last)(Numbers args);
  // The parameter whose value changes the menu or range (the channel of a routing menu, the item of
  // a beat FX value); -1 when it is the same for every instance.
  int dependsOn = -1;
  // A value that says off (0) or on (1), shown as a switch.
  bool onOff = false;
};

// Where on the mixer a setting belongs, which is where the setup application shows it.
enum class Area : uint8_t {
  Audio,   // the audio the computer receives
  FxBank,  // the FX banks, per bank
  Play,    // how the mixer plays
};

// What a change announces to other processes.
enum class Notice : uint8_t { None, InputAudio, BoostLevel };

enum class SettingId : uint8_t {
  Routing,
  Boost,
  FxFilter,
  BeatFx,
  ChannelFader,
  BeatFxTail,
  CrossfaderCutLag,
  LoopButtonType,
  FaderStart,
  PadMode,
  CutLagMode,
  CrossfaderMode,
  Count
};

struct SettingDescriptor {
  SettingId id;
  Area area;
  std::string_view name;      // the tool's word for it
  std::string_view title;     // its name for people: "Pad mode"
  std::string_view sentence;  // what it does for a DJ
  std::span<const ParamSpec> params;
  std::span<const FieldSpec> fields;

  // Whether the library changes this instance (routing channel 4 it only reads). Null: every one.
  bool (*settable)(Numbers args);
  // The write request and the word it carries; no request for a setting that is only read.
  std::optional<usb::Request> request;
  uint16_t (*word)(Numbers args, Numbers values);
  // The file's key of an instance; none where the library stores nothing for it.
  std::optional<std::string> (*key)(Numbers args);
  // The number a change stores (from the values and the word sent).
  int32_t (*stored)(Numbers args, Numbers values, uint16_t word);
  // The values a stored number stands for in this instance; none when it holds no value of this
  // instance (a word that names another bank).
  std::optional<Values> (*decode)(Numbers args, int32_t stored);
  // The library's own answer through its getter (stored value or default); none where it gives
  // none (nothing stored and no default, or a refusal).
  std::optional<Values> (*read)(Numbers args);
  // How the getter answers when the file or the key is missing.
  keys::ReadRule readRule;
  Notice notice;
  // After a change is sent: whether a mixer's input selector byte for this instance makes the change
  // pointless (the routing warning). Null where nothing is checked.
  bool (*warnsOn)(Numbers args, uint8_t selector);

  bool readOnly() const { return !request.has_value(); }
  bool canSet(Numbers args) const { return !readOnly() && (!settable || settable(args)); }
};

extern const std::array<SettingDescriptor, static_cast<size_t>(SettingId::Count)> kSettings;

constexpr const SettingDescriptor &setting(SettingId id) { return kSettings[static_cast<size_t>(id)]; }

// Looked up by the tool's word, without regard to case; null when there is none.
const SettingDescriptor *findSetting(std::string_view name);

// Every key the library reads or writes: each setting's keys, "Output4" and "PopUp" included. Other
// keys of the file belong to other programs.
bool isLibraryKey(std::string_view key);

}  // namespace nvx::tables
