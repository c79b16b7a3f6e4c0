// The application's own words for settings and mixers: how an instance of a setting is named for
// people (counting from 1), how a value reads, and what happened to a mixer. The mixer's own texts
// (menu entries, item and position names) are used as the library gives them, untranslated.
#pragma once

#include <string>

#include "changes.h"
#include "support/mixer_probe.h"
#include "support/setting_table.h"

namespace mxrk7setup {

// The row title of one field of one instance: "USB channel 2", "Level", "Filter", "Filter
// parameter", "Deprh" (a beat FX item, by the mixer's name), "Channel fader".
std::string rowTitle(const nvx::support::Setting &setting, const nvx::support::Args &args, size_t field);

// Where the instance lives, for messages: "Bank B" (empty when the setting has no bank), and the
// beat FX position by its name ("BTFX_3").
std::string rowContext(const nvx::support::Setting &setting, const nvx::support::Args &args);

// "Bank B: BTFX_3 Deprh", "USB channel 2", "Output boost": a whole name for toasts.
std::string changeLabel(const nvx::support::Setting &setting, const nvx::support::Args &args, size_t field);

// The value of one field as people read it: the mixer's text where the value has one, else the
// number.
std::string valueText(const nvx::support::Setting &setting, const nvx::support::Args &args, size_t field,
                      uint32_t value);

std::string bankTitle(uint32_t bank);
std::string positionName(uint32_t position);  // a beat FX position by the mixer's name: "BTFX_3"  // "Bank A", "Bank B", "Temporary bank"

// "Mixer 2": mixers are counted from 1.
std::string mixerTitle(uint32_t number);
// What a mixer's access state means for the user: "Ready", "No permission", ...
std::string accessText(nvx::support::Access access);
// What a change did on one mixer: "no permission", "in use by another program", ...
std::string outcomeText(MixerOutcome::Result result);
// Where a mixer is plugged in: "USB bus 1, port 1.4", or "Virtual mixer".
std::string placeText(const nvx::support::MixerStatus &mixer);

}  // namespace mxrk7setup
