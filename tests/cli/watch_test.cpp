// watch: changes made by other processes, as they happen, on a private session bus.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <map>
#include <memory>

#include "cli_fixture.h"
#include "private_bus.h"

namespace nvx::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

class Watch : public CliTest {
 protected:
  void SetUp() override {
    ASSERT_FALSE(dbus.address().empty()) << "dbus-daemon did not start";
    env.set("DBUS_SESSION_BUS_ADDRESS", dbus.address());
    bus.setMixers({VirtualMixer{}});
  }

  // Starts watch and waits until it is ready to receive.
  std::unique_ptr<ToolProcess> startWatch(std::vector<std::string> extra = {}) {
    std::vector<std::string> args{"watch"};
    args.insert(args.end(), extra.begin(), extra.end());
    auto watch = std::make_unique<ToolProcess>(args);
    EXPECT_TRUE(watch->waitForError("watching", 10s)) << "watch did not get ready";
    return watch;
  }

  PrivateBus dbus;
  EnvGuard env;
};

// The next `count` changes watch prints, by setting and instance: routing and boost arrive both as
// callbacks and through the settings file, in either order, and are printed once.
std::map<std::string, json> changes(ToolProcess &watch, size_t count) {
  std::map<std::string, json> seen;
  while (seen.size() < count) {
    const auto line = watch.readLine(10s);
    if (!line) break;
    const json change = json::parse(*line);
    EXPECT_TRUE(change["time"].is_string());
    const std::string target = change["setting"].get<std::string>() + change["args"].dump();
    EXPECT_FALSE(seen.contains(target)) << "printed twice: " << *line;
    seen[target] = change["fields"];
  }
  return seen;
}

TEST_F(Watch, PrintsEveryChangeOfAnotherProcessOnceAsOneJsonLine) {
  auto watch = startWatch({"--json"});
  ASSERT_EQ(runTool({"set", "routing", "1", "MIC"}).exitCode, 0);
  ASSERT_EQ(runTool({"set", "pad-mode", "1"}).exitCode, 0);
  ScratchDir files;
  const std::string document = files.write("settings.json", R"({"format": "mxrk7-settings", "version": 1, "settings": [
      {"setting": "boost", "fields": [{"name": "level", "index": 0}]},
      {"setting": "beat-fx", "args": {"bank": "B", "position": 2, "item": "beat"}, "fields": [{"name": "value", "index": 9}]}]})");
  ASSERT_EQ(runTool({"import", document}).exitCode, 0);
  const auto seen = changes(*watch, 4);
  EXPECT_EQ(seen.at("routing{\"channel\":1}")[0]["text"], "MIC");
  EXPECT_EQ(seen.at("pad-mode{}")[0]["index"], 1);
  EXPECT_EQ(seen.at("boost{}")[0]["index"], 0);
  EXPECT_EQ(seen.at(R"(beat-fx{"bank":"B","item":"beat","position":2})")[0]["index"], 9);
  watch->signal(SIGINT);
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.exitCode, 0) << end.transcript();
  EXPECT_EQ(end.out, "") << "nothing else changed";
}

TEST_F(Watch, TextLinesAndTheEndOfTheBus) {
  auto watch = startWatch();
  ASSERT_EQ(runTool({"set", "routing", "2", "aux"}).exitCode, 0);
  const auto line = watch->readLine(10s);
  ASSERT_TRUE(line);
  EXPECT_NE(line->find("routing 2 = AUX (4)"), std::string::npos) << *line;
  dbus.stop();
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.exitCode, 5) << end.transcript();
  EXPECT_NE(end.err.find("session bus went away"), std::string::npos);
}

TEST(WatchWithoutBus, FailsWithAnExplanation) {
  EnvironmentReset reset;  // no bus address, no runtime folder
  const auto run = runTool({"watch"});
  EXPECT_EQ(run.exitCode, 5) << run.transcript();
  EXPECT_NE(run.err.find("session bus"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
