// The mixers on the bus as info, devices, set and apply report them.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "exit_status.h"
#include "support/mixer_probe.h"

namespace mxrk7 {

// {"transport", "virtual_config", "mixers": [...]}; each mixer with its place and access, and with
// its live status when the report was probed with it.
nlohmann::json busJson(const nvx::support::BusReport &bus, bool withStatus);

// {"found": n, "accessible": k}
nlohmann::json mixerCountsJson(const nvx::support::BusReport &bus);

// What to do about a mixer that could not be opened; empty for one that could.
std::string mixerFix(const nvx::support::MixerStatus &mixer);

// Who holds a busy mixer, for people: "another program using the NorvaneMXRK7Setup library
// (mxrk7-setup, process 4711)".
std::string holderText(const nvx::support::MixerStatus &mixer);

// One text block per mixer.
std::string mixersText(const nlohmann::json &bus);

// Where the mixers come from, for people: "USB" or "the virtual mixers of <file>".
std::string transportText(const nlohmann::json &bus);

// Exit::Ok when a mixer can be opened, NoMixer when none is connected, NoAccess when every one
// connected is busy or denied; a Failure when USB cannot be used at all.
Exit accessOutcome(const nvx::support::BusReport &bus);

// The message for an outcome other than Exit::Ok.
std::string accessProblem(const nvx::support::BusReport &bus);

}  // namespace mxrk7
