// The manual page and the bash completion the build stages and installs: both must know every
// verb and setting the tool has, the page must render cleanly, and completion must work in bash.
#include <set>
#include <sstream>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

// The tool's verbs, as it names them when given an unknown one.
std::set<std::string> toolVerbs() {
  std::string list = runTool({"no-such-verb", "--json"}).json()["error"]["message"];
  list = list.substr(list.find("verbs: ") + 7);
  std::istringstream words(list.substr(0, list.find(';')));
  std::set<std::string> verbs;
  for (std::string verb; words >> verb;) verbs.insert(verb.substr(0, verb.find(',')));
  return verbs;
}

// The tool's settings, and those that can be set.
std::pair<std::set<std::string>, std::set<std::string>> toolSettings() {
  std::set<std::string> all, settable;
  const auto listed = runTool({"list", "--json"});
  for (const auto &setting : listed.json()["settings"]) {
    all.insert(setting["setting"].get<std::string>());
    if (!setting["read_only"].get<bool>()) settable.insert(setting["setting"].get<std::string>());
  }
  return {all, settable};
}

// The first word of each tagged paragraph's tag in one section of the page: ".TP" followed by
// ".B info" or ".BI set ...", from ".SH NAME" to the next ".SH".
std::set<std::string> tags(const std::string &page, const std::string &section) {
  std::set<std::string> out;
  std::istringstream in(page);
  bool inside = false, tag = false;
  for (std::string line; std::getline(in, line); tag = line == ".TP") {
    if (line.starts_with(".SH ")) inside = line == ".SH " + section;
    std::istringstream words(line);
    std::string macro, word;
    words >> macro >> word;
    // Roff writes a hyphen as "\-".
    for (size_t at = word.find("\\-"); at != std::string::npos; at = word.find("\\-")) word.replace(at, 2, "-");
    if (inside && tag && macro.starts_with(".B")) out.insert(word);
  }
  return out;
}

TEST(ToolManualPage, NamesEveryVerbSettingAndExitCode) {
  const std::string page = readFile(MXRK7_MAN_PAGE);
  EXPECT_NE(page.find(".TH MXRK7 1 "), std::string::npos);
  EXPECT_EQ(page.find('@'), std::string::npos) << "a placeholder was left unfilled";

  EXPECT_EQ(tags(page, "VERBS"), toolVerbs());
  for (const auto &verb : toolVerbs()) {
    const auto help = runTool({verb, "--help"});
    EXPECT_EQ(help.exitCode, 0) << verb;
    EXPECT_NE(help.out.find("Examples:\n  mxrk7"), std::string::npos) << verb << " --help has no examples";
  }
  EXPECT_EQ(tags(page, "SETTINGS"), toolSettings().first);
  EXPECT_EQ(tags(page, "EXIT STATUS"), (std::set<std::string>{"0", "1", "2", "3", "4", "5", "6"}));
}

// The settings table of docs/cli.md is the one the tool writes from the library's settings table.
TEST(ToolManualPage, TheDocumentsSettingsTableIsTheToolsOwn) {
  const std::string doc = readFile(MXRK7_SOURCE_DIR "/docs/cli.md");
  const std::string begin = "<!-- settings-reference:begin -->\n", end = "<!-- settings-reference:end -->";
  const size_t from = doc.find(begin), to = doc.find(end);
  ASSERT_TRUE(from != std::string::npos && to != std::string::npos);
  const auto reference = runTool({"__reference", "markdown"});
  ASSERT_EQ(reference.exitCode, 0) << reference.transcript();
  EXPECT_EQ(doc.substr(from + begin.size(), to - from - begin.size()), reference.out)
      << "run build/dev/bin/mxrk7 __reference markdown and paste its table into docs/cli.md";
}

// Standard output and error of a shell command, and its exit status.
std::pair<std::string, int> shell(const std::string &command, const ProcessOptions &options = {}) {
  const auto run = nvx::test::run({"sh", "-c", command + " 2>&1"}, options);
  return {run.out, run.exitCode};
}

TEST(ToolManualPage, RendersWithoutWarnings) {
  // Every warning on; -z formats without output, so only complaints are printed.
  const auto [said, status] = shell(std::string("groff -man -Tutf8 -ww -z '") + MXRK7_MAN_PAGE + "'");
  EXPECT_EQ(status, 0) << said;
  EXPECT_EQ(said, "") << "groff complains";
}

// Runs the completion function in bash for a command line whose last word is being completed.
std::set<std::string> complete(const std::vector<std::string> &words) {
  // The script asks the command it completes: the tool under test.
  std::string array = " '" MXRK7_TOOL "'";
  for (size_t i = 1; i < words.size(); ++i) array += " '" + words[i] + "'";
  const std::string script =
      std::string("source '") + MXRK7_BASH_COMPLETION + "' && COMP_WORDS=(" + array +
      ") && COMP_CWORD=$((${#COMP_WORDS[@]} - 1)) && _mxrk7 && printf '%s\\n' \"${COMPREPLY[@]}\"";
  const auto [out, status] =
      shell("bash --norc --noprofile -c \"$MXRK7_COMPLETION_SCRIPT\"", {.env = {{"MXRK7_COMPLETION_SCRIPT", script}}});
  EXPECT_EQ(status, 0) << "bash failed for" << array << ":\n" << out;
  std::set<std::string> offered;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) offered.insert(line);
  return offered;
}

TEST(ToolBashCompletion, OffersTheToolsWordsAndFiles) {
  EXPECT_EQ(complete({"mxrk7", ""}), toolVerbs());
  const auto [all, settable] = toolSettings();
  EXPECT_EQ(complete({"mxrk7", "get", ""}), all);
  EXPECT_EQ(complete({"mxrk7", "set", ""}), settable);
  EXPECT_EQ(complete({"mxrk7", "--config-home", "/tmp", "list", "fx-"}), (std::set<std::string>{"fx-filter"}))
      << "global options before the verb are skipped";
  EXPECT_EQ(complete({"mxrk7", "set", "beat-fx", ""}), (std::set<std::string>{"A", "B", "temporary"}));
  EXPECT_TRUE(complete({"mxrk7", "set", "routing", "1", ""}).contains("Cross\\ Fader\\ A")) << "values, quoted";
  EXPECT_TRUE(complete({"mxrk7", "import", "--d"}).contains("--dry-run"));
  ScratchDir dir;
  dir.write("mine.json", "{}");
  EXPECT_EQ(complete({"mxrk7", "export", dir.file("mi")}), (std::set<std::string>{dir.file("mine.json")}));
}

}  // namespace
}  // namespace nvx::test
