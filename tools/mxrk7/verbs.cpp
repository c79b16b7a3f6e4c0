#include "verbs.h"

#include <fmt/format.h>

namespace mxrk7 {

CLI::App *VerbRegistry::add(const std::string &name, const std::string &description,
                            const std::vector<std::string> &examples, Action action) {
  CLI::App *verb = app_.add_subcommand(name, description);
  std::string footer = "\nExamples:\n";
  for (const auto &example : examples) footer += fmt::format("  {}\n", example);
  footer += "\nGlobal options (before or after the verb): --json, --virtual, --config-home DIR; see mxrk7 --help.\n";
  verb->footer(footer);
  actions_.emplace(verb, std::move(action));
  return verb;
}

const Action &VerbRegistry::chosen() const {
  const auto chosen = app_.get_subcommands();
  return actions_.at(chosen.front());
}

}  // namespace mxrk7
