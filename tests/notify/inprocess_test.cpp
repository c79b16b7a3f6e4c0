// One process that both registers and makes changes, through the shared library's public API, under
// a private session bus.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include "NorvaneMXRK7Setup.h"
#include "main_loop.h"

namespace {

using namespace std::chrono_literals;
using nvx::test::iterateUntil;

struct InputCall {
  int32_t channel;
  int32_t index;
  void *context;
};
struct IndexCall {
  int32_t index;
  void *context;
};

std::vector<InputCall> inputCalls;
std::vector<IndexCall> boostCalls;

void onInput(int32_t channel, int32_t index, void *context) { inputCalls.push_back({channel, index, context}); }
void onBoost(int32_t index, void *context) { boostCalls.push_back({index, context}); }

int inputContext = 0;
int boostContext = 0;

// The setters post every change they make.
void setInput(int32_t channel, uint32_t index) { ASSERT_EQ(NVX_SetUSBInputAudio(0, channel, index), NVX_OK); }
void setBoost(uint32_t index) { ASSERT_EQ(NVX_SetBoostLevelIndex(0, index), NVX_OK); }

class InProcessTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr) << "run under dbus-run-session";
    ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext), NVX_OK);
    ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, onBoost, &boostContext), NVX_OK);
    inputCalls.clear();
    boostCalls.clear();
  }
  void TearDown() override {
    NVX_UnregisterInputAudioChangedCallback(0);
    NVX_UnregisterBoostLevelChangedCallback(0);
  }

  // Makes a boost change and waits for it: every change posted before has then been delivered.
  static bool drainWithBoostMarker(int32_t marker) {
    setBoost(static_cast<uint32_t>(marker));
    return iterateUntil(
        [marker] { return !boostCalls.empty() && boostCalls.back().index == marker; }, 5000ms);
  }
};

TEST_F(InProcessTest, OwnPostsCallOwnCallbacksFromTheMainLoop) {
  setInput(1, 3);
  setBoost(2);
  // Nothing is called inside the setter: callbacks run only while the main context is iterated.
  EXPECT_TRUE(inputCalls.empty());
  EXPECT_TRUE(boostCalls.empty());
  ASSERT_TRUE(iterateUntil([] { return !inputCalls.empty() && !boostCalls.empty(); }, 5000ms));
  ASSERT_EQ(inputCalls.size(), 1U);
  EXPECT_EQ(inputCalls[0].channel, 1);
  EXPECT_EQ(inputCalls[0].index, 3);
  EXPECT_EQ(inputCalls[0].context, &inputContext);
  ASSERT_EQ(boostCalls.size(), 1U);
  EXPECT_EQ(boostCalls[0].index, 2);
  EXPECT_EQ(boostCalls[0].context, &boostContext);
}

TEST_F(InProcessTest, UnregisteredCallbackIsNotCalledAndRegisteringAgainRestoresIt) {
  ASSERT_EQ(NVX_UnregisterInputAudioChangedCallback(0), NVX_OK);
  setInput(2, 5);
  ASSERT_TRUE(drainWithBoostMarker(1));
  iterateUntil([] { return false; }, 100ms);
  EXPECT_TRUE(inputCalls.empty());

  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext), NVX_OK);
  setInput(2, 6);
  ASSERT_TRUE(iterateUntil([] { return !inputCalls.empty(); }, 5000ms));
  EXPECT_EQ(inputCalls[0].index, 6);
}

TEST_F(InProcessTest, RepeatedRegisterObservesOnce) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext), NVX_OK);
  }
  setInput(0, 4);
  ASSERT_TRUE(drainWithBoostMarker(3));
  iterateUntil([] { return false; }, 100ms);
  ASSERT_EQ(inputCalls.size(), 1U);
  EXPECT_EQ(inputCalls[0].index, 4);
}

TEST_F(InProcessTest, CallbacksMayCallTheLibrary) {
  // A boost callback that registers again and makes a routing change: neither may deadlock, and
  // the routing change is delivered on a later iteration.
  static int reentered = 0;
  reentered = 0;
  const NVXIndexChangedProc reentering = [](int32_t index, void *context) {
    onBoost(index, context);
    if (reentered++ == 0) {
      NVX_RegisterBoostLevelChangedCallback(0, onBoost, context);
      NVX_SetUSBInputAudio(0, 2, 7);
    }
  };
  ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, reentering, &boostContext), NVX_OK);
  setBoost(3);
  ASSERT_TRUE(iterateUntil([] { return !inputCalls.empty(); }, 5000ms));
  EXPECT_EQ(reentered, 1);
  EXPECT_EQ(inputCalls[0].channel, 2);
  EXPECT_EQ(inputCalls[0].index, 7);
  EXPECT_EQ(BoostLevelChangedCallbackFunc[0], &onBoost);
}

