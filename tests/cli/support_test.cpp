// The support library as the setup application calls it, in process: the settings document's
// model (check, order, compare, lay out) and who holds a busy mixer's device node.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <fstream>

#include "support/mixer_probe.h"
#include "support/settings_document.h"
#include "support/settings_file.h"
#include "support/virtual_bus.h"

namespace nvx::test {
namespace {

using nlohmann::json;
namespace support = nvx::support;

json document(const json &settings) {
  return {{"format", "mxrk7-settings"}, {"version", 1}, {"settings", settings}};
}

json entry(const std::string &setting, const json &args, const json &fields) {
  json out = {{"setting", setting}, {"fields", fields}};
  if (!args.is_null()) out["args"] = args;
  return out;
}

TEST(ToolDocument, APlanIsInTheSettingTablesOrder) {
  const auto checked = support::planImport(document(json::array({
      entry("pad-mode", nullptr, {{{"name", "value"}, {"index", 2}}}),
      entry("fx-filter", {{"bank", "temporary"}}, {{{"name", "mode"}, {"text", "noise"}}, {{"name", "param"}, {"index", 1}}}),
      entry("routing", {{"channel", 2}}, {{{"name", "source"}, {"text", "mic"}}}),
      entry("fx-filter", {{"bank", 0}}, {{{"name", "mode"}, {"index", 4}}, {{"name", "param"}, {"text", "0x10"}}}),
  })));
  ASSERT_TRUE(std::holds_alternative<support::Plan>(checked)) << std::get<support::ImportError>(checked).text();
  const auto &plan = std::get<support::Plan>(checked);
  std::vector<std::pair<std::string, support::Args>> order;
  for (const auto &a : plan.assignments) order.emplace_back(a.setting->name, a.args);
  EXPECT_EQ(order, (std::vector<std::pair<std::string, support::Args>>{
                       {"routing", {2}}, {"fx-filter", {0}}, {"fx-filter", {2}}, {"pad-mode", {}}}));
  EXPECT_EQ(plan.assignments[0].values, support::Values{3});          // "MIC" in channel 2's menu
  EXPECT_EQ(plan.assignments[1].values, (support::Values{4, 0x10}));  // a text may be a number word
  EXPECT_EQ(plan.assignments[2].values, (support::Values{2, 1}));
}

TEST(ToolDocument, EveryProblemIsReportedWithItsEntry) {
  const auto checked = support::planImport(document(json::array({
      entry("pad-mode", nullptr, {{{"name", "value"}, {"index", 2}}}),
      entry("boost", nullptr, {{{"name", "level"}}}),
      "not an object",
      entry("beat-fx", {{"bank", "A"}, {"position", 0}, {"item", "type"}}, {{{"name", "value"}, {"index", 0}}}),
      entry("beat-fx-tail", {{"bank", "A"}, {"side", 1}}, {{{"name", "tail"}, {"index", 0}}}),
  })));
  ASSERT_TRUE(std::holds_alternative<support::ImportError>(checked));
  const auto &problems = std::get<support::ImportError>(checked).problems;
  ASSERT_EQ(problems.size(), 4u) << std::get<support::ImportError>(checked).text();
  EXPECT_EQ(problems[0].entry, 1u);
  EXPECT_EQ(problems[0].text(), "settings[1] (boost): level: needs an \"index\" or a \"text\"");
  EXPECT_EQ(problems[1].entry, 2u);
  EXPECT_EQ(problems[2].entry, 3u);
  EXPECT_NE(problems[2].message.find("position: 0 is not allowed"), std::string::npos) << "positions count from 1";
  EXPECT_EQ(problems[3].entry, 4u);
  EXPECT_NE(problems[3].message.find("\"side\" is not an argument of beat-fx-tail"), std::string::npos);
}

TEST(ToolDocument, DescribeComparesWithTheFile) {
  SettingsHome home;
  home.writeIntegers({{"PADMode", 2}, {"FaderStartMode", 1}, {"MaxLevel", 7}});
  const auto plan = std::get<support::Plan>(support::planImport(document(json::array({
      entry("pad-mode", nullptr, {{{"name", "value"}, {"index", 2}}}),
      entry("fader-start", nullptr, {{{"name", "value"}, {"index", 2}}}),
      entry("boost", nullptr, {{{"name", "level"}, {"index", 0}}}),
      entry("cut-lag-mode", nullptr, {{{"name", "value"}, {"index", 0}}}),
  }))));
  std::map<std::string, support::ChangeKind> kinds;
  for (const auto &change : support::describe(plan, support::StoredSettings::read()))
    kinds[change.assignment.setting->name] = change.kind;
  EXPECT_EQ(kinds["pad-mode"], support::ChangeKind::Unchanged);
  EXPECT_EQ(kinds["fader-start"], support::ChangeKind::Changed);
  EXPECT_EQ(kinds["boost"], support::ChangeKind::Changed) << "an invalid stored value is changed, not added";
  EXPECT_EQ(kinds["cut-lag-mode"], support::ChangeKind::Added) << "a default the library reports is not stored";
}

// A change of several settings: every mixer's share of it is reported, and the file takes every
// setting and removal in one update.
TEST(ToolChange, ReportsEachMixerAndStoresEverythingInOneUpdate) {
  SettingsHome home;
  home.writeIntegers({{"PADMode", 1}, {"Foreign", 5}});
  VirtualMixer failsTail, busy;
  failsTail.fail = {"0x8510"};
  busy.open = "busy";
  VirtualBus bus({VirtualMixer{}, failsTail, busy});
  const auto plan = std::get<support::Plan>(support::planImport(document(json::array({
      entry("beat-fx-tail", {{"bank", "B"}}, {{{"name", "tail"}, {"index", 1}}}),
      entry("crossfader-cut-lag", nullptr, {{{"name", "value"}, {"index", 255}}}),
  }))));
  const std::vector<std::string> forget = {"PADMode"};
  const auto report = support::applyImport(plan, forget);
  std::vector<std::tuple<uint32_t, std::string, size_t, size_t>> mixers;
  for (const auto &m : report.mixers) mixers.emplace_back(m.number, support::outcomeName(m), m.took, m.missed);
  EXPECT_EQ(mixers, (decltype(mixers){{0, "ok", 2, 0}, {1, "failed", 1, 1}, {2, "busy", 0, 2}}));
  EXPECT_EQ(report.tookAll(), 1u);
  ASSERT_TRUE(report.stored && report.stored->stored());
  EXPECT_EQ(home.integers(), (std::map<std::string, int64_t>{{"TAIL_BANK_B", 0x1001}, {"CRFaderCutLag", 255}, {"Foreign", 5}}));
}

TEST(ToolDocument, TheLaidOutTextIsTheSameDocument) {
  SettingsHome home;
  home.writeIntegers({{"Output1", 3}, {"BANKB_FILTER", 0x1340}, {"BFX_BANKA2_2", 0x1236}, {"PADMode", 2}});
  const json exported = support::exportSettings(support::StoredSettings::read()).document;
  ASSERT_EQ(exported["settings"].size(), 4u);
  const std::string text = support::documentText(exported);
  EXPECT_EQ(json::parse(text), exported);
  // One line per setting, its name first.
  EXPECT_NE(text.find("\n    {\"setting\": \"beat-fx\", \"args\": {\"bank\": \"A\", \"position\": 3, \"item\": \"beat\"}"),
            std::string::npos)
      << text;
  for (const json &odd : {json::array({1, 2}), json{{"settings", json::array()}}, json{{"x", {{"y", nullptr}}}}})
    EXPECT_EQ(json::parse(support::documentText(odd)), odd);
}

TEST(ToolLockHolder, NamesTheProcessThatHoldsTheFile) {
  ScratchDir dir;
  const std::string path = dir.write("node", "");
  EXPECT_FALSE(support::findLockHolder(path)) << "nobody holds it yet";
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::flock(fd, LOCK_EX | LOCK_NB), 0);
  const auto holder = support::findLockHolder(path);
  ASSERT_TRUE(holder);
  EXPECT_EQ(holder->pid, ::getpid());
  std::ifstream comm("/proc/self/comm");
  std::string name;
  std::getline(comm, name);
  EXPECT_EQ(holder->program, name);
  // Another file of the same folder is not held.
  EXPECT_FALSE(support::findLockHolder(dir.write("other", "")));
  ::close(fd);
  EXPECT_FALSE(support::findLockHolder(path));
}

}  // namespace
}  // namespace nvx::test
