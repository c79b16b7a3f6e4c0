// Posting a change: a short-lived private connection per post, so a setter may post from any
// thread without sharing a connection, and nothing stays open between calls.
#include <systemd/sd-bus.h>

#include "notify/connection.h"
#include "notify/last_payload.h"
#include "notify/notifications.h"
#include "notify/payload.h"
#include "notify/wire.h"

namespace nvx::notify {

namespace {

// Connect, send, wait until every queued byte is written (or 1 s has passed, the connection step
// included), close. The authentication and the Hello share that bound: a peer that accepts but
// never answers costs one second, never sd-bus's own 90. What was written reaches the bus even
// though the connection closes right after.
void broadcast(Family family, const Payload &payload) {
  const uint64_t deadline = monotonicMicros() + kBusWaitBoundMicros;
  BusPtr bus = openSessionConnection("NorvaneMXRK7Setup-post");
  if (!bus) {
    return;
  }
  sd_bus_message *raw = nullptr;
  if (sd_bus_message_new_signal(bus.get(), &raw, kObjectPath, kInterface, kMember) < 0) {
    return;
  }
  const std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)> message(raw, &sd_bus_message_unref);
  if (appendBody(raw, family, payload) < 0 || sd_bus_send(bus.get(), raw, nullptr) < 0) {
    return;
  }
  processUntil(bus.get(), deadline, [&bus] {
    uint64_t queued = 0;
    return sd_bus_get_n_queued_write(bus.get(), &queued) < 0 || queued == 0;
  });
}

void post(Family family, const Payload &payload) noexcept {
  storeLastPayload(family, payload);
  try {
    broadcast(family, payload);
  } catch (...) {
    // Only an allocation can fail here; a change that could not be broadcast is simply not seen.
  }
}

}  // namespace

void postInputAudioChange(int32_t channel, int32_t index) noexcept {
  post(Family::InputAudio, Payload{0, channel, index});
}

void postBoostLevelChange(int32_t index) noexcept { post(Family::BoostLevel, Payload{0, 0, index}); }

}  // namespace nvx::notify