TEST_F(InProcessTest, PayloadGlobalsFollowPostsAndRegister) {
  // SetUp registered both families, which dropped both payloads.
  EXPECT_EQ(inputAudioInfo, nullptr);
  EXPECT_EQ(boostLevelInfo, nullptr);
  // A refused change posts nothing.
  EXPECT_EQ(NVX_SetUSBInputAudio(0, 0, 8), NVX_ERROR);
  EXPECT_EQ(NVX_SetBoostLevelIndex(0, 4), NVX_ERROR);
  EXPECT_EQ(inputAudioInfo, nullptr);
  EXPECT_EQ(boostLevelInfo, nullptr);

  setInput(3, 1);
  ASSERT_NE(inputAudioInfo, nullptr);
  EXPECT_EQ(boostLevelInfo, nullptr);
  const void *afterInput = inputAudioInfo;
  setBoost(2);
  ASSERT_NE(boostLevelInfo, nullptr);
  EXPECT_NE(boostLevelInfo, inputAudioInfo);
  EXPECT_EQ(inputAudioInfo, afterInput);

  // Registering a family forgets that family's last payload only.
  ASSERT_EQ(NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext), NVX_OK);
  EXPECT_EQ(inputAudioInfo, nullptr);
  EXPECT_NE(boostLevelInfo, nullptr);
  EXPECT_EQ(midiChannelInfo, nullptr);
  EXPECT_EQ(midiKeyModeInfo, nullptr);
}

TEST_F(InProcessTest, NoThreadIsStarted) {
  const int before = nvx::test::threadCount();
  ASSERT_GT(before, 0);
  ASSERT_EQ(NVX_RegisterBoostLevelChangedCallback(0, onBoost, &boostContext), NVX_OK);
  EXPECT_EQ(nvx::test::threadCount(), before);
  setBoost(1);
  EXPECT_EQ(nvx::test::threadCount(), before);
  ASSERT_TRUE(iterateUntil([] { return !boostCalls.empty(); }, 5000ms));
  EXPECT_EQ(nvx::test::threadCount(), before);
}

TEST_F(InProcessTest, IdleObserverLetsTheMainLoopSleep) {
  // A source that asked to be dispatched on every iteration, or polled with a zero time-out,
  // would turn this quarter second into thousands of iterations.
  int iterations = 0;
  iterateUntil([] { return false; }, 250ms, &iterations);
  EXPECT_LT(iterations, 20);
}

// Runs in a forked child: returns whether the child's own posts reached its own callbacks.
bool childObservesOwnPosts(bool registerFirst) {
  inputCalls.clear();
  boostCalls.clear();
  if (registerFirst) {
    // Register notices the new process and connects anew, waiting for its matches.
    if (NVX_RegisterInputAudioChangedCallback(0, onInput, &inputContext) != NVX_OK) {
      return false;
    }
    setInput(1, 2);
    return iterateUntil([] { return !inputCalls.empty() && inputCalls.back().index == 2; }, 3000ms);
  }
  // Only the main loop runs: its first iteration replaces the inherited connection, whose match
  // becomes live a round trip later, so post until the callback sees one.
  for (int attempt = 0; attempt < 60; ++attempt) {
    setBoost(3);
    if (iterateUntil([] { return !boostCalls.empty(); }, 50ms)) {
      return boostCalls.back().index == 3;
    }
  }
  return false;
}

TEST_F(InProcessTest, ForkedChildObservesOnItsOwnConnection) {
  for (const bool registerFirst : {false, true}) {
    SCOPED_TRACE(registerFirst ? "child registers" : "child only runs its main loop");
    inputCalls.clear();
    boostCalls.clear();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      _exit(childObservesOwnPosts(registerFirst) ? 0 : 1);
    }
    int status = 0;
    bool reaped = false;
    ASSERT_TRUE(iterateUntil([&] { return reaped || (reaped = waitpid(child, &status, WNOHANG) == child); }, 10000ms,
                             nullptr, 20ms));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    // The child's posts reached the parent too, on the parent's untouched connection.
    if (registerFirst) {
      ASSERT_TRUE(iterateUntil([] { return !inputCalls.empty(); }, 5000ms));
      EXPECT_EQ(inputCalls.back().index, 2);
    } else {
      ASSERT_TRUE(iterateUntil([] { return !boostCalls.empty(); }, 5000ms));
      EXPECT_EQ(boostCalls.back().index, 3);
    }
    setBoost(1);
    EXPECT_TRUE(iterateUntil([] { return !boostCalls.empty() && boostCalls.back().index == 1; }, 5000ms));
  }
}

}  // namespace
