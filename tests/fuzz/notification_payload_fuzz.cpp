// Fuzzes parseNotification, the reader of received change signals. sd-bus has no public way to turn
// raw bytes into a message, so the input drives its message builder instead (on a socket pair no one
// answers: enough to build and seal a message as a received one is sealed): a header that is ours or
// not, the body "s a{sv}" with names, keys and variant values the input picks, sometimes one value
// more. Besides the sanitizers' findings: the reader accepts exactly our signal with a family's name,
// finds the last int32 under each key (0 for another type), and reads a message twice alike.
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <string>

#include "notify/payload.h"

namespace {

using namespace nvx::notify;

sd_bus *connection() {
  static sd_bus *bus = [] {
    int fds[2];
    sd_bus *made = nullptr;
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds) != 0 || sd_bus_new(&made) < 0 ||
        sd_bus_set_fd(made, fds[0], fds[0]) < 0 || sd_bus_start(made) < 0)
      __builtin_trap();
    return made;  // kept, with the peer's end, for the whole run
  }();
  return bus;
}

template <size_t N>
const char *pick(FuzzedDataProvider &in, const std::array<const char *, N> &choices) {
  return choices[in.ConsumeIntegralInRange<size_t>(0, N - 1)];
}

// A name or a key: mostly one the reader knows, else any text (sd-bus refuses what is not UTF-8, and
// takes a C string: what follows a NUL byte never reaches the message).
std::string text(FuzzedDataProvider &in) {
  static constexpr std::array<const char *, 6> kKnown = {kInputAudioChange, kBoostLevelChange, kKeyProductId,
                                                         kKeyChannel,       kKeyIndex,         ""};
  return in.ConsumeBool() ? pick(in, kKnown) : std::string(in.ConsumeRandomLengthString(40).c_str());
}

// One variant: an int32 (the one type the reader takes, put in `number`) or a value of another type.
bool appendVariant(sd_bus_message *m, FuzzedDataProvider &in, int32_t *number) {
  const int32_t v = in.ConsumeIntegral<int32_t>();
  switch (in.ConsumeIntegralInRange(0, 7)) {
    case 0: *number = v; return sd_bus_message_append(m, "v", "i", v) >= 0;
    case 1: return sd_bus_message_append(m, "v", "u", v) >= 0;
    case 2: return sd_bus_message_append(m, "v", "x", int64_t{v}) >= 0;
    case 3: return sd_bus_message_append(m, "v", "s", text(in).c_str()) >= 0;
    case 4: return sd_bus_message_append(m, "v", "ai", 2, v, v) >= 0;
    case 5: return sd_bus_message_append(m, "v", "v", "i", v) >= 0;
    case 6: return sd_bus_message_append(m, "v", "(is)", v, "") >= 0;
    default: return sd_bus_message_append(m, "v", "a{sv}", 1, kKeyIndex, "i", v) >= 0;
  }
}

bool same(const Received &a, const Received &b) {
  return a.family == b.family && a.payload.productId == b.payload.productId &&
         a.payload.channel == b.payload.channel && a.payload.index == b.payload.index;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  static constexpr std::array<const char *, 2> kPaths = {kObjectPath, "/com/norvane/Other"};
  static constexpr std::array<const char *, 2> kInterfaces = {kInterface, "com.norvane.Other"};
  static constexpr std::array<const char *, 2> kMembers = {kMember, "Other"};
  const bool signal = in.ConsumeIntegralInRange(0, 7) != 0;
  const char *path = pick(in, kPaths), *interface = pick(in, kInterfaces), *member = pick(in, kMembers);
  sd_bus_message *m = nullptr;
  if ((signal ? sd_bus_message_new_signal(connection(), &m, path, interface, member)
              : sd_bus_message_new_method_call(connection(), &m, "com.norvane.Peer", path, interface, member)) < 0)
    __builtin_trap();

  const std::string name = text(in);
  Received expected{name == kInputAudioChange ? Family::InputAudio : Family::BoostLevel, {}};
  bool built = sd_bus_message_append(m, "s", name.c_str()) >= 0 && sd_bus_message_open_container(m, 'a', "{sv}") >= 0;
  for (size_t entries = in.ConsumeIntegralInRange<size_t>(0, 8); built && entries > 0; --entries) {
    const std::string key = text(in);
    int32_t number = 0;
    built = sd_bus_message_open_container(m, 'e', "sv") >= 0 && sd_bus_message_append(m, "s", key.c_str()) >= 0 &&
            appendVariant(m, in, &number) && sd_bus_message_close_container(m) >= 0;
    if (key == kKeyProductId) expected.payload.productId = number;
    if (key == kKeyChannel) expected.payload.channel = number;
    if (key == kKeyIndex) expected.payload.index = number;
  }
  built = built && sd_bus_message_close_container(m) >= 0;
  const bool extra = in.ConsumeIntegralInRange(0, 7) == 0;  // the body's signature becomes "sa{sv}i"
  if (extra) built = built && sd_bus_message_append(m, "i", 1) >= 0;
  static uint64_t cookie = 0;
  if (built && sd_bus_message_seal(m, ++cookie, 0) >= 0) {
    const auto first = parseNotification(m), second = parseNotification(m);
    const bool ours = signal && path == kObjectPath && interface == kInterface && member == kMember && !extra;
    const bool named = name == kInputAudioChange || name == kBoostLevelChange;
    if (first.has_value() != (ours && named) || second.has_value() != first.has_value()) __builtin_trap();
    if (first && (!same(*first, expected) || !same(*second, expected))) __builtin_trap();
  }
  sd_bus_message_unref(m);
  return 0;
}
