// What a change did, in one line for a toast: the setting and its new value, then whatever did
// not go as asked (mixers that did not take it, a settings file that did not keep it).
#pragma once

#include <string>

#include "changes.h"

namespace mxrk7setup {

// One setting set: "Output boost set to -10 dB", "... Not on mixer 2 (no permission).",
// "Pad mode could not be saved: ...".
std::string settingReport(const ChangeReport &report, const std::string &what, const std::string &value);
// The same for Undo: "Output boost back to -10 dB".
std::string undoReport(const ChangeReport &report, const std::string &what, const std::string &value);
// Re-applying the stored settings, and importing a document.
std::string reapplyReport(const ChangeReport &report);
std::string importReport(const ChangeReport &report);
std::string exportReport(const ChangeReport &report, const std::string &path);

// The mixers that did not take a change: "mixer 2 (no permission), mixer 3 (failed)"; empty when
// every mixer took it.
std::string mixersLeftOut(const ChangeReport &report);

}  // namespace mxrk7setup
