// The body of a change signal, (s a{sv}): the notification name and a dictionary of int32 values
// under "ProductID", "Channel" (routing only) and "Index".
#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>

#include "notify/wire.h"

namespace nvx::notify {

struct Payload {
  int32_t productId = 0;
  int32_t channel = 0;
  int32_t index = 0;
};

struct Received {
  Family family = Family::InputAudio;
  Payload payload;
};

// Appends the body for `family` to a new signal message: the family's name, then ProductID,
// Channel (routing only) and Index. Returns 0 or a negative errno.
int appendBody(sd_bus_message *message, Family family, const Payload &payload);

// Reads a received change signal. Nothing from the bus is trusted: a message that is not our
// signal (type, path, interface, member), has another body signature or a name of neither family
// gives nothing; in the payload, a key that is missing or holds anything but an int32 reads as 0 and
// unknown keys are skipped (when a key occurs twice, the last one counts). The ProductID is returned
// as sent; choosing what to do with it is the caller's business.
//
// Depends on nothing but the message, and rewinds it first, so it may be called more than once on
// the same message. Never throws.
std::optional<Received> parseNotification(sd_bus_message *message) noexcept;

}  // namespace nvx::notify
