// Change notifications through the shared library's interface, on a session bus of the tests' own:
// the callback slots, delivery in the changing process and to other processes, and a bus that is
// missing or silent. What a signal's body may hold is the payload tests' business.
#include <glib.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "NorvaneMXRK7Setup.h"
#include "support/private_bus.h"
#include "support/sandbox.h"

namespace nvx::test {
namespace {

const std::string &sharedBus() {
  static PrivateBus bus;
  return bus.address();
}

class NotifyTest : public ::testing::Test, public Sandbox {
 protected:
  NotifyTest() { env.set("DBUS_SESSION_BUS_ADDRESS", sharedBus()); }
};

// Iterates the default main context until done() holds or `limit` has passed (waking every 20 ms
// for conditions no event signals); returns done(). Counts the iterations into *iterations.
bool iterateUntil(const std::function<bool()> &done, std::chrono::milliseconds limit, int *iterations = nullptr,
                  bool tick = false) {
  bool expired = false;
  const guint timer = g_timeout_add(static_cast<guint>(limit.count()), [](gpointer flag) -> gboolean {
    *static_cast<bool *>(flag) = true;
    return G_SOURCE_REMOVE;
  }, &expired);
  const guint ticker = tick ? g_timeout_add(20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr) : 0;
  while (!done() && !expired) {
    g_main_context_iteration(nullptr, TRUE);
    if (iterations) ++*iterations;
  }
  if (!expired) g_source_remove(timer);
  if (ticker) g_source_remove(ticker);
  return done();
}

// Entries of a folder of /proc/self: its threads ("task") or its open files ("fd").
long entriesOf(const std::string &folder) {
  const std::filesystem::directory_iterator entries("/proc/self/" + folder);
  return std::distance(begin(entries), end(entries));
}

// --- the slots ------------------------------------------------------------------------------------

void inputA(int32_t, int32_t, void *) {}
void inputB(int32_t, int32_t, void *) {}
void indexA(int32_t, void *) {}
void indexB(int32_t, void *) {}
int contextA, contextB, marker;

template <class Proc>
void checkSlots(int32_t (*reg)(int32_t, Proc, void *), int32_t (*unreg)(int32_t), Proc (&callback)[1],
                void *(&context)[1], void *&payload, Proc a, Proc b) {
  payload = &marker;
  ASSERT_EQ(reg(0, a, &contextA), NVX_OK);
  EXPECT_TRUE(callback[0] == a && context[0] == &contextA);
  EXPECT_EQ(payload, nullptr) << "Register drops the last posted payload";
  for (const int32_t product : {1, -1, INT32_MAX}) {
    EXPECT_EQ(reg(product, b, &contextB), NVX_ERROR);
    EXPECT_EQ(reg(product, nullptr, &contextB), NVX_ERROR);
    EXPECT_EQ(unreg(product), NVX_ERROR);
  }
  EXPECT_TRUE(callback[0] == a && context[0] == &contextA) << "another product changes nothing";
  ASSERT_EQ(reg(0, b, &contextB), NVX_OK);
  EXPECT_TRUE(callback[0] == b && context[0] == &contextB) << "a later Register replaces the pair";
  EXPECT_EQ(unreg(0), NVX_OK);
  EXPECT_TRUE(callback[0] == nullptr && context[0] == &contextB) << "Unregister keeps the context";
  payload = &marker;
  EXPECT_EQ(reg(0, nullptr, &contextA), NVX_OK);
  EXPECT_TRUE(callback[0] == nullptr && context[0] == &contextB && payload == &marker)
      << "a null callback unregisters, stores no context and keeps the payload";
  payload = nullptr;
}

TEST_F(NotifyTest, RegisterAndUnregisterFillAndEmptyEachFamilysSlots) {
  checkSlots(NVX_RegisterInputAudioChangedCallback, NVX_UnregisterInputAudioChangedCallback,
             InputAudioChangedCallbackFunc, InputAudioChangedContext, inputAudioInfo, &inputA, &inputB);
  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, inputA, &contextA), NVX_OK);
  inputAudioInfo = &marker;
  checkSlots(NVX_RegisterBoostLevelChangedCallback, NVX_UnregisterBoostLevelChangedCallback,
             BoostLevelChangedCallbackFunc, BoostLevelChangedContext, boostLevelInfo, &indexA, &indexB);
  EXPECT_TRUE(InputAudioChangedCallbackFunc[0] == inputA && inputAudioInfo == &marker)
      << "the other family is untouched";
  inputAudioInfo = nullptr;
  NVX_UnregisterInputAudioChangedCallback(0);
}

