// The change signal's body: what the poster writes, and what the observer takes from the bus.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <vector>

#include "notify/payload.h"
#include "notify/wire.h"

namespace nvx::notify {
namespace {

using Body = std::function<int(sd_bus_message *)>;

template <class... Args>
Body body(const char *signature, Args... args) {
  return [=](sd_bus_message *m) { return sd_bus_message_append(m, signature, args...); };
}

// Messages are made on a connection over a socket pair that no one answers: enough for sd-bus to
// build and seal messages, no bus needed.
class NotifyPayload : public ::testing::Test {
 protected:
  void SetUp() override {
    int fds[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds), 0);
    peer_ = fds[1];
    ASSERT_GE(sd_bus_new(&bus_), 0);
    ASSERT_GE(sd_bus_set_fd(bus_, fds[0], fds[0]), 0);
    ASSERT_GE(sd_bus_start(bus_), 0);
  }
  void TearDown() override {
    for (sd_bus_message *m : messages_) sd_bus_message_unref(m);
    sd_bus_close_unref(bus_);
    close(peer_);
  }

  // A sealed message as it would arrive: a signal with these header fields, or a method call.
  sd_bus_message *message(const Body &body, const char *path = "/com/norvane/MXRK7Setup",
                          const char *interface = "com.norvane.MXRK7Setup", const char *member = "Notification",
                          bool methodCall = false) {
    sd_bus_message *m = nullptr;
    EXPECT_GE(methodCall ? sd_bus_message_new_method_call(bus_, &m, "com.norvane.Other", path, interface, member)
                         : sd_bus_message_new_signal(bus_, &m, path, interface, member),
              0);
    messages_.push_back(m);
    EXPECT_GE(body(m), 0);
    EXPECT_GE(sd_bus_message_seal(m, ++cookie_, 0), 0);
    return m;
  }

 private:
  sd_bus *bus_ = nullptr;
  int peer_ = -1;
  uint64_t cookie_ = 0;
  std::vector<sd_bus_message *> messages_;
};

const char *const kInput = "MXR-K7 InputAudio Change";
const char *const kBoost = "MXR-K7 BoostLevel Change";

// A body read back with sd-bus alone, independently of the parser: "<name> <key>=<int32> ...", in the
// order written; "unreadable" when it is not "sa{sv}" with int32 values only.
std::string bodyText(sd_bus_message *m) {
  const char *text = nullptr;
  int32_t value = 0;
  if (sd_bus_message_rewind(m, 1) < 0 || sd_bus_message_read(m, "s", &text) < 0 ||
      sd_bus_message_enter_container(m, 'a', "{sv}") < 0)
    return "unreadable";
  std::string out = text;
  while (sd_bus_message_read(m, "{sv}", &text, "i", &value) > 0)
    out += std::string(" ") + text + "=" + std::to_string(value);
  return sd_bus_message_exit_container(m) >= 0 && sd_bus_message_at_end(m, 1) > 0 ? out : "unreadable";
}

TEST_F(NotifyPayload, WrittenBodiesHaveTheWireFormat) {
  EXPECT_EQ(bodyText(message([](sd_bus_message *m) { return appendBody(m, Family::InputAudio, {0, 4, 7}); })),
            "MXR-K7 InputAudio Change ProductID=0 Channel=4 Index=7");
  EXPECT_EQ(bodyText(message([](sd_bus_message *m) { return appendBody(m, Family::BoostLevel, {0, 0, 2}); })),
            "MXR-K7 BoostLevel Change ProductID=0 Index=2");
}

// What the parser makes of a message: "<family> <product> <channel> <index>", or "ignored".
std::string parsed(sd_bus_message *m) {
  const auto received = parseNotification(m);
  if (!received) return "ignored";
  const auto &p = received->payload;
  return std::string(received->family == Family::InputAudio ? "input " : "boost ") + std::to_string(p.productId) +
         " " + std::to_string(p.channel) + " " + std::to_string(p.index);
}

TEST_F(NotifyPayload, ReadsOnlyOurSignalsAndTakesZeroForWhatIsMissingOrMistyped) {
  const Body good = body("sa{sv}", kInput, 3, "ProductID", "i", 0, "Channel", "i", 2, "Index", "i", 5);
  struct Case {
    const char *what;
    sd_bus_message *message;
    const char *expected;
  };
  const Case cases[] = {
      {"all present", message(good), "input 0 2 5"},
      {"boost", message(body("sa{sv}", kBoost, 2, "ProductID", "i", 0, "Index", "i", 1)), "boost 0 0 1"},
      {"name only", message(body("s", kInput)), "ignored"},
      {"no body", message([](sd_bus_message *) { return 0; }), "ignored"},
      {"int32 dictionary", message(body("sa{si}", kInput, 2, "Channel", 1, "Index", 3)), "ignored"},
      {"body in a struct", message(body("(sa{sv})", kInput, 1, "Index", "i", 3)), "ignored"},
      {"trailing value", message(body("sa{sv}s", kInput, 1, "Index", "i", 3, "more")), "ignored"},
      {"unknown name", message(body("sa{sv}", "MXR-K7 MidiChannel Change", 1, "Index", "i", 3)), "ignored"},
      {"name with other case", message(body("sa{sv}", "mxr-k7 inputaudio change", 1, "Index", "i", 3)), "ignored"},
      {"other path", message(good, "/com/norvane/Other"), "ignored"},
      {"other interface", message(good, "/com/norvane/MXRK7Setup", "com.norvane.Other"), "ignored"},
      {"other member", message(good, "/com/norvane/MXRK7Setup", "com.norvane.MXRK7Setup", "Other"), "ignored"},
      {"method call", message(good, "/com/norvane/MXRK7Setup", "com.norvane.MXRK7Setup", "Notification", true),
       "ignored"},
      {"no message", nullptr, "ignored"},
      {"empty dictionary", message(body("sa{sv}", kInput, 0)), "input 0 0 0"},
      {"index missing", message(body("sa{sv}", kInput, 1, "Channel", "i", 4)), "input 0 4 0"},
      {"uint32 index", message(body("sa{sv}", kInput, 2, "Channel", "i", 1, "Index", "u", 3U)), "input 0 1 0"},
      {"int64 channel", message(body("sa{sv}", kInput, 2, "Channel", "x", int64_t{1}, "Index", "i", 3)), "input 0 0 3"},
      {"string index", message(body("sa{sv}", kInput, 2, "Channel", "i", 1, "Index", "s", "3")), "input 0 1 0"},
      {"variant in a variant", message(body("sa{sv}", kInput, 1, "Index", "v", "i", 3)), "input 0 0 0"},
      {"array value", message(body("sa{sv}", kInput, 2, "Index", "ai", 2, 1, 2, "Channel", "i", 3)), "input 0 3 0"},
      {"unknown and differently cased keys skipped",
       message(body("sa{sv}", kInput, 4, "Extra", "s", "x", "index", "i", 9, "Channel", "i", 1, "Index", "i", 6)),
       "input 0 1 6"},
      {"last of a repeated key counts", message(body("sa{sv}", kInput, 2, "Index", "i", 6, "Index", "i", 2)),
       "input 0 0 2"},
      {"product and negative values passed on as sent",
       message(body("sa{sv}", kBoost, 2, "ProductID", "i", -1, "Index", "i", -5)), "boost -1 0 -5"},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(parsed(c.message), c.expected) << c.what;
    EXPECT_EQ(parsed(c.message), c.expected) << c.what << ", read again";
  }
}

}  // namespace
}  // namespace nvx::notify
