// show, list, get, set, reset and routing: the remembered settings, read and changed through the
// library's core.
#include <fmt/format.h>

#include <memory>

#include "change_output.h"
#include "setting_values.h"
#include "support/settings_document.h"
#include "support/stored_settings.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using nvx::support::StoredSettings;

// The command-line words after a verb, and the verb's own options.
struct Words {
  std::vector<std::string> list;
  std::string mixer;   // --mixer (set, reset)
  bool value = false;  // --value (get)
};

Failure wrongCount(const Setting &setting, const std::string &verb, bool withValues) {
  return Failure(Exit::Usage, fmt::format("usage: mxrk7 {} {}", verb, usageOf(setting, withValues)),
                 {{"setting", setting.name}, {"usage", usageOf(setting, withValues)}});
}

// Entries of the settings table, read now: all of them, or those a setting and its leading
// parameters name.
nlohmann::json entriesJson(const std::vector<const Setting *> &settings, const Args &prefix) {
  const auto file = StoredSettings::read();
  nlohmann::json entries = nlohmann::json::array();
  for (const auto *setting : settings)
    for (const auto &args : instances(*setting, prefix)) entries.push_back(entryJson(evaluate(*setting, args, file)));
  return {{"file", fileJson(file)}, {"settings", entries}};
}

std::string entriesText(const nlohmann::json &doc) {
  std::string text = fileText(doc.at("file")) + "\n";
  for (const auto &entry : doc.at("settings")) text += entryLine(entry) + "\n";
  return text;
}

Exit show(Context &context) {
  std::vector<const Setting *> settings;
  for (const auto &setting : settingTable()) settings.push_back(&setting);
  context.out.result(entriesJson(settings, {}), entriesText);
  return Exit::Ok;
}

// One line per instance: the value's fields as numbers, separated by blanks, in the order `set` takes
// them; an empty line for an instance without a value.
std::string bareValues(const nlohmann::json &doc) {
  std::string text;
  for (const auto &entry : doc.at("settings")) {
    std::vector<std::string> numbers;
    if (entry.at("fields").is_array() && entry.at("source") != "invalid")
      for (const auto &field : entry.at("fields")) numbers.push_back(field.at("index").dump());
    text += fmt::format("{}\n", fmt::join(numbers, " "));
  }
  return text;
}

Exit get(Context &context, const Words &words) {
  const Setting &setting = settingNamed(words.list.at(0));
  const std::vector<std::string> rest(words.list.begin() + 1, words.list.end());
  if (rest.size() > setting.params.size()) throw wrongCount(setting, "get", false);
  context.out.result(entriesJson({&setting}, parseArgs(setting, rest)), words.value ? bareValues : entriesText);
  return Exit::Ok;
}

const Setting &routingSetting() { return nvx::support::settingOf(nvx::tables::setting(nvx::tables::SettingId::Routing)); }

Exit routing(Context &context) {
  context.out.result(entriesJson({&routingSetting()}, {}), entriesText);
  return Exit::Ok;
}

// --- list ---------------------------------------------------------------------------------------

nlohmann::json listJson(const Setting &setting, const Args &prefix) {
  nlohmann::json params = nlohmann::json::array();
  for (const auto &param : setting.params) params.push_back({{"name", param.name}, {"domain", param.domain.toJson()}});
  nlohmann::json fields = nlohmann::json::array();
  for (const auto &field : setting.fields) {
    nlohmann::json domains = nlohmann::json::array();
    if (!field.dependsOn) {
      domains.push_back({{"for", nullptr}, {"domain", field.domain({}).toJson()}});
    } else {
      // One domain per value of the parameter it depends on (within what the words named).
      const size_t depends = *field.dependsOn;
      std::vector<uint32_t> members = setting.params[depends].domain.members();
      if (prefix.size() > depends) members = {prefix[depends]};
      for (const uint32_t member : members) {
        Args args(depends + 1, 0);
        args[depends] = member;
        nlohmann::json which = argsJson(setting, args);
        domains.push_back({{"for", {{setting.params[depends].name, which.at(setting.params[depends].name)}}},
                           {"domain", field.domain(args).toJson()}});
      }
    }
    fields.push_back({{"name", field.name}, {"domains", domains}});
  }
  return {{"setting", setting.name},       {"summary", setting.sentence}, {"usage", usageOf(setting, true)},
          {"read_only", setting.readOnly()}, {"params", params},        {"fields", fields}};
}

