// Changes travelling between processes: a listener that registered through the shared library, and
// other processes that change settings through it (or a raw bus client that is not the library).
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "child_process.h"
#include "support/scratch_dir.h"

namespace {

using namespace std::chrono_literals;
using nvx::test::ChildProcess;

constexpr auto kHang = 10000ms;  // only there to turn a hang into a failure

std::vector<std::string> words(const std::string &line) {
  std::istringstream in(line);
  std::vector<std::string> out;
  for (std::string word; in >> word;) out.push_back(word);
  return out;
}

// A listener process, started and registered for the given families.
class Listener {
 public:
  explicit Listener(const ChildProcess::Environment &env = {}) : process_({NVX_NOTIFY_LISTENER}, env) {
    const auto hello = process_.readLine(kHang);
    EXPECT_EQ(hello.value_or("(nothing)"), "hello");
  }
  // Registers and returns the words of the reply: registered <family> <result> <ms>.
  std::vector<std::string> registerFamily(const std::string &family) {
    process_.send("register " + family);
    const auto lines = process_.readUntil("registered", kHang);
    return lines ? words(lines->back()) : std::vector<std::string>{};
  }
  void registerOk(const std::string &family) {
    const auto reply = registerFamily(family);
    ASSERT_EQ(reply.size(), 4U);
    EXPECT_EQ(reply[2], "100");
  }
  void send(const std::string &command) { process_.send(command); }
  // Callback lines until (and including) the first that starts with `prefix`.
  std::vector<std::string> linesUntil(const std::string &prefix) {
    return process_.readUntil(prefix, kHang).value_or(std::vector<std::string>{"(timed out waiting for " + prefix + ")"});
  }
  int threads() {
    process_.send("threads");
    const auto lines = process_.readUntil("threads", kHang);
    return lines ? std::stoi(words(lines->back()).at(1)) : -1;
  }
  std::optional<int> quit() {
    process_.send("quit");
    return process_.finish(kHang);
  }

 private:
  ChildProcess process_;
};

struct PostResult {
  std::optional<int> exitCode;
  int setterResult = -1;
  long long elapsedMicros = -1;
  long long endMicros = -1;
};

PostResult post(const std::vector<std::string> &args, const ChildProcess::Environment &env = {}) {
  std::vector<std::string> argv{NVX_NOTIFY_POSTER};
  argv.insert(argv.end(), args.begin(), args.end());
  ChildProcess poster(argv, env);
  PostResult result;
  const auto line = poster.readLine(kHang);
  result.exitCode = poster.finish(kHang);
  if (line) {
    const auto w = words(*line);
    if (w.size() == 4 && w[0] == "posted") {
      result.setterResult = std::stoi(w[1]);
      result.elapsedMicros = std::stoll(w[2]);
      result.endMicros = std::stoll(w[3]);
    }
  }
  return result;
}

// Callback lines without their time stamps.
std::vector<std::string> withoutTimes(const std::vector<std::string> &lines) {
  std::vector<std::string> out;
  for (const std::string &line : lines) out.push_back(line.substr(0, line.rfind(' ')));
  return out;
}

class CrossProcessTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr) << "run under dbus-run-session"; }
};

