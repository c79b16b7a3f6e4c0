// export and import: the remembered settings as a JSON document, written out and read back in
// through the library's setters.
#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "change_output.h"
#include "setting_values.h"
#include "support/document_file.h"
#include "support/settings_document.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

namespace support = nvx::support;

struct TransferOptions {
  std::string file;  // "-": standard output or input
  bool dryRun = false;
  bool replace = false;  // import: the tool's settings become exactly the document
  std::string mixer;     // import: --mixer
};

bool isStdio(const std::string &file) { return file == "-"; }

std::string displayName(const std::string &file) { return isStdio(file) ? "standard input" : file; }

// --- export -------------------------------------------------------------------------------------

[[noreturn]] void cannotWrite(const std::string &file, int error) {
  throw Failure(Exit::Failure, fmt::format("cannot write {}: {}", file, std::strerror(error)), {{"path", file}});
}

// A missing file or a regular file (through symbolic links, which stay links) is replaced whole,
// keeping its mode: a full disk or a crash leaves the previous export as it was. Anything else (a
// terminal, a pipe, /dev/stdout) is written directly.
void writeDocument(const std::string &file, const std::string &text) {
  if (const auto error = support::writeDocumentFile(file, text)) cannotWrite(file, *error);
}

Exit exportVerb(Context &context, const TransferOptions &options) {
  const auto settings = StoredSettings::read();
  if (settings.state() == StoredSettings::State::Unreadable)
    throw Failure(Exit::Failure,
                  fmt::format("the settings file {} cannot be read ({}); nothing was exported", settings.path(),
                              settings.unreadableReason()),
                  {{"file", fileJson(settings)}});
  const auto exported = support::exportSettings(settings);
  for (const auto &entry : exported.skipped)
    context.out.note(fmt::format("left out {}: the settings file holds {}, which is not a valid value",
                                 targetText(entryJson(entry)), *entry.stored));

  if (isStdio(options.file)) {
    // The document itself is the output (with --json as any JSON output, else laid out for people).
    context.out.result(exported.document, support::documentText);
    return Exit::Ok;
  }
  writeDocument(options.file, support::documentText(exported.document));
  nlohmann::json skipped = nlohmann::json::array();
  for (const auto &entry : exported.skipped) skipped.push_back(skippedJson(entry));
  const nlohmann::json doc = {{"path", options.file},
                              {"file", fileJson(settings)},
                              {"exported", exported.document.at("settings").size()},
                              {"skipped", skipped}};
  context.out.result(doc, [](const nlohmann::json &d) {
    const auto count = d.at("exported").get<size_t>();
    return fmt::format("Exported {} setting{} from {} to {}.", count, count == 1 ? "" : "s",
                       d.at("file").at("path").get<std::string>(), d.at("path").get<std::string>());
  });
  return Exit::Ok;
}

// --- import -------------------------------------------------------------------------------------

// Standard input, a pipe or a file, up to a size no settings document comes near (so that
// `import /dev/zero` ends).
std::string readDocument(const std::string &file) {
  auto read = support::readDocumentFile(file);
  if (read.tooLarge)
    throw Failure(Exit::Failure, fmt::format("{} is larger than 1 MiB, which no settings document is; nothing was changed",
                                             displayName(file)),
                  {{"path", file}});
  if (!read.ok())
    throw Failure(Exit::Failure, fmt::format("cannot read {}: {}", displayName(file), std::strerror(read.error)),
                  {{"path", file}});
  return std::move(read.text);
}

nlohmann::json parseDocument(const std::string &file, const std::string &text) {
  try {
    return nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error &error) {
    // "[json.exception.parse_error.101] parse error at line 2, column 3: ..." without its tag.
    std::string what = error.what();
    if (const auto tag = what.find("] "); what.starts_with("[json.exception") && tag != std::string::npos)
      what.erase(0, tag + 2);
    throw Failure(Exit::Usage, fmt::format("{} is not a JSON document ({}); nothing was changed", displayName(file), what),
                  {{"path", file}});
  }
}