// --- delivery in the changing process -------------------------------------------------------------

std::vector<std::vector<int32_t>> inputCalls, boostCalls;  // arguments, context checked

class NotifyInProcess : public NotifyTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &contextA), NVX_OK);
    ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, onBoost, &contextB), NVX_OK);
    while (g_main_context_iteration(nullptr, FALSE)) {  // what earlier tests of this process left queued
    }
    inputCalls.clear();
    boostCalls.clear();
  }
  void TearDown() override {
    NVX_UnregisterInputAudioChangedCallback(0);
    NVX_UnregisterBoostLevelChangedCallback(0);
  }
  static void onInput(int32_t channel, int32_t index, void *context) {
    if (context == &contextA) inputCalls.push_back({channel, index});
  }
  static void onBoost(int32_t index, void *context) {
    if (context == &contextB) boostCalls.push_back({index});
  }
  // A boost change, waited for: every change posted before it has been delivered by then.
  static bool boostArrives(uint32_t index) {
    EXPECT_EQ(NVX_SetBoostLevelIndex(0, index), NVX_OK);
    return iterateUntil(
        [&] { return !boostCalls.empty() && boostCalls.back() == std::vector<int32_t>{int32_t(index)}; }, 5s);
  }
};

TEST_F(NotifyInProcess, OwnChangesCallOwnCallbacksFromTheMainLoopUntilUnregistered) {
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 1, 3), NVX_OK);
  EXPECT_TRUE(inputCalls.empty()) << "called inside the setter";
  ASSERT_TRUE(boostArrives(2));
  EXPECT_EQ(inputCalls, (std::vector<std::vector<int32_t>>{{1, 3}}));

  ASSERT_EQ(NVX_UnregisterInputAudioChangedCallback(0), NVX_OK);
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 2, 5), NVX_OK);
  ASSERT_TRUE(boostArrives(1));
  EXPECT_EQ(inputCalls.size(), 1u) << "an unregistered callback was called";
}

TEST_F(NotifyInProcess, CallbacksMayCallTheLibrary) {
  static int reentered = 0;
  const NVXIndexChangedProc reentering = [](int32_t index, void *context) {
    onBoost(index, context);
    if (reentered++ == 0) {
      NVX_RegisterBoostLevelChangedCallback(0, onBoost, context);
      NVX_SetUSBInputAudio(0, 2, 7);
    }
  };
  ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, reentering, &contextB), NVX_OK);
  ASSERT_EQ(NVX_SetBoostLevelIndex(0, 3), NVX_OK);
  ASSERT_TRUE(iterateUntil([] { return !inputCalls.empty(); }, 5s));
  EXPECT_EQ(reentered, 1);
  EXPECT_EQ(inputCalls[0], (std::vector<int32_t>{2, 7}));
}

