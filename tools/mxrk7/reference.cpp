// The settings reference of the manual page and of docs/cli.md, written from the settings table at
// build time (`mxrk7 __reference man|markdown`), so that no list of settings is kept by hand.
#include <fmt/format.h>

#include <iostream>
#include <memory>

#include "setting_values.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

// What a field takes, in words: its menu texts or its range; for a field whose values depend on a
// parameter, per value of that parameter, or a pointer to `mxrk7 list` where they are many.
std::string fieldValues(const Setting &setting, const Field &field) {
  if (!field.dependsOn) return field.domain({}).describe();
  const Param &param = setting.params[*field.dependsOn];
  if (param.name == "channel")
    return fmt::format("the channel's menu (mxrk7 list {} {})", setting.name, placeholder(param.name));
  std::vector<std::string> parts;
  for (const uint32_t member : param.domain.members()) {
    Args args(*field.dependsOn + 1, 0);
    args[*field.dependsOn] = member;
    parts.push_back(fmt::format("{} {}", param.domain.textOf(member).value_or(std::to_string(member)),
                                field.domain(args).describe()));
  }
  return fmt::format("{}", fmt::join(parts, "; "));
}

std::string valuesLine(const Setting &setting) {
  std::vector<std::string> parts;
  for (const auto &field : setting.fields)
    parts.push_back(fmt::format("{}: {}", placeholder(field.name), fieldValues(setting, field)));
  return fmt::format("{}", fmt::join(parts, "; "));
}

// roff: hyphens that must stay hyphens, and backslashes.
std::string roff(std::string text) {
  std::string out;
  for (const char c : text) {
    if (c == '-') out += "\\-";
    else if (c == '\\') out += "\\e";
    else out += c;
  }
  return out;
}

std::string markdown() {
  std::string text = "| setting | arguments | values | what it does |\n|---|---|---|---|\n";
  for (const auto &setting : settingTable()) {
    std::string args;
    for (const auto &param : setting.params) args += (args.empty() ? "" : " ") + placeholder(param.name);
    text += fmt::format("| `{}`{} | {} | {} | {} |\n", setting.name, setting.readOnly() ? " (read-only)" : "",
                        args.empty() ? "" : "`" + args + "`", valuesLine(setting), setting.sentence);
  }
  return text;
}

// Command lines of the manual's EXAMPLES section that name settings.
std::string manExamples() {
  using Id = nvx::tables::SettingId;
  const std::vector<std::string> lines = {"mxrk7 set " + exampleWords(Id::Routing), "mxrk7 set " + exampleWords(Id::FxFilter),
                                          "mxrk7 get " + exampleWords(Id::BeatFx, 2, false)};
  std::string text;
  for (const auto &line : lines) text += roff(line) + "\n";
  return text;
}

// The settings section, then (after a comment line that the build splits at) the examples.
std::string man() {
  std::string text;
  for (const auto &setting : settingTable()) {
    std::string args;
    for (const auto &param : setting.params) args += " " + placeholder(param.name);
    for (const auto &field : setting.fields) args += " " + placeholder(field.name);
    text += fmt::format(".TP\n.BI {} \"{}\"\n{}{}\n.br\n{}\n", roff(setting.name), roff(args), roff(setting.sentence),
                        setting.readOnly() ? " Read\\-only." : "", roff(valuesLine(setting)));
  }
  return text + ".\\\" examples\n" + manExamples();
}

}  // namespace

void addReferenceVerb(VerbRegistry &verbs) {
  auto form = std::make_shared<std::string>();
  CLI::App *verb = verbs.add("__reference", "", {}, [form](Context &) {
    if (*form == "man") std::cout << man();
    else if (*form == "markdown") std::cout << markdown();
    else throw Failure(Exit::Usage, "__reference man|markdown");
    return Exit::Ok;
  });
  verb->group("");
  verb->add_option("form", *form)->required();
}

}  // namespace mxrk7
