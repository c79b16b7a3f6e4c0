// watch: changes made by other processes, as they happen, on a private session bus.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
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

TEST_F(Watch, PrintsEachChangeOfAnotherProcessAsOneJsonLine) {
  auto watch = startWatch({"--json"});
  ASSERT_EQ(runTool({"set", "routing", "1", "MIC"}).exitCode, 0);
  const auto routing = watch->readLine(10s);
  ASSERT_TRUE(routing);
  const json change = json::parse(*routing);
  EXPECT_EQ(change["setting"], "routing");
  EXPECT_EQ(change["args"]["channel"], 1);
  EXPECT_EQ(change["fields"][0]["index"], 5);
  EXPECT_EQ(change["fields"][0]["text"], "MIC");
  EXPECT_TRUE(change["time"].is_string());

  ASSERT_EQ(runTool({"set", "boost", "-15 dB"}).exitCode, 0);
  const auto boost = watch->readLine(10s);
  ASSERT_TRUE(boost);
  EXPECT_EQ(json::parse(*boost)["setting"], "boost");
  EXPECT_EQ(json::parse(*boost)["fields"][0]["index"], 2);

  // Settings without notifications print nothing.
  ASSERT_EQ(runTool({"set", "pad-mode", "1"}).exitCode, 0);
  watch->signal(SIGINT);
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.exitCode, 0) << end.transcript();
  EXPECT_EQ(end.out, "");
}

TEST_F(Watch, TextLinesAndTermination) {
  auto watch = startWatch();
  ASSERT_EQ(runTool({"set", "routing", "2", "aux"}).exitCode, 0);
  const auto line = watch->readLine(10s);
  ASSERT_TRUE(line);
  EXPECT_NE(line->find("routing 2 = AUX (4)"), std::string::npos) << *line;
  watch->signal(SIGTERM);
  EXPECT_EQ(watch->finish(10s).exitCode, 0);
}

TEST_F(Watch, ImportAnnouncesRoutingAndBoostAsSetDoes) {
  auto watch = startWatch({"--json"});
  ScratchDir files;
  const std::string document = files.write("settings.json", R"({"format": "mxrk7-settings", "version": 1, "settings": [
      {"setting": "pad-mode", "fields": [{"name": "value", "index": 1}]},
      {"setting": "boost", "fields": [{"name": "level", "index": 0}]},
      {"setting": "routing", "args": {"channel": 2}, "fields": [{"name": "source", "text": "AUX"}]}]})");
  const auto run = runTool({"import", document});
  ASSERT_EQ(run.exitCode, 0) << run.transcript();
  // In the order of the settings, not of the document.
  const auto routing = watch->readLine(10s);
  ASSERT_TRUE(routing);
  EXPECT_EQ(json::parse(*routing)["setting"], "routing");
  EXPECT_EQ(json::parse(*routing)["fields"][0]["text"], "AUX");
  const auto boost = watch->readLine(10s);
  ASSERT_TRUE(boost);
  EXPECT_EQ(json::parse(*boost)["setting"], "boost");
  EXPECT_EQ(json::parse(*boost)["fields"][0]["index"], 0);
  watch->signal(SIGINT);
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.out, "") << "the pad mode announces nothing";
}

TEST(WatchWithoutBus, FailsWithAnExplanation) {
  EnvironmentReset reset;  // no bus address, no runtime folder
  const auto run = runTool({"watch"});
  EXPECT_EQ(run.exitCode, 5) << run.transcript();
  EXPECT_NE(run.err.find("session bus"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