nlohmann::json problemsJson(const support::ImportError &error) {
  nlohmann::json problems = nlohmann::json::array();
  for (const auto &problem : error.problems)
    problems.push_back({{"entry", problem.entry ? nlohmann::json(*problem.entry) : nlohmann::json(nullptr)},
                        {"target", problem.target.empty() ? nlohmann::json(nullptr) : nlohmann::json(problem.target)},
                        {"message", problem.message}});
  return problems;
}

nlohmann::json changeJson(const support::Change &change) {
  const auto &assignment = change.assignment;
  const nlohmann::json before = entryJson(change.before);
  return {{"setting", assignment.setting->name},
          {"args", argsJson(*assignment.setting, assignment.args)},
          {"fields", fieldsJson(*assignment.setting, assignment.args, assignment.values)},
          {"change", support::changeKindName(change.kind)},
          {"before", {{"source", before.at("source")}, {"stored", before.at("stored")}, {"fields", before.at("fields")}}},
          {"result", nullptr},
          {"warning", nullptr}};
}

std::string changeLine(const nlohmann::json &change) {
  const std::string kind = change.at("change").get<std::string>();
  std::string what = kind;
  if (kind == "changed") what += " (was " + valueText(change.at("before").at("fields")) + ")";
  return fmt::format("{:<26} {:<34} {}", targetText(change), valueText(change.at("fields")), what);
}

std::string importText(const nlohmann::json &doc) {
  std::string text;
  size_t counts[3] = {0, 0, 0};
  for (const auto &change : doc.at("changes")) {
    text += changeLine(change) + "\n";
    const auto kind = change.at("change").get<std::string>();
    ++counts[kind == "added" ? 0 : kind == "changed" ? 1 : 2];
    if (change.at("warning").is_string())
      text += fmt::format("  Warning: {}\n", change.at("warning").get<std::string>());
  }
  for (const auto &entry : doc.at("removed")) text += fmt::format("removed {}\n", entryLine(entry));
  const size_t total = doc.at("changes").size();
  const size_t removed = doc.at("removed").size();
  if (total == 0 && removed == 0)
    return fmt::format("Nothing to import: {} holds no setting.\n", displayName(doc.at("path")));
  std::string tally = fmt::format("{} added, {} changed, {} unchanged", counts[0], counts[1], counts[2]);
  if (doc.at("replace").get<bool>()) tally += fmt::format(", {} removed", removed);
  if (doc.at("dry_run").get<bool>())
    text += fmt::format("Would import {} setting{} from {} ({}); nothing was changed (--dry-run).\n", total,
                        total == 1 ? "" : "s", displayName(doc.at("path")), tally);
  else
    text += fmt::format("Imported {} setting{} from {} ({}): {}.\n", total, total == 1 ? "" : "s",
                        displayName(doc.at("path")), tally, deliveryText(doc));
  return text;
}