TEST_F(CrossProcessTest, ChangesPostedElsewhereCallTheRegisteredCallbacks) {
  Listener listener;
  listener.registerOk("input");
  listener.registerOk("boost");
  struct Case {
    std::vector<std::string> post;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {{"input", "1", "3"}, "input 1 3 ok"},
      {{"boost", "2"}, "boost 2 ok"},
      {{"input", "3", "0"}, "input 3 0 ok"},
      {{"input", "0", "7"}, "input 0 7 ok"},
      {{"boost", "0"}, "boost 0 ok"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.expected);
    const PostResult posted = post(c.post);
    ASSERT_EQ(posted.exitCode, 0);
    ASSERT_EQ(posted.setterResult, 100);
    const auto lines = listener.linesUntil(c.post[0]);
    ASSERT_EQ(withoutTimes(lines), std::vector<std::string>{c.expected});
    // The setter returns once the change is on the bus; the listener's main loop wakes for it at
    // once (not at some later time-out).
    const long long latency = std::stoll(words(lines.back()).back()) - posted.endMicros;
    EXPECT_LT(latency, 500'000) << "µs from the setter's return to the callback";
  }
  EXPECT_EQ(listener.quit(), 0);
}

TEST_F(CrossProcessTest, EveryListeningProcessIsCalled) {
  Listener first;
  Listener second;
  first.registerOk("boost");
  second.registerOk("boost");
  ASSERT_EQ(post({"boost", "3"}).exitCode, 0);
  EXPECT_EQ(withoutTimes(first.linesUntil("boost")), std::vector<std::string>{"boost 3 ok"});
  EXPECT_EQ(withoutTimes(second.linesUntil("boost")), std::vector<std::string>{"boost 3 ok"});
}

TEST_F(CrossProcessTest, UnregisteredCallbackIsSilentUntilRegisteredAgain) {
  Listener listener;
  listener.registerOk("input");
  listener.registerOk("boost");
  listener.send("unregister input");
  ASSERT_EQ(withoutTimes(listener.linesUntil("unregistered")), std::vector<std::string>{"unregistered input"});
  ASSERT_EQ(post({"input", "1", "3"}).exitCode, 0);
  // The boost change posted afterwards arrives after the routing change would have.
  ASSERT_EQ(post({"boost", "1"}).exitCode, 0);
  EXPECT_EQ(withoutTimes(listener.linesUntil("boost")), std::vector<std::string>{"boost 1 ok"});

  listener.registerOk("input");
  ASSERT_EQ(post({"input", "2", "5"}).exitCode, 0);
  EXPECT_EQ(withoutTimes(listener.linesUntil("input")), std::vector<std::string>{"input 2 5 ok"});
}

// A bus client that is not this library: sends whatever body it is given.
class RawSender {
 public:
  RawSender() { EXPECT_GE(sd_bus_open_user(&bus_), 0); }
  ~RawSender() { sd_bus_flush_close_unref(bus_); }
  RawSender(const RawSender &) = delete;
  RawSender &operator=(const RawSender &) = delete;

  void send(const std::function<int(sd_bus_message *)> &body, const char *member = "Notification") {
    sd_bus_message *m = nullptr;
    ASSERT_GE(sd_bus_message_new_signal(bus_, &m, "/com/norvane/MXRK7Setup", "com.norvane.MXRK7Setup", member), 0);
    ASSERT_GE(body(m), 0);
    ASSERT_GE(sd_bus_send(bus_, m, nullptr), 0);
    sd_bus_message_unref(m);
    ASSERT_GE(sd_bus_flush(bus_), 0);
  }

 private:
  sd_bus *bus_ = nullptr;
};

TEST_F(CrossProcessTest, ForeignAndMalformedSignalsCallNothing) {
  Listener listener;
  listener.registerOk("input");
  listener.registerOk("boost");
  const char *input = "MXR-K7 InputAudio Change";
  const char *boost = "MXR-K7 BoostLevel Change";
  RawSender sender;
  // Each of these is dropped: name only, an int32 dictionary, another product, another product
  // for boost, a name in a struct.
  sender.send([&](sd_bus_message *m) { return sd_bus_message_append(m, "s", input); });
  sender.send([&](sd_bus_message *m) { return sd_bus_message_append(m, "sa{si}", input, 2, "Channel", 1, "Index", 3); });
  sender.send([&](sd_bus_message *m) {
    return sd_bus_message_append(m, "sa{sv}", input, 3, "ProductID", "i", 1, "Channel", "i", 1, "Index", "i", 3);
  });
  sender.send([&](sd_bus_message *m) {
    return sd_bus_message_append(m, "sa{sv}", boost, 2, "ProductID", "i", 1, "Index", "i", 2);
  });
  sender.send([&](sd_bus_message *m) { return sd_bus_message_append(m, "(sa{sv})", boost, 1, "Index", "i", 2); });
  // Accepted with defaults: no ProductID and no Channel, an Index that is not an int32.
  sender.send([&](sd_bus_message *m) { return sd_bus_message_append(m, "sa{sv}", input, 1, "Index", "s", "3"); });
  // The same sender's messages arrive in order: once this one is seen, all the above were handled.
  sender.send([&](sd_bus_message *m) {
    return sd_bus_message_append(m, "sa{sv}", boost, 2, "ProductID", "i", 0, "Index", "i", 1);
  });
  EXPECT_EQ(withoutTimes(listener.linesUntil("boost")), (std::vector<std::string>{"input 0 0 ok", "boost 1 ok"}));
}

TEST_F(CrossProcessTest, NoThreadIsStartedInTheListeningProcess) {
  Listener listener;
  const int before = listener.threads();
  ASSERT_GT(before, 0);
  listener.registerOk("input");
  listener.registerOk("boost");
  EXPECT_EQ(listener.threads(), before);
  ASSERT_EQ(post({"boost", "2"}).exitCode, 0);
  ASSERT_EQ(withoutTimes(listener.linesUntil("boost")), std::vector<std::string>{"boost 2 ok"});
  EXPECT_EQ(listener.threads(), before);
}

// A Unix socket that accepts connections (the kernel completes them from the backlog) but never
// reads or answers.
class SilentSocket {
 public:
  explicit SilentSocket(const std::string &path) {
    fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    EXPECT_EQ(bind(fd_, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0) << path;
    EXPECT_EQ(listen(fd_, 16), 0);
  }
  ~SilentSocket() { close(fd_); }
  SilentSocket(const SilentSocket &) = delete;
  SilentSocket &operator=(const SilentSocket &) = delete;

 private:
  int fd_ = -1;
};

TEST(UnreachableBusTest, RegisterAndPostReturnPromptlyWithTheirNormalResults) {
  nvx::test::ScratchDir dir;
  const SilentSocket silent(dir.file("silent"));
  const std::string runtime = dir.path() + "/runtime";
  dir.write("runtime/placeholder", "");
  const SilentSocket silentInRuntime(runtime + "/bus");
  struct Case {
    const char *what;
    ChildProcess::Environment env;
  };
  const std::vector<Case> cases = {
      {"no bus at all", {{"DBUS_SESSION_BUS_ADDRESS", std::nullopt}, {"XDG_RUNTIME_DIR", std::nullopt}}},
      {"runtime folder without a bus", {{"DBUS_SESSION_BUS_ADDRESS", std::nullopt}, {"XDG_RUNTIME_DIR", dir.path()}}},
      {"address of a missing socket",
       {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + dir.file("missing")}, {"XDG_RUNTIME_DIR", std::nullopt}}},
      {"silent socket in the environment",
       {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + dir.file("silent")}, {"XDG_RUNTIME_DIR", std::nullopt}}},
      {"silent socket in the runtime folder",
       {{"DBUS_SESSION_BUS_ADDRESS", std::nullopt}, {"XDG_RUNTIME_DIR", runtime}}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    Listener listener(c.env);
    for (const char *family : {"input", "boost", "input"}) {
      const auto reply = listener.registerFamily(family);
      ASSERT_EQ(reply.size(), 4U) << "Register did not return";
      EXPECT_EQ(reply[2], "100");
      EXPECT_LE(std::stoll(reply[3]), 1500) << "Register took this many ms";
    }
    const PostResult posted = post({"input", "1", "3"}, c.env);
    EXPECT_EQ(posted.exitCode, 0);
    EXPECT_EQ(posted.setterResult, 100);
    EXPECT_GE(posted.elapsedMicros, 0) << "the setter did not return";
    EXPECT_LE(posted.elapsedMicros, 2'500'000) << "the setter (with its post) took this many µs";
    // The listener is still alive and answering, and was never called.
    EXPECT_GT(listener.threads(), 0);
    EXPECT_EQ(listener.quit(), 0);
  }
}

}  // namespace