TEST_F(NotifyInProcess, PayloadGlobalsFollowPosts) {
  EXPECT_EQ(NVX_SetUSBInputAudio(0, 0, 8), NVX_ERROR);
  EXPECT_TRUE(inputAudioInfo == nullptr && boostLevelInfo == nullptr) << "a refused change posts nothing";
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 3, 1), NVX_OK);
  const void *afterInput = inputAudioInfo;
  EXPECT_TRUE(afterInput != nullptr && boostLevelInfo == nullptr);
  ASSERT_EQ(NVX_SetBoostLevelIndex(0, 2), NVX_OK);
  ASSERT_EQ(NVX_SetUSBInputAudio(0, 2, 6), NVX_OK);
  EXPECT_TRUE(boostLevelInfo != nullptr && boostLevelInfo != inputAudioInfo);
  EXPECT_EQ(inputAudioInfo, afterInput) << "a reference a client kept stays valid";
  EXPECT_TRUE(midiChannelInfo == nullptr && midiKeyModeInfo == nullptr);
}

TEST_F(NotifyInProcess, NoThreadNoConnectionPerRegisterAndAnIdleObserverLetsTheLoopSleep) {
  ASSERT_TRUE(boostArrives(1));
  const long threads = entriesOf("task"), files = entriesOf("fd");
  for (int i = 0; i < 3; ++i) ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, onBoost, &contextB), NVX_OK);
  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &contextA), NVX_OK);
  ASSERT_TRUE(boostArrives(2));
  EXPECT_EQ(boostCalls.size(), 2u) << "registered four times, called once";
  EXPECT_EQ(entriesOf("task"), threads) << "a thread was started";
  EXPECT_EQ(entriesOf("fd"), files) << "a Register made a connection of its own";
  // A source dispatched on every iteration, or polled with a zero time-out, would turn this quarter
  // second into thousands of iterations.
  int iterations = 0;
  iterateUntil([] { return false; }, 250ms, &iterations);
  EXPECT_LT(iterations, 20);
}

// Another bus client may send a change of another product: it calls nothing.
TEST_F(NotifyInProcess, ChangesOfAnotherProductCallNothing) {
  sd_bus *sender = nullptr;
  ASSERT_GE(sd_bus_open_user(&sender), 0);
  const auto emit = [&](const char *name, int32_t product, int32_t index) {
    ASSERT_GE(sd_bus_emit_signal(sender, "/com/norvane/MXRK7Setup", "com.norvane.MXRK7Setup", "Notification", "sa{sv}",
                                 name, 3, "ProductID", "i", product, "Channel", "i", 1, "Index", "i", index), 0);
  };
  emit("MXR-K7 InputAudio Change", 1, 9);
  emit("MXR-K7 BoostLevel Change", 1, 9);
  emit("MXR-K7 InputAudio Change", 0, 3);
  emit("MXR-K7 BoostLevel Change", 0, 2);
  sd_bus_flush_close_unref(sender);
  // One sender's signals arrive in order: once the last is heard, all were handled.
  ASSERT_TRUE(iterateUntil([] { return !boostCalls.empty(); }, 5s));
  EXPECT_EQ(inputCalls, (std::vector<std::vector<int32_t>>{{1, 3}}));
  EXPECT_EQ(boostCalls, (std::vector<std::vector<int32_t>>{{2}}));
}

TEST_F(NotifyInProcess, AForkedChildObservesOnItsOwnConnection) {
  for (const bool registerFirst : {false, true}) {
    SCOPED_TRACE(registerFirst ? "the child registers" : "the child only runs its main loop");
    boostCalls.clear();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      // Its first Register or iteration replaces the inherited connection; the new match is live
      // a round trip later, so it posts until it hears one.
      boostCalls.clear();
      if (registerFirst) NVX_RegisterBoostLevelChangedCallback(0, onBoost, &contextB);
      for (int attempt = 0; attempt < 60; ++attempt)
        if (NVX_SetBoostLevelIndex(0, 3) == NVX_OK && iterateUntil([] { return !boostCalls.empty(); }, 50ms)) _exit(0);
      _exit(1);
    }
    int status = 0;
    bool reaped = false;  // done() is asked again at the end: a second waitpid would find no child
    ASSERT_TRUE(iterateUntil([&] { return reaped || (reaped = waitpid(child, &status, WNOHANG) == child); }, 10s,
                             nullptr, true));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_TRUE(iterateUntil([] { return !boostCalls.empty(); }, 5s)) << "the parent heard the child's change too";
    ASSERT_TRUE(boostArrives(1));
  }
}