Exit importVerb(Context &context, const TransferOptions &options) {
  const nlohmann::json document = parseDocument(options.file, readDocument(options.file));
  const auto checked = support::planImport(document);
  if (const auto *error = std::get_if<support::ImportError>(&checked))
    throw Failure(Exit::Usage,
                  fmt::format("{} cannot be imported; nothing was changed:\n{}", displayName(options.file), error->text()),
                  {{"path", options.file}, {"problems", problemsJson(*error)}});
  const auto &plan = std::get<support::Plan>(checked);

  const auto settings = StoredSettings::read();
  nlohmann::json changes = nlohmann::json::array();
  for (const auto &change : support::describe(plan, settings)) changes.push_back(changeJson(change));
  nlohmann::json removed = nlohmann::json::array();
  if (options.replace)
    for (const auto &entry : support::removedBy(plan, settings)) removed.push_back(entryJson(entry));
  nlohmann::json doc = {{"path", options.file},   {"dry_run", options.dryRun},     {"replace", options.replace},
                        {"file", fileJson(settings)}, {"result", "ok"},             {"mixers", nullptr},
                        {"stored", nullptr},         {"changes", std::move(changes)}, {"removed", std::move(removed)}};
  if (options.dryRun || (plan.assignments.empty() && doc.at("removed").empty())) {
    context.out.result(doc, importText);
    return Exit::Ok;
  }
  if (settings.state() == StoredSettings::State::Unreadable)
    context.out.note(fmt::format("the settings file {} cannot be read ({}): the import replaces it, and its old "
                                 "bytes are kept as a backup next to it",
                                 settings.path(), settings.unreadableReason()));

  const auto which = options.mixer.empty() ? support::MixerSelection{} : selectedMixer(options.mixer);
  std::vector<std::string> removeKeys;
  if (options.replace) removeKeys = support::ownedKeys();
  // Keys the plan sets are set, not removed.
  std::erase_if(removeKeys, [&](const std::string &key) {
    return std::any_of(plan.assignments.begin(), plan.assignments.end(),
                       [&](const support::Assignment &a) { return a.setting->key(a.args) == key; });
  });
  const auto report = support::applyImport(plan, removeKeys, which);
  const Exit exit = changeExit(report);
  doc["mixers"] = mixersJson(report, true);
  doc["stored"] = storedJson(report);
  doc["result"] = resultOf(exit);
  for (size_t i = 0; i < report.each.size(); ++i) {
    auto &change = doc["changes"][i];
    change["result"] = report.each[i].warning ? "warning" : "ok";
    if (report.each[i].warning) change["warning"] = *report.each[i].warning;
  }
  context.out.result(doc, importText);
  return exit;
}

CLI::App *addTransferVerb(VerbRegistry &verbs, const std::string &name, const std::string &description,
                          const std::vector<std::string> &examples, const std::string &fileHelp,
                          Exit (*run)(Context &, const TransferOptions &), std::shared_ptr<TransferOptions> options) {
  CLI::App *verb = verbs.add(name, description, examples, [options, run](Context &context) { return run(context, *options); });
  verb->add_option("FILE", options->file, fileHelp)->required()->type_name("FILE");
  return verb;
}

}  // namespace

void addTransferVerbs(VerbRegistry &verbs) {
  addTransferVerb(verbs, "export",
                  "Write every remembered setting to FILE as a JSON document (- for standard output), to keep, "
                  "edit, or load on another computer with mxrk7 import.",
                  {"mxrk7 export my-settings.json", "mxrk7 export - | less", "mxrk7 --virtual export demo.json"},
                  "The document to write; - for standard output", exportVerb, std::make_shared<TransferOptions>());
  auto importOptions = std::make_shared<TransferOptions>();
  CLI::App *import = addTransferVerb(
      verbs, "import",
      "Check a document written by mxrk7 export (- for standard input), then set every setting it holds on "
      "every mixer and remember it. When one entry is wrong nothing is changed, and the message names it.",
      {"mxrk7 import my-settings.json --dry-run", "mxrk7 import my-settings.json",
       "mxrk7 import --replace my-settings.json", "ssh laptop mxrk7 export - | mxrk7 import -"},
      "The document to read; - for standard input", importVerb, importOptions);
  import->add_flag("--dry-run", importOptions->dryRun,
                   "Only show what would change, compared with the settings file now; nothing is sent or stored");
  import->add_flag("--replace", importOptions->replace,
                   "Make this tool's settings in the settings file exactly the document: the ones it does not hold "
                   "are forgotten (settings of other programs stay)");
  import->add_option("--mixer", importOptions->mixer,
                     "Send to this one mixer only: its number as mxrk7 devices lists it, or BUS-PORT (the values are "
                     "stored as usual)")
      ->type_name("N|BUS-PORT");
}

}  // namespace mxrk7
