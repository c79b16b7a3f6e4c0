// What a change did, as the tool reports it: per mixer whether it took the change, whether the
// settings file took it, the exit code that follows, and the same in text for people.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

#include "exit_status.h"
#include "support/setting_change.h"

namespace mxrk7 {

// {"found", "accessible", "took", "each": [{"mixer", "bus", "port", "result"[, "taken", "failed"]}]};
// the counts of entries taken and failed only for a change of several settings.
nlohmann::json mixersJson(const nvx::support::ChangeReport &report, bool several);

// {"ok": bool, "reason": text or null}; null when nothing was to be stored.
nlohmann::json storedJson(const nvx::support::ChangeReport &report);

// The exit code of a change, the first matching row winning: the file did not take it (5); mixers
// were found and none took it (4); some did and some did not (6); otherwise 0.
Exit changeExit(const nvx::support::ChangeReport &report);

// "ok", "not-stored", "not-sent" or "partial", for the document's "result".
std::string resultOf(Exit exit);

// Where a change went, for people, from the document's "mixers" and "stored": "sent to 2 mixers and
// stored", "sent to mixer 0; mixer 1 is busy; stored", "NOT stored (folder not yours); ...".
std::string deliveryText(const nlohmann::json &doc);

// The mixer a change is meant for: --mixer N (the number devices lists) or --mixer BUS-PORT. Throws a
// usage Failure for a word that is neither, and Exit::NoMixer when no such mixer is connected.
nvx::support::MixerSelection selectedMixer(const std::string &word);

}  // namespace mxrk7
