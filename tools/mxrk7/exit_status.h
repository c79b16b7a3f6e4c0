// The tool's exit codes and the one way a verb reports a failure.
#pragma once

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

namespace mxrk7 {

// For a change, the first matching row wins: Usage, Refused, Failure (the settings file did not
// take it), NoAccess (mixers were found and none took it), Partial, NoMixer (where the verb needs
// one), Ok.
enum class Exit : int {
  Ok = 0,        // done (also: stored while no mixer is connected; a routing warning)
  Usage = 1,     // bad command line: unknown verb, setting or value; wrong number of words
  Refused = 2,   // the library refused the request (NVX_ERROR)
  NoMixer = 3,   // no mixer connected where the verb needs one
  NoAccess = 4,  // mixers were found, and none took the change (or, for verbs that change nothing,
                 // none can be opened)
  Failure = 5,   // the settings file did not take the change, or another failure
  Partial = 6,   // some mixers took the change and some did not
};

// Thrown by a verb that cannot do its work; main() prints it and exits with its code.
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string &message, nlohmann::json details = nlohmann::json::object())
      : std::runtime_error(message), code_(code), details_(std::move(details)) {}
  Exit code() const { return code_; }
  // Machine-readable particulars for --json (for instance the allowed values).
  const nlohmann::json &details() const { return details_; }

 private:
  Exit code_;
  nlohmann::json details_;
};

}  // namespace mxrk7
