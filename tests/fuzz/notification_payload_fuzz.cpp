// Fuzzes the reader of received change signals, parseNotification, with messages built from
// fuzzer-chosen header fields, types and values. sd-bus offers no way to turn raw bytes into a
// message, so the fuzzer drives the message builder instead, on a connection over a socket pair
// that no one answers (enough to build and seal messages, as a received message is sealed).
//
// Half of the inputs build a body of the right shape, "s a{sv}", with entries whose keys, variant
// types and values the fuzzer picks: their expected payload is known here (the last int32 under each
// known key; 0 for a missing key or another type), and the reader must return exactly that. The
// other half build a body of any signature, nested containers and variants included. For every
// message the reader must accept it exactly when header, signature and name are those of a change
// signal, and reading it twice must give the same answer.
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/socket.h>
#include <systemd/sd-bus.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "notify/payload.h"
#include "notify/wire.h"

namespace {

using nvx::notify::Family;
using nvx::notify::Payload;
using nvx::notify::Received;

constexpr int kMaxDepth = 4;
constexpr size_t kMaxElements = 4;
constexpr size_t kMaxEntries = 8;

sd_bus *connection() {
  static sd_bus *bus = [] {
    int fds[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds) != 0) __builtin_trap();
    sd_bus *made = nullptr;
    if (sd_bus_new(&made) < 0 || sd_bus_set_fd(made, fds[0], fds[0]) < 0 || sd_bus_start(made) < 0)
      __builtin_trap();
    return made;  // kept, with the peer's end, for the whole run
  }();
  return bus;
}

template <size_t N>
const char *pick(FuzzedDataProvider &in, const std::array<const char *, N> &choices) {
  return choices[in.ConsumeIntegralInRange<size_t>(0, N - 1)];
}

// A string for a string value or a key: mostly one that matters to the reader, else any text.
std::string text(FuzzedDataProvider &in) {
  static constexpr std::array<const char *, 7> kTexts = {nvx::notify::kInputAudioChange,
                                                          nvx::notify::kBoostLevelChange,
                                                          nvx::notify::kKeyProductId,
                                                          nvx::notify::kKeyChannel,
                                                          nvx::notify::kKeyIndex,
                                                          "",
                                                          "MXR-K7 MidiChannel Change"};
  if (in.ConsumeBool()) return pick(in, kTexts);
  return in.ConsumeRandomLengthString(40);
}

constexpr std::array<char, 12> kBasicTypes = {'y', 'b', 'n', 'q', 'i', 'u', 'x', 't', 'd', 's', 'o', 'g'};

// A complete type, nesting at most `depth` containers.
std::string signature(FuzzedDataProvider &in, int depth) {
  const int kind = depth > 0 ? in.ConsumeIntegralInRange(0, 5) : 0;
  switch (kind) {
    case 1:
      return "a" + signature(in, depth - 1);
    case 2:
      return std::string("a{") + kBasicTypes[in.ConsumeIntegralInRange<size_t>(0, kBasicTypes.size() - 1)] +
             signature(in, depth - 1) + "}";
    case 3: {
      std::string fields;
      const int count = in.ConsumeIntegralInRange(1, 3);
      for (int i = 0; i < count; ++i) fields += signature(in, depth - 1);
      return "(" + fields + ")";
    }
    case 4:
      return "v";
    default:
      return std::string(1, kBasicTypes[in.ConsumeIntegralInRange<size_t>(0, kBasicTypes.size() - 1)]);
  }
}

// Length of the complete type that starts at `at`.
size_t typeLength(const std::string &sig, size_t at) {
  if (sig[at] == 'a') return 1 + typeLength(sig, at + 1);
  if (sig[at] == '(' || sig[at] == '{') {
    size_t end = at + 1;
    while (sig[end] != ')' && sig[end] != '}') end += typeLength(sig, end);
    return end + 1 - at;
  }
  return 1;
}

