// The change signal's body: what the poster writes, and what the observer accepts from the bus.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "notify/payload.h"
#include "notify/wire.h"

namespace nvx::notify {
namespace {

using Body = std::function<int(sd_bus_message *)>;

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

  // A sealed signal as it would arrive, with the given header fields and body.
  sd_bus_message *signal(const Body &body, const char *path = "/com/norvane/MXRK7Setup",
                         const char *interface = "com.norvane.MXRK7Setup", const char *member = "Notification") {
    sd_bus_message *m = nullptr;
    EXPECT_GE(sd_bus_message_new_signal(bus_, &m, path, interface, member), 0);
    return finish(m, body);
  }
  sd_bus_message *methodCall(const Body &body) {
    sd_bus_message *m = nullptr;
    EXPECT_GE(sd_bus_message_new_method_call(bus_, &m, "com.norvane.Other", "/com/norvane/MXRK7Setup",
                                             "com.norvane.MXRK7Setup", "Notification"), 0);
    return finish(m, body);
  }

 private:
  sd_bus_message *finish(sd_bus_message *m, const Body &body) {
    messages_.push_back(m);
    EXPECT_GE(body(m), 0);
    EXPECT_GE(sd_bus_message_seal(m, ++cookie_, 0), 0);
    return m;
  }

