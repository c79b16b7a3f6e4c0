#include "support/setting_table.h"

#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include <array>

namespace nvx::support {

namespace {



// --- Parameters ---------------------------------------------------------------------------------

// Banks by short name, the library's own bank names (FXBANKKeyText) or number.
Domain bankDomain(uint32_t count) {
  static constexpr std::array<const char *, 3> kNames = {"A", "B", "temporary"};
  Domain domain;
  for (uint32_t bank = 0; bank < count; ++bank) {
    Choice choice{bank, kNames[bank], {}};
    if (!Domain{{choice}, {}}.names(bank, FXBANKKeyText[bank])) choice.aliases.emplace_back(FXBANKKeyText[bank]);
    domain.choices.push_back(std::move(choice));
  }
  domain.indices = IndexRange{0, count - 1};
  return domain;
}

// Positions count from 1 as their names BTFX_1 to BTFX_6 do; the library counts from 0.
Domain positionDomain(uint32_t count) {
  Domain domain;
  for (uint32_t position = 0; position < count; ++position)
    domain.choices.push_back({position, std::to_string(position + 1), {FXBANKBFXPositionText[position]}});
  return domain;
}

// Items by short name, the library's own item names (FXBANKBFXtypeText: "FXType", "Deprh", "BEAT")
// or number.
Domain itemDomain(uint32_t count) {
  static constexpr std::array<const char *, 3> kNames = {"type", "depth", "beat"};
  Domain domain;
  for (uint32_t item = 0; item < count; ++item) domain.choices.push_back({item, kNames[item], {FXBANKBFXtypeText[item]}});
  domain.indices = IndexRange{0, count - 1};
  return domain;
}

Param paramView(const tables::ParamSpec &described) {
  switch (described.kind) {
    case tables::Param::Channel:
      return {"channel", rangeDomain(0, described.count - 1)};
    case tables::Param::Bank:
      return {"bank", bankDomain(described.count)};
    case tables::Param::Position:
      return {"position", positionDomain(described.count)};
    case tables::Param::Item:
      break;
  }
  return {"item", itemDomain(described.count)};
}

// Callers may name only the parameters up to the one a field depends on; the descriptors read every
// parameter, so the rest are filled with 0.
Args padded(Args args, size_t count) {
  if (args.size() < count) args.resize(count, 0);
  return args;
}

// A field's values for an instance: its menu (each index also taken as a plain number) or its range.
Field fieldView(const tables::FieldSpec &described, size_t paramCount) {
  auto domain = [&described, paramCount](const Args &given) {
    const Args args = padded(given, paramCount);
    // A field with a menu for some instances only (the beat FX value: a menu of effects for the
    // type, plain numbers for the depth and beat).
    if (!described.text || !described.text(args, 0)) return rangeDomain(0, described.last(args));
    const uint32_t last = described.last(args);
    return menuDomain([&](uint32_t index) { return index <= last ? described.text(args, index) : nullptr; });
  };
  std::optional<size_t> dependsOn;
  if (described.dependsOn >= 0) dependsOn = static_cast<size_t>(described.dependsOn);
  return {std::string(described.name), domain, dependsOn, described.onOff};
}

std::vector<Setting> makeTable() {
  std::vector<Setting> table;
  for (const auto &d : tables::kSettings) {
    Setting s{&d, std::string(d.name), std::string(d.title), std::string(d.sentence), {}, {}};
    for (const auto &param : d.params) s.params.push_back(paramView(param));
    for (const auto &field : d.fields) s.fields.push_back(fieldView(field, d.params.size()));
    table.push_back(std::move(s));
  }
  return table;
}

}  // namespace

std::string Setting::key(const Args &args) const { return descriptor->key(padded(args, params.size())).value_or(""); }

std::optional<int32_t> Setting::stored(const Args &args, const StoredSettings &file) const {
  const auto number = file.integer(key(args));
  if (!number || !descriptor->decode(args, *number)) return std::nullopt;
  return number;
}

std::optional<Values> Setting::read(const Args &args, const StoredSettings &file) const {
  if (descriptor->read) return descriptor->read(args);
  // No getter of its own (the channel fader): the stored word is its value.
  const auto number = stored(args, file);
  if (!number) return std::nullopt;
  return descriptor->decode(args, *number);
}

std::optional<std::string> Setting::refuseSet(const Args &args) const {
  if (readOnly() || descriptor->canSet(args)) return std::nullopt;
  std::string instance;
  for (size_t i = 0; i < args.size() && i < params.size(); ++i)
    instance += fmt::format(" {} {}", params[i].name, params[i].domain.textOf(args[i]).value_or(std::to_string(args[i])));
  return fmt::format("{}{} cannot be set: it is only read (another program may store it)", name, instance);
}

const std::vector<Setting> &settingTable() {
  static const std::vector<Setting> table = makeTable();
  return table;
}

const Setting *findSetting(std::string_view name) {
  const auto *descriptor = tables::findSetting(name);
  return descriptor ? &settingOf(*descriptor) : nullptr;
}

const Setting &settingOf(const tables::SettingDescriptor &descriptor) {
  return settingTable()[static_cast<size_t>(descriptor.id)];
}

std::string settingNames() {
  std::vector<std::string_view> names;
  for (const auto &setting : settingTable()) names.push_back(setting.name);
  return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace nvx::support