std::string domainText(const nlohmann::json &domain) {
  std::string text;
  const auto &range = domain.at("indices");
  for (const auto &choice : domain.at("choices")) {
    std::string aliases;
    for (const auto &alias : choice.at("aliases")) aliases += ", " + alias.get<std::string>();
    // The index column only where indices are accepted as words.
    const std::string index = range.is_object() ? fmt::format("{:>3}  ", choice.at("index").get<uint32_t>()) : "";
    text += fmt::format("    {}{}{}\n", index, choice.at("text").get<std::string>(),
                        aliases.empty() ? "" : " (also " + aliases.substr(2) + ")");
  }
  if (domain.at("choices").empty() && range.is_object())
    text += fmt::format("    a number {}-{}\n", range.at("first").get<uint32_t>(), range.at("last").get<uint32_t>());
  return text;
}

std::string listText(const nlohmann::json &doc) {
  std::string text = fmt::format("{}{}\n  {}\n", doc.at("usage").get<std::string>(),
                                 doc.at("read_only").get<bool>() ? "  (read-only)" : "",
                                 doc.at("summary").get<std::string>());
  for (const auto &param : doc.at("params"))
    text += fmt::format("{}:\n{}", placeholder(param.at("name").get<std::string>()), domainText(param.at("domain")));
  for (const auto &field : doc.at("fields")) {
    for (const auto &domain : field.at("domains")) {
      std::string which;
      if (domain.at("for").is_object())
        for (const auto &[name, value] : domain.at("for").items())
          which = fmt::format(" for {} {}", placeholder(name), value.is_string() ? value.get<std::string>() : value.dump());
      text += fmt::format("{}{}:\n{}", placeholder(field.at("name").get<std::string>()), which,
                          domainText(domain.at("domain")));
    }
  }
  return text;
}

Exit list(Context &context, const Words &words) {
  if (words.list.empty()) {
    // No setting named: every setting with its usage.
    nlohmann::json settings = nlohmann::json::array();
    for (const auto &setting : settingTable())
      settings.push_back({{"setting", setting.name}, {"usage", usageOf(setting, true)}, {"summary", setting.sentence},
                          {"read_only", setting.readOnly()}});
    context.out.result({{"settings", settings}}, [](const nlohmann::json &d) {
      std::string text;
      for (const auto &s : d.at("settings"))
        text += fmt::format("{:<46} {}{}\n", s.at("usage").get<std::string>(), s.at("summary").get<std::string>(),
                            s.at("read_only").get<bool>() ? " (read-only)" : "");
      return text;
    });
    return Exit::Ok;
  }
  const Setting &setting = settingNamed(words.list.at(0));
  const std::vector<std::string> rest(words.list.begin() + 1, words.list.end());
  if (rest.size() > setting.params.size()) throw wrongCount(setting, "list", false);
  context.out.result(listJson(setting, parseArgs(setting, rest)), listText);
  return Exit::Ok;
}

// --- set and reset ------------------------------------------------------------------------------

std::string setText(const nlohmann::json &doc) {
  std::string text = fmt::format("{} = {}: {}.\n", targetText(doc), valueText(doc.at("fields")), deliveryText(doc));
  if (doc.at("warning").is_string()) text += fmt::format("Warning: {}\n", doc.at("warning").get<std::string>());
  return text;
}