  sd_bus *bus_ = nullptr;
  int peer_ = -1;
  uint64_t cookie_ = 0;
  std::vector<sd_bus_message *> messages_;
};

const char *const kInput = "MXR-K7 InputAudio Change";
const char *const kBoost = "MXR-K7 BoostLevel Change";

// A body read back independently of the parser: key -> D-Bus type of the value, and the name.
std::map<std::string, std::string> payloadTypes(sd_bus_message *m) {
  std::map<std::string, std::string> types;
  EXPECT_GE(sd_bus_message_rewind(m, 1), 0);
  const char *name = nullptr;
  EXPECT_GE(sd_bus_message_read(m, "s", &name), 0);
  types["(name)"] = name ? name : "";
  EXPECT_GT(sd_bus_message_enter_container(m, 'a', "{sv}"), 0);
  while (sd_bus_message_enter_container(m, 'e', "sv") > 0) {
    const char *key = nullptr;
    char type = 0;
    const char *contents = nullptr;
    EXPECT_GE(sd_bus_message_read(m, "s", &key), 0);
    EXPECT_GT(sd_bus_message_peek_type(m, &type, &contents), 0);
    types[key] = contents;
    EXPECT_GE(sd_bus_message_skip(m, "v"), 0);
    EXPECT_GE(sd_bus_message_exit_container(m), 0);
  }
  return types;
}

TEST_F(NotifyPayload, WrittenBodiesHaveTheWireFormatAndReadBack) {
  struct Case {
    Family family;
    Payload payload;
    std::map<std::string, std::string> keys;
  };
  const std::vector<Case> cases = {
      {Family::InputAudio, {0, 4, 7}, {{"(name)", kInput}, {"ProductID", "i"}, {"Channel", "i"}, {"Index", "i"}}},
      {Family::BoostLevel, {0, 0, 2}, {{"(name)", kBoost}, {"ProductID", "i"}, {"Index", "i"}}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.payload.index);
    sd_bus_message *m = signal([&](sd_bus_message *msg) { return appendBody(msg, c.family, c.payload); });
    EXPECT_EQ(sd_bus_message_has_signature(m, "sa{sv}"), 1);
    EXPECT_EQ(payloadTypes(m), c.keys);
    const auto received = parseNotification(m);
    ASSERT_TRUE(received.has_value());
    EXPECT_EQ(received->family, c.family);
    EXPECT_EQ(received->payload.productId, c.payload.productId);
    EXPECT_EQ(received->payload.channel, c.payload.channel);
    EXPECT_EQ(received->payload.index, c.payload.index);
    // Reading leaves the message as it was: a second parse gives the same.
    const auto again = parseNotification(m);
    ASSERT_TRUE(again.has_value());
    EXPECT_EQ(again->payload.index, c.payload.index);
  }
}

TEST_F(NotifyPayload, SignalsThatAreNotOursAreIgnored) {
  const Body good = [](sd_bus_message *m) {
    return sd_bus_message_append(m, "sa{sv}", kInput, 3, "ProductID", "i", 0, "Channel", "i", 1, "Index", "i", 3);
  };
  struct Case {
    const char *what;
    std::function<sd_bus_message *()> make;
  };
  const std::vector<Case> cases = {
      {"name only", [&] { return signal([](sd_bus_message *m) { return sd_bus_message_append(m, "s", kInput); }); }},
      {"no body", [&] { return signal([](sd_bus_message *) { return 0; }); }},
      {"int32 dictionary",
       [&] {
         return signal([](sd_bus_message *m) {
           return sd_bus_message_append(m, "sa{si}", kInput, 2, "Channel", 1, "Index", 3);
         });
       }},
      {"body in a struct",
       [&] {
         return signal([](sd_bus_message *m) {
           return sd_bus_message_append(m, "(sa{sv})", kInput, 1, "Index", "i", 3);
         });
       }},
      {"trailing value",
       [&] {
         return signal([](sd_bus_message *m) {
           return sd_bus_message_append(m, "sa{sv}s", kInput, 1, "Index", "i", 3, "more");
         });
       }},
      {"unknown name",
       [&] {
         return signal([](sd_bus_message *m) {
           return sd_bus_message_append(m, "sa{sv}", "MXR-K7 MidiChannel Change", 1, "Index", "i", 3);
         });
       }},
      {"name with other case",
       [&] {
         return signal([](sd_bus_message *m) {
           return sd_bus_message_append(m, "sa{sv}", "mxr-k7 inputaudio change", 1, "Index", "i", 3);
         });
       }},
      {"other path", [&] { return signal(good, "/com/norvane/Other"); }},
      {"other interface", [&] { return signal(good, "/com/norvane/MXRK7Setup", "com.norvane.Other"); }},
      {"other member", [&] { return signal(good, "/com/norvane/MXRK7Setup", "com.norvane.MXRK7Setup", "Other"); }},
      {"method call", [&] { return methodCall(good); }},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_FALSE(parseNotification(c.make()).has_value());
  }
  EXPECT_FALSE(parseNotification(nullptr).has_value());
  // The good body itself is accepted: the cases above fail for their own reason.
  EXPECT_TRUE(parseNotification(signal(good)).has_value());
}

TEST_F(NotifyPayload, MissingOrMistypedValuesReadAsZero) {
  struct Case {
    const char *what;
    Body body;
    Payload expected;
  };
  const std::vector<Case> cases = {
      {"all present",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 3, "ProductID", "i", 0, "Channel", "i", 2, "Index", "i", 5);
       },
       {0, 2, 5}},
      {"empty dictionary", [](sd_bus_message *m) { return sd_bus_message_append(m, "sa{sv}", kInput, 0); }, {0, 0, 0}},
      {"index missing",
       [](sd_bus_message *m) { return sd_bus_message_append(m, "sa{sv}", kInput, 1, "Channel", "i", 4); },
       {0, 4, 0}},
      {"uint32 index",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "Channel", "i", 1, "Index", "u", 3U);
       },
       {0, 1, 0}},
      {"int64 channel",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "Channel", "x", int64_t{1}, "Index", "i", 3);
       },
       {0, 0, 3}},
      {"int16 index",
       [](sd_bus_message *m) { return sd_bus_message_append(m, "sa{sv}", kInput, 1, "Index", "n", 3); }, {0, 0, 0}},
      {"string index",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "Channel", "i", 1, "Index", "s", "3");
       },
       {0, 1, 0}},
      {"variant in a variant",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 1, "Index", "v", "i", 3);
       },
       {0, 0, 0}},
      {"array value",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "Index", "ai", 2, 1, 2, "Channel", "i", 3);
       },
       {0, 3, 0}},
      {"unknown and differently cased keys skipped",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 4, "Extra", "s", "x", "index", "i", 9, "Channel", "i", 1,
                                      "Index", "i", 6);
       },
       {0, 1, 6}},
      {"last of a repeated key counts",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "Index", "i", 6, "Index", "i", 2);
       },
       {0, 0, 2}},
      {"product id passed on as sent",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kInput, 2, "ProductID", "i", 1, "Index", "i", 2);
       },
       {1, 0, 2}},
      {"negative values kept",
       [](sd_bus_message *m) {
         return sd_bus_message_append(m, "sa{sv}", kBoost, 2, "ProductID", "i", -1, "Index", "i", -5);
       },
       {-1, 0, -5}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.what);
    const auto received = parseNotification(signal(c.body));
    ASSERT_TRUE(received.has_value());
    EXPECT_EQ(received->payload.productId, c.expected.productId);
    EXPECT_EQ(received->payload.channel, c.expected.channel);
    EXPECT_EQ(received->payload.index, c.expected.index);
  }
}

}  // namespace
}  // namespace nvx::notify
