// The remembered settings as a JSON document that a person can read, keep, edit and load again:
// `mxrk7 export` / `mxrk7 import` and the setup application's Export and Import buttons.
//
//   {"format": "mxrk7-settings", "version": 1, "product": "MXR-K7",
//    "settings": [{"setting": <name>, "args": {"bank": "B"}, "key": "BANKB_FILTER",
//                  "fields": [{"name": "mode", "index": 3, "text": "PITCH"},
//                             {"name": "param", "index": 64, "text": null}]}, ...]}
//
// (docs/cli.md describes the document.)
//
// Exporting writes every setting instance that the settings file holds with a value the library
// accepts. Importing checks the whole document first and changes nothing when any part is wrong;
// a checked document (a Plan) is then sent to the mixers setting by setting and stored in one update
// of the settings file, and other programs learn of each value as they do from the setters.
#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "support/setting_change.h"
#include "support/setting_entries.h"
#include "support/stored_settings.h"

namespace nvx::support {

inline constexpr std::string_view kDocumentFormat = "mxrk7-settings";
inline constexpr int kDocumentVersion = 1;

struct Export {
  nlohmann::json document;
  // Instances the file holds with a number the library does not accept (an edited file): left out
  // of the document, since importing them could only fail.
  std::vector<Entry> skipped;
};

// The document of what `file` holds.
Export exportSettings(const StoredSettings &file);

// A document as a person reads it best: the header first, then one line per setting, each with its
// keys in a fixed order ("setting", "args", "key", "fields"). Still one JSON document.
std::string documentText(const nlohmann::json &document);

// A checked document: every assignment is allowed, each instance appears once, and they are in the
// setting table's order.
struct Plan {
  std::vector<Assignment> assignments;
};

// Something wrong with a document. `entry` is the position in "settings" (nullopt for the document
// as a whole); `target` names the instance when it could be read ("NAME B").
struct Problem {
  std::optional<size_t> entry;
  std::string target;
  std::string message;

  // "settings[3] (NAME B): mode: \"PTICH\" is not allowed; ..."
  std::string text() const;
};

struct ImportError {
  std::vector<Problem> problems;  // every problem found, in document order

  // One problem per line.
  std::string text() const;
};

// Checks a whole document. Nothing is read from the settings file and nothing is changed.
std::variant<Plan, ImportError> planImport(const nlohmann::json &document);

enum class ChangeKind {
  Added,      // the file does not hold this instance yet
  Changed,    // the file holds another value (or one the library does not accept)
  Unchanged,  // the file holds this value already (it is sent to the mixers all the same)
};

struct Change {
  Assignment assignment;
  Entry before;  // the instance as `file` holds it now
  ChangeKind kind;
};

// What applying the plan would change in `file`, one Change per assignment.
std::vector<Change> describe(const Plan &plan, const StoredSettings &file);

const char *changeKindName(ChangeKind kind);  // "added", "changed", "unchanged"

// The keys of the settings file that the tool's settings own: exactly those an export writes (every
// instance that can be set), of every setting or of one. Keys of other programs, "Output4" and
// "PopUp" are not among them.
std::vector<std::string> ownedKeys(const Setting *only = nullptr);

// What the file holds under owned keys that the plan does not set: the entries an import with
// --replace (or a reset, with an empty plan) removes.
std::vector<Entry> removedBy(const Plan &plan, const StoredSettings &file, const Setting *only = nullptr);

// Sets every assignment in one change: sent to the selected mixers, stored in one update of the
// settings file together with the removal of `removeKeys` (all or nothing), and (routing, boost)
// announced to other programs.
ChangeReport applyImport(const Plan &plan, std::span<const std::string> removeKeys = {},
                         const MixerSelection &which = {});

}  // namespace nvx::support
