// How the verbs plug into the command line. Each verb group registers its subcommands with the
// registry: name, one-line description, examples for --help, and the action run once the whole
// command line has been read (global options may follow the verb).
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "exit_status.h"
#include "output.h"

namespace mxrk7 {

struct Context {
  const Output &out;
};

using Action = std::function<Exit(Context &)>;

class VerbRegistry {
 public:
  explicit VerbRegistry(CLI::App &app) : app_(app) {}

  // Adds a verb; the examples become the footer of its --help.
  CLI::App *add(const std::string &name, const std::string &description, const std::vector<std::string> &examples,
                Action action);

  // The action of the verb that the parsed command line chose.
  const Action &chosen() const;

 private:
  CLI::App &app_;
  std::map<const CLI::App *, Action> actions_;
};

// The verb groups.
void addStatusVerbs(VerbRegistry &verbs);    // info, devices, udev-rule
void addSettingVerbs(VerbRegistry &verbs);   // show, list, get, set, reset, routing
void addApplyVerb(VerbRegistry &verbs);      // apply
void addWatchVerb(VerbRegistry &verbs);      // watch
void addTransferVerbs(VerbRegistry &verbs);  // export, import
void addDoctorVerb(VerbRegistry &verbs);     // doctor
// Hidden verbs for the shell completion scripts and the build.
void addCompletionVerb(VerbRegistry &verbs, CLI::App &app);  // __complete
void addReferenceVerb(VerbRegistry &verbs);                  // __reference

}  // namespace mxrk7
