// watch: changes made by other processes, as they happen, on a private session bus.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <memory>

#include "cli_fixture.h"

namespace nvx::test {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

// A session bus of the test's own: dbus-daemon prints its address, and is killed at the end.
class PrivateBus {
 public:
  PrivateBus() {
    std::vector<std::string> argv{"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"};
    std::array<int, 2> out{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0) return;
    pid_ = ::fork();
    if (pid_ == 0) {
      ::dup2(out[1], STDOUT_FILENO);
      const int devnull = ::open("/dev/null", O_WRONLY);
      ::dup2(devnull, STDERR_FILENO);
      std::vector<char *> raw;
      for (auto &arg : argv) raw.push_back(arg.data());
      raw.push_back(nullptr);
      ::execvp(raw[0], raw.data());
      ::_exit(127);
    }
    ::close(out[1]);
    char buffer[512];
    std::string line;
    while (line.find('\n') == std::string::npos) {
      const ssize_t got = ::read(out[0], buffer, sizeof buffer);
      if (got <= 0) break;
      line.append(buffer, static_cast<size_t>(got));
    }
    ::close(out[0]);
    address_ = line.substr(0, line.find('\n'));
  }
  ~PrivateBus() {
    if (pid_ > 0) {
      ::kill(pid_, SIGTERM);
      ::waitpid(pid_, nullptr, 0);
    }
  }
  PrivateBus(const PrivateBus &) = delete;
  PrivateBus &operator=(const PrivateBus &) = delete;
  const std::string &address() const { return address_; }

 private:
  pid_t pid_ = -1;
  std::string address_;
};

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

TEST(WatchWithoutBus, FailsWithAnExplanation) {
  EnvironmentReset reset;  // no bus address, no runtime folder
  const auto run = runTool({"watch"});
  EXPECT_EQ(run.exitCode, 5) << run.transcript();
  EXPECT_NE(run.err.find("session bus"), std::string::npos);
}

}  // namespace
}  // namespace nvx::test
