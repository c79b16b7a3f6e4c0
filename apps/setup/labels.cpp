#include "labels.h"

#include <NorvaneMXRK7Setup.h>

#include <array>
#include <optional>
#include <string_view>

#include "i18n.h"

namespace mxrk7setup {

namespace {

using nvx::support::Access;
using nvx::support::Args;
using nvx::support::Setting;

// Where a parameter sits in the setting's arguments, if the setting has it.
std::optional<uint32_t> param(const Setting &setting, const Args &args, std::string_view name) {
  for (size_t i = 0; i < setting.params.size() && i < args.size(); ++i)
    if (setting.params[i].name == name) return args[i];
  return std::nullopt;
}

// Labels of the value fields after a setting's first (the first is named by the setting itself).
struct FieldLabel {
  std::string_view field;
  const char *label;
};
constexpr std::array<FieldLabel, 1> kFieldLabels = {{{"param", N_("Filter parameter")}}};

constexpr std::array<const char *, 3> kBankTitles = {N_("Bank A"), N_("Bank B"), N_("Temporary bank")};

}  // namespace

std::string bankTitle(uint32_t bank) {
  return bank < kBankTitles.size() ? _(kBankTitles[bank]) : format(_("Bank {number}"), fmt::arg("number", bank + 1));
}

std::string positionName(uint32_t position) {
  return position < std::size(FXBANKBFXPositionText) ? FXBANKBFXPositionText[position] : std::to_string(position + 1);
}

std::string rowTitle(const Setting &setting, const Args &args, size_t field) {
  // TRANSLATORS: one of the channels of audio that the mixer sends to the computer, counted from 1.
  if (const auto channel = param(setting, args, "channel")) return format(_("USB channel {number}"), fmt::arg("number", *channel + 1));
  if (const auto item = param(setting, args, "item"); item && *item < 3 && FXBANKBFXtypeText[*item])
    return FXBANKBFXtypeText[*item];
  if (field > 0)
    for (const auto &label : kFieldLabels)
      if (label.field == setting.fields[field].name) return _(label.label);
  return translated(setting.title);
}

std::string rowContext(const Setting &setting, const Args &args) {
  std::string context;
  if (const auto bank = param(setting, args, "bank")) context = bankTitle(*bank);
  if (const auto position = param(setting, args, "position"))
    context += (context.empty() ? "" : " ") + positionName(*position);
  return context;
}

std::string changeLabel(const Setting &setting, const Args &args, size_t field) {
  const std::string context = rowContext(setting, args);
  const std::string title = rowTitle(setting, args, field);
  // TRANSLATORS: where a setting is and its name, e.g. "Bank B BTFX_3: Deprh".
  return context.empty() ? title : format(_("{place}: {setting}"), fmt::arg("place", context), fmt::arg("setting", title));
}

std::string valueText(const Setting &setting, const Args &args, size_t field, uint32_t value) {
  return setting.fields[field].domain(args).textOf(value).value_or(std::to_string(value));
}

std::string mixerTitle(uint32_t number) {
  // TRANSLATORS: a connected mixer, counted from 1.
  return format(_("Mixer {number}"), fmt::arg("number", number + 1));
}

std::string accessText(Access access) {
  switch (access) {
    case Access::Ok:
      return _("Ready");
    case Access::Busy:
      return _("In use by another program");
    case Access::Denied:
      return _("No permission");
    case Access::Gone:
      return _("Unplugged");
    case Access::Failed:
      break;
  }
  return _("Cannot be opened");
}

std::string outcomeText(MixerOutcome::Result result) {
  switch (result) {
    case MixerOutcome::Result::Ok:
      return _("done");
    case MixerOutcome::Result::Busy:
      return _("in use by another program");
    case MixerOutcome::Result::Denied:
      return _("no permission");
    case MixerOutcome::Result::Failed:
      break;
  }
  return _("failed");
}

std::string placeText(const nvx::support::MixerStatus &mixer) {
  if (mixer.node.empty()) return _("Virtual mixer");
  return format(_("USB bus {bus}, port {port}"), fmt::arg("bus", mixer.bus), fmt::arg("port", mixer.port));
}

}  // namespace mxrk7setup