// The mixer --mixer names; every mixer without it.
nvx::support::MixerSelection mixersOf(const Words &words) {
  return words.mixer.empty() ? nvx::support::MixerSelection{} : selectedMixer(words.mixer);
}

Exit set(Context &context, const Words &words) {
  const Setting &setting = settingNamed(words.list.at(0));
  if (setting.readOnly())
    throw Failure(Exit::Usage, fmt::format("{} is read-only: {}", setting.name, setting.sentence), {{"setting", setting.name}});
  const std::vector<std::string> rest(words.list.begin() + 1, words.list.end());
  if (rest.size() != setting.params.size() + setting.fields.size()) throw wrongCount(setting, "set", true);
  const std::vector<std::string> argWords(rest.begin(), rest.begin() + static_cast<ptrdiff_t>(setting.params.size()));
  const std::vector<std::string> valueWords(rest.begin() + static_cast<ptrdiff_t>(setting.params.size()), rest.end());
  const Args args = parseArgs(setting, argWords);
  if (const auto why = setting.refuseSet(args)) throw Failure(Exit::Usage, *why, {{"setting", setting.name}});
  const Values values = parseValues(setting, args, valueWords);

  const auto report = nvx::support::changeSetting({&setting, args, values}, mixersOf(words));
  const Exit exit = changeExit(report);
  const auto &warning = report.each.at(0).warning;
  nlohmann::json doc = {{"setting", setting.name},
                        {"args", argsJson(setting, args)},
                        {"fields", fieldsJson(setting, args, values)},
                        {"result", exit == Exit::Ok && warning ? "warning" : resultOf(exit)},
                        {"warning", warning ? nlohmann::json(*warning) : nlohmann::json(nullptr)},
                        {"mixers", mixersJson(report, false)},
                        {"stored", storedJson(report)}};
  context.out.result(doc, setText);
  return exit;
}

std::string resetText(const nlohmann::json &doc) {
  std::string text;
  for (const auto &entry : doc.at("removed")) text += fmt::format("removed {}\n", entryLine(entry));
  if (doc.at("removed").empty()) return "Nothing to reset: the settings file holds none of these settings.\n";
  return text + fmt::format("{}.\n", deliveryText(doc));
}

// Removes the keys of the tool's settings (those an export writes) from the settings file, all in one
// update; the mixers keep what they were last sent.
Exit reset(Context &context, const Words &words) {
  if (words.list.size() > 1) throw Failure(Exit::Usage, "usage: mxrk7 reset [SETTING]");
  const Setting *only = words.list.empty() ? nullptr : &settingNamed(words.list.at(0));
  if (only && only->readOnly())
    throw Failure(Exit::Usage, fmt::format("{} is read-only: {}", only->name, only->sentence), {{"setting", only->name}});
  const auto file = StoredSettings::read();
  nlohmann::json removed = nlohmann::json::array();
  for (const auto &entry : nvx::support::removedBy({}, file, only)) removed.push_back(entryJson(entry));
  nlohmann::json doc = {{"file", fileJson(file)}, {"removed", removed}, {"result", "ok"}, {"mixers", nullptr},
                        {"stored", nullptr}};
  if (removed.empty()) {
    context.out.result(doc, resetText);
    return Exit::Ok;
  }
  const auto keys = nvx::support::ownedKeys(only);
  const auto report = nvx::support::changeSettings({}, keys);
  doc["stored"] = storedJson(report);
  const Exit exit = changeExit(report);
  doc["result"] = resultOf(exit);
  context.out.result(doc, resetText);
  return exit;
}

// Registers a verb that takes the words after it.
CLI::App *addWordVerb(VerbRegistry &verbs, const std::string &name, const std::string &description,
                      const std::vector<std::string> &examples, const std::string &wordsName, const std::string &wordsHelp,
                      bool required, Exit (*run)(Context &, const Words &), const std::shared_ptr<Words> &words) {
  CLI::App *verb = verbs.add(name, description, examples, [words, run](Context &context) { return run(context, *words); });
  auto *option = verb->add_option("words", words->list, wordsHelp)->type_name(wordsName);
  if (required) option->required();
  return verb;
}

