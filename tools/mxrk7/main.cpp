// mxrk7: the command-line setup tool of the MXR-K7 mixer. It reads and changes the mixer's settings
// through the NorvaneMXRK7Setup library, and tells what the library cannot (which mixers are
// there, whether this user may open them) through the support library.
#include <CLI/CLI.hpp>

#include <fmt/format.h>

#include <cstring>
#include <string_view>

#include "environment.h"
#include "exit_status.h"
#include "output.h"
#include "setting_values.h"
#include "suggest.h"
#include "verbs.h"

namespace {

using namespace mxrk7;

// Before the command line could be read, --json is looked for by hand, so that even a usage error
// is reported the way the caller asked for.
bool jsonRequested(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--") == 0) return false;
    if (std::strcmp(argv[i], "--json") == 0) return true;
  }
  return false;
}

// CLI11 reports a missing or unknown verb as a missing subcommand; say which it was, and name the
// verbs. Empty when the verb is known (CLI11's own message is then the better one).
std::string verbProblem(CLI::App &app, int argc, char **argv) {
  std::vector<std::string> verbs;
  for (const auto *verb : app.get_subcommands([](const CLI::App *v) { return !v->get_group().empty(); }))
    verbs.push_back(verb->get_name());
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--") break;
    if (word == "--config-home") {
      ++i;  // its value
      continue;
    }
    if (word.starts_with("-")) continue;
    if (app.get_subcommands([&](const CLI::App *verb) { return verb->check_name(word); }).empty())
      return fmt::format("unknown verb \"{}\"{}; verbs: {}", word, didYouMean(word, verbs), fmt::join(verbs, ", "));
    return {};
  }
  return fmt::format("a verb is required; verbs: {}", fmt::join(verbs, ", "));
}

}  // namespace

int main(int argc, char **argv) {
  CLI::App app{"Settings of the MXR-K7 DJ mixer: show, change and re-apply them, and check the mixer's access.",
               "mxrk7"};
  app.fallthrough();  // global options are accepted after the verb too
  app.require_subcommand(1, 1);
  app.set_version_flag("--version", MXRK7_PROJECT_VERSION);
  GlobalOptions options;
  app.add_flag("--json", options.json, "Machine-readable output: one JSON document (watch: one object per line)");
  app.add_flag("--virtual", options.virtualMixers,
               "Use the two demo mixers instead of USB, with demo settings kept apart from yours");
  app.add_option("--config-home", options.configHome, "Folder of the settings file (instead of XDG_CONFIG_HOME)")
      ->type_name("DIR");
  using Id = nvx::tables::SettingId;
  app.footer(
      "\nExamples:\n"
      "  mxrk7 --virtual info             try it without a mixer\n"
      "  mxrk7 doctor                     what is missing on this computer, and how to fix it\n"
      "  mxrk7 devices                    is the mixer there, may I open it?\n"
      "  mxrk7 show                       every remembered setting\n" +
      fmt::format("  {:<32} change a setting\n", "mxrk7 set " + exampleWords(Id::Boost)) +
      fmt::format("  {:<32} the values a setting takes\n", "mxrk7 list " + exampleWords(Id::FxFilter, 0, false)) +
      "  mxrk7 export my-settings.json    keep every setting in a file (mxrk7 import reads it)\n"
      "\nExit codes: 0 done, 1 usage error, 2 refused by the library, 3 no mixer, 4 no mixer took the change\n"
      "(or none can be opened), 5 not stored or another failure, 6 some mixers took the change and some did not.\n"
      "Run mxrk7 VERB --help for a verb's own examples.\n");

  VerbRegistry verbs(app);
  addStatusVerbs(verbs);
  addSettingVerbs(verbs);
  addApplyVerb(verbs);
  addWatchVerb(verbs);
  addTransferVerbs(verbs);
  addDoctorVerb(verbs);
  addCompletionVerb(verbs, app);
  addReferenceVerb(verbs);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // --help
    std::string message = verbProblem(app, argc, argv);
    if (message.empty()) message = error.what();
    Output(jsonRequested(argc, argv)).failure(Failure(Exit::Usage, message + "; see mxrk7 --help"));
    return static_cast<int>(Exit::Usage);
  }

  const Output out(options.json);
  try {
    applyEnvironment(options);  // before the library's first call
    Context context{out};
    return static_cast<int>(verbs.chosen()(context));
  } catch (const Failure &failure) {
    out.failure(failure);
    return static_cast<int>(failure.code());
  } catch (const std::exception &error) {
    out.failure(Failure(Exit::Failure, error.what()));
    return static_cast<int>(Exit::Failure);
  }
}
