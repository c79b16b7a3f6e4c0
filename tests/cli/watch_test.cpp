// watch: what it adds to the notifications: every change of another process printed once, whether it
// came as a callback, through the settings file or both, and an end when the bus goes away.
#include <signal.h>

#include "cli_fixture.h"
#include "support/private_bus.h"

namespace nvx::test {
namespace {

class ToolWatch : public CliTest {
 protected:
  ToolWatch() {
    env.set("DBUS_SESSION_BUS_ADDRESS", dbus.address());
    bus.setMixers({VirtualMixer{}});
  }
  // watch, once it is ready to receive.
  std::unique_ptr<Process> start(const std::vector<std::string> &extra) {
    std::vector<std::string> argv{MXRK7_TOOL, "watch"};
    argv.insert(argv.end(), extra.begin(), extra.end());
    auto watch = std::make_unique<Process>(argv);
    EXPECT_TRUE(watch->waitForError("watching", 10s)) << "watch did not get ready";
    return watch;
  }
  PrivateBus dbus;
};

TEST_F(ToolWatch, PrintsEveryChangeOfAnotherProcessOnceAsOneJsonLine) {
  auto watch = start({"--json"});
  ASSERT_EQ(runTool({"set", "routing", "1", "MIC"}).exitCode, 0);  // a callback and the file
  ASSERT_EQ(runTool({"set", "pad-mode", "1"}).exitCode, 0);        // the file only
  std::map<std::string, nlohmann::json> seen;
  while (seen.size() < 2) {
    const auto line = watch->readLine(10s);
    ASSERT_TRUE(line) << "missing changes";
    const auto change = nlohmann::json::parse(*line);
    EXPECT_TRUE(seen.emplace(change["setting"].get<std::string>() + change["args"].dump(), change["fields"]).second)
        << "printed twice: " << *line;
  }
  EXPECT_EQ(seen.at(R"(routing{"channel":1})")[0]["text"], "MIC");
  EXPECT_EQ(seen.at("pad-mode{}")[0]["index"], 1);
  watch->signal(SIGINT);
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.exitCode, 0) << end.transcript();
  EXPECT_EQ(end.out, "") << "nothing else changed";
}

TEST_F(ToolWatch, PrintsTextLinesAndEndsWithTheBus) {
  auto watch = start({});
  ASSERT_EQ(runTool({"set", "routing", "2", "aux"}).exitCode, 0);
  EXPECT_NE(watch->readLine(10s).value_or("").find("routing 2 = AUX (4)"), std::string::npos);
  dbus.stop();
  const auto end = watch->finish(10s);
  EXPECT_EQ(end.exitCode, 5) << end.transcript();
  EXPECT_NE(end.err.find("session bus went away"), std::string::npos);
  env.set("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  EXPECT_EQ(runTool({"watch"}).exitCode, 5) << "no session bus";
}

}  // namespace
}  // namespace nvx::test