// --- other processes ------------------------------------------------------------------------------

std::vector<std::string> words(const std::string &line) {
  std::istringstream in(line);
  std::vector<std::string> out;
  for (std::string word; in >> word;) out.push_back(word);
  return out;
}

// A process that registers through the shared library and runs a GLib main loop (api_helper listen).
class Listener {
 public:
  explicit Listener(const ProcessOptions &options = {}) : process_({NVX_API_HELPER, "listen"}, options) {
    EXPECT_EQ(process_.readLine(10s).value_or("(nothing)"), "hello");
  }
  // The reply to a command: its words.
  std::vector<std::string> ask(const std::string &command) {
    process_.writeLine(command);
    return words(process_.readLine(10s).value_or("(no answer to " + command + ")"));
  }
  // The next callback line without its time stamp, and the time stamp.
  std::pair<std::string, long long> next() {
    const std::string line = process_.readLine(10s).value_or("(nothing) 0");
    return {line.substr(0, line.rfind(' ')), std::stoll(line.substr(line.rfind(' ') + 1))};
  }
  Finished quit() { return process_.finish(10s); }

 private:
  Process process_;
};

TEST_F(NotifyTest, ChangesOfAnotherProcessReachEveryListeningProcess) {
  Listener first, second;
  for (Listener *listener : {&first, &second})
    for (const char *family : {"input", "boost"})
      EXPECT_EQ(listener->ask(std::string("register ") + family)[2], "100");
  for (const std::string change : {"input 1 3", "boost 2"}) {
    std::vector<std::string> argv = words(change);
    argv.insert(argv.begin(), {NVX_API_HELPER, "post"});
    const auto posted = run(argv);
    ASSERT_EQ(words(posted.out).at(1), "100") << posted.transcript();
    for (Listener *listener : {&first, &second}) {
      const auto [line, at] = listener->next();
      EXPECT_EQ(line, change);
      // The listener's main loop wakes for the change at once, not at some later time-out.
      EXPECT_LT(at - std::stoll(words(posted.out).at(2)), 500'000) << "µs from the setter's return to the callback";
    }
  }
  EXPECT_EQ(first.quit().exitCode, 0);
}

// No bus, or one that never answers: Register and the setters return in time with their usual
// results, and the listener never hears anything.
TEST_F(NotifyTest, WithoutAnAnsweringBusEveryCallReturnsPromptly) {
  ScratchDir dir;
  const SilentSocket silent(dir.file("silent"));
  for (const auto &address : {std::optional<std::string>(), std::optional("unix:path=" + dir.file("missing")),
                              std::optional(silent.address())}) {
    SCOPED_TRACE(address.value_or("no bus at all"));
    const std::map<std::string, std::optional<std::string>> changes = {{"DBUS_SESSION_BUS_ADDRESS", address}};
    Listener listener({.env = changes});
    for (const char *family : {"input", "boost", "input"}) {
      const auto reply = listener.ask(std::string("register ") + family);
      ASSERT_EQ(reply.size(), 4u) << "Register did not return";
      EXPECT_EQ(reply[2], "100");
      EXPECT_LE(std::stoll(reply[3]), 1500) << "ms Register took";
    }
    const auto posted = run({NVX_API_HELPER, "post", "input", "1", "3"}, {.env = changes});
    EXPECT_EQ(words(posted.out).at(1), "100") << posted.transcript();
    EXPECT_LE(posted.took, 2500ms) << "the setter, with its post";
    const auto end = listener.quit();
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.out, "") << "the listener heard something";
  }
}

}  // namespace
}  // namespace nvx::test