// Appends one basic value; false when sd-bus refuses it (text that is not valid UTF-8, say).
bool appendBasic(sd_bus_message *m, char type, FuzzedDataProvider &in) {
  switch (type) {
    case 'y': { const uint8_t v = in.ConsumeIntegral<uint8_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'b': { const int v = in.ConsumeBool(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'n': { const int16_t v = in.ConsumeIntegral<int16_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'q': { const uint16_t v = in.ConsumeIntegral<uint16_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'i': { const int32_t v = in.ConsumeIntegral<int32_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'u': { const uint32_t v = in.ConsumeIntegral<uint32_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'x': { const int64_t v = in.ConsumeIntegral<int64_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 't': { const uint64_t v = in.ConsumeIntegral<uint64_t>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 'd': { const double v = in.ConsumeFloatingPoint<double>(); return sd_bus_message_append_basic(m, type, &v) >= 0; }
    case 's': { const std::string v = text(in); return sd_bus_message_append_basic(m, type, v.c_str()) >= 0; }
    case 'o': return sd_bus_message_append_basic(m, type, pick(in, std::array<const char *, 3>{"/", nvx::notify::kObjectPath, "/a/b"})) >= 0;
    case 'g': return sd_bus_message_append_basic(m, type, pick(in, std::array<const char *, 3>{"", "sa{sv}", "i"})) >= 0;
    default: return false;
  }
}

// Appends one value of the complete type `sig` (a variant's contents are chosen here).
bool appendValue(sd_bus_message *m, const std::string &sig, FuzzedDataProvider &in, int depth) {
  switch (sig[0]) {
    case 'a': {
      const std::string element = sig.substr(1);
      if (sd_bus_message_open_container(m, 'a', element.c_str()) < 0) return false;
      const size_t count = in.ConsumeIntegralInRange<size_t>(0, kMaxElements);
      for (size_t i = 0; i < count; ++i) {
        if (element[0] == '{') {
          const std::string inner = element.substr(1, element.size() - 2);
          if (sd_bus_message_open_container(m, 'e', inner.c_str()) < 0 || !appendBasic(m, inner[0], in) ||
              !appendValue(m, inner.substr(1), in, depth) || sd_bus_message_close_container(m) < 0)
            return false;
        } else if (!appendValue(m, element, in, depth)) {
          return false;
        }
      }
      return sd_bus_message_close_container(m) >= 0;
    }
    case '(': {
      const std::string inner = sig.substr(1, sig.size() - 2);
      if (sd_bus_message_open_container(m, 'r', inner.c_str()) < 0) return false;
      for (size_t at = 0; at < inner.size(); at += typeLength(inner, at))
        if (!appendValue(m, inner.substr(at, typeLength(inner, at)), in, depth)) return false;
      return sd_bus_message_close_container(m) >= 0;
    }
    case 'v': {
      const std::string contents = signature(in, depth > 0 ? depth - 1 : 0);
      return sd_bus_message_open_container(m, 'v', contents.c_str()) >= 0 &&
             appendValue(m, contents, in, depth - 1) && sd_bus_message_close_container(m) >= 0;
    }
    default:
      return appendBasic(m, sig[0], in);
  }
}

// A body of the right shape; returns the payload the reader must find in it.
std::optional<Payload> appendChangeBody(sd_bus_message *m, FuzzedDataProvider &in) {
  const std::string name = text(in);
  if (sd_bus_message_append_basic(m, 's', name.c_str()) < 0) return std::nullopt;
  if (sd_bus_message_open_container(m, 'a', "{sv}") < 0) return std::nullopt;
  Payload expected;
  const size_t entries = in.ConsumeIntegralInRange<size_t>(0, kMaxEntries);
  for (size_t i = 0; i < entries; ++i) {
    const std::string key = text(in);
    // Mostly an int32, the one type the reader takes; otherwise any type.
    const std::string type = in.ConsumeBool() ? "i" : signature(in, 2);
    int32_t number = 0;
    if (sd_bus_message_open_container(m, 'e', "sv") < 0 || sd_bus_message_append_basic(m, 's', key.c_str()) < 0 ||
        sd_bus_message_open_container(m, 'v', type.c_str()) < 0)
      return std::nullopt;
    if (type == "i") {
      number = in.ConsumeIntegral<int32_t>();
      if (sd_bus_message_append_basic(m, 'i', &number) < 0) return std::nullopt;
    } else if (!appendValue(m, type, in, 2)) {
      return std::nullopt;
    }
    if (sd_bus_message_close_container(m) < 0 || sd_bus_message_close_container(m) < 0) return std::nullopt;
    // The last entry of a key counts; an entry of another type reads as 0.
    if (key == nvx::notify::kKeyProductId) expected.productId = number;
    else if (key == nvx::notify::kKeyChannel) expected.channel = number;
    else if (key == nvx::notify::kKeyIndex) expected.index = number;
  }
  if (sd_bus_message_close_container(m) < 0) return std::nullopt;
  return expected;
}

bool sameAnswer(const std::optional<Received> &a, const std::optional<Received> &b) {
  if (a.has_value() != b.has_value()) return false;
  return !a || (a->family == b->family && a->payload.productId == b->payload.productId &&
                a->payload.channel == b->payload.channel && a->payload.index == b->payload.index);
}

std::optional<Family> familyNamed(const char *name) {
  if (std::strcmp(name, nvx::notify::kInputAudioChange) == 0) return Family::InputAudio;
  if (std::strcmp(name, nvx::notify::kBoostLevelChange) == 0) return Family::BoostLevel;
  return std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  sd_bus *bus = connection();

  static constexpr std::array<const char *, 3> kPaths = {nvx::notify::kObjectPath, "/com/norvane/Other", "/"};
  static constexpr std::array<const char *, 2> kInterfaces = {nvx::notify::kInterface, "com.norvane.Other"};
  static constexpr std::array<const char *, 2> kMembers = {nvx::notify::kMember, "Other"};
  const bool methodCall = in.ConsumeIntegralInRange(0, 7) == 0;
  const char *path = pick(in, kPaths);
  const char *interface = pick(in, kInterfaces);
  const char *member = pick(in, kMembers);
  sd_bus_message *m = nullptr;
  const int made = methodCall ? sd_bus_message_new_method_call(bus, &m, "com.norvane.Peer", path, interface, member)
                              : sd_bus_message_new_signal(bus, &m, path, interface, member);
  if (made < 0) __builtin_trap();

  std::optional<Payload> expected;
  bool built = true;
  if (in.ConsumeBool()) {
    expected = appendChangeBody(m, in);
    built = expected.has_value();
    // Sometimes one value more, which makes the signature wrong.
    if (built && in.ConsumeIntegralInRange(0, 7) == 0) {
      built = appendValue(m, signature(in, 1), in, 1);
      expected.reset();
    }
  } else {
    const int values = in.ConsumeIntegralInRange(0, 3);
    for (int i = 0; built && i < values; ++i) built = appendValue(m, signature(in, kMaxDepth), in, kMaxDepth);
  }
  static uint64_t cookie = 0;
  if (!built || sd_bus_message_seal(m, ++cookie, 0) < 0) {
    sd_bus_message_unref(m);
    return 0;
  }

  const auto first = nvx::notify::parseNotification(m);
  const auto second = nvx::notify::parseNotification(m);
  if (!sameAnswer(first, second)) __builtin_trap();

  // Accepted exactly when it is a change signal: our header, "sa{sv}", a family's name.
  bool change = !methodCall && std::strcmp(path, nvx::notify::kObjectPath) == 0 &&
                std::strcmp(interface, nvx::notify::kInterface) == 0 &&
                std::strcmp(member, nvx::notify::kMember) == 0 &&
                sd_bus_message_has_signature(m, nvx::notify::kBodySignature) > 0;
  std::optional<Family> family;
  if (change) {
    const char *name = nullptr;
    if (sd_bus_message_rewind(m, 1) < 0 || sd_bus_message_read_basic(m, 's', &name) < 0) __builtin_trap();
    family = familyNamed(name);
    change = family.has_value();
  }
  if (first.has_value() != change) __builtin_trap();
  if (first && first->family != *family) __builtin_trap();
  if (first && expected &&
      (first->payload.productId != expected->productId || first->payload.channel != expected->channel ||
       first->payload.index != expected->index))
    __builtin_trap();

  sd_bus_message_unref(m);
  return 0;
}