void addMixerOption(CLI::App *verb, std::string &mixer) {
  verb->add_option("--mixer", mixer,
                   "Send to this one mixer only: its number as mxrk7 devices lists it, or BUS-PORT (the value is stored "
                   "as usual, and the settings file applies to every mixer at its next plug)")
      ->type_name("N|BUS-PORT");
}

}  // namespace

void addSettingVerbs(VerbRegistry &verbs) {
  using Id = nvx::tables::SettingId;
  verbs.add("show",
            "Every remembered setting with its value, and where it comes from: the settings file, the "
            "library's default, or not set.",
            {"mxrk7 show", "mxrk7 --virtual show", "mxrk7 show --json"}, show);
  addWordVerb(verbs, "list", "The settings, or the values one setting takes (its menu texts, or its range).",
              {"mxrk7 list", "mxrk7 list " + exampleWords(Id::Boost, 0, false),
               "mxrk7 list " + exampleWords(Id::Routing, 1, false), "mxrk7 list " + exampleWords(Id::BeatFx, 0, false)},
              "[SETTING [ARGS]]",
              "A setting name and, optionally, its leading arguments", false, list, std::make_shared<Words>());
  auto getWords = std::make_shared<Words>();
  CLI::App *getVerb =
      addWordVerb(verbs, "get", "The current value of a setting (of every instance its leading arguments name).",
                  {"mxrk7 get " + exampleWords(Id::PadMode, 0, false), "mxrk7 get " + exampleWords(Id::FxFilter, 1, false),
                   "mxrk7 get " + exampleWords(Id::BeatFx, 2, false), "mxrk7 get " + exampleWords(Id::Boost, 0, false) + " --value",
                   "mxrk7 get " + exampleWords(Id::Routing, 0, false) + " --json"},
                  "SETTING [ARGS]", "A setting name and, optionally, its leading arguments", true, get, getWords);
  getVerb->add_flag("--value", getWords->value,
                    "Print only the value, as numbers in the order set takes them (one line per instance; an empty "
                    "line where nothing is set): for scripts");
  auto setWords = std::make_shared<Words>();
  CLI::App *setVerb = addWordVerb(
      verbs, "set",
      "Set a setting on every mixer and remember it. Values are menu texts (any case, blanks ignored) or indices "
      "(decimal or 0x hex).",
      {"mxrk7 set " + exampleWords(Id::PadMode), "mxrk7 set " + exampleWords(Id::FxFilter),
       "mxrk7 set " + exampleWords(Id::BeatFx), "mxrk7 set " + exampleWords(Id::Routing), "mxrk7 set " + exampleWords(Id::Boost),
       "mxrk7 set " + exampleWords(Id::ChannelFader), "mxrk7 set " + exampleWords(Id::PadMode) + " --mixer 0"},
      "SETTING ARGS VALUE", "See mxrk7 list SETTING for the arguments and values", true, set, setWords);
  addMixerOption(setVerb, setWords->mixer);
  addWordVerb(verbs, "reset",
              "Forget remembered settings: remove every setting of this tool (or only SETTING) from the settings file, "
              "in one update. Settings of other programs stay. The mixers keep what they were last sent.",
              {"mxrk7 reset " + exampleWords(Id::BeatFx, 0, false), "mxrk7 reset", "mxrk7 --virtual reset --json"},
              "[SETTING]",
              "The setting to forget; every one without it", false, reset, std::make_shared<Words>());
  // A verb of the routing setting's own name: `get` of every channel.
  const std::string name = routingSetting().name;
  verbs.add(name, "The source of each of the five USB audio channels.",
            {"mxrk7 " + name, "mxrk7 set " + name + " 1 \"Cross Fader A\"", "mxrk7 list " + name + " 1"}, routing);
}

}  // namespace mxrk7
