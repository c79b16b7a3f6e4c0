// Change notifications between processes: the routing and boost level setters post, and every
// process that registered a callback (the posting one included) has it called on the registering
// thread's GLib main context.
#pragma once

#include <cstdint>

#include "NorvaneMXRK7Setup.h"

namespace nvx::notify {

// The notification names, formed with the model name.
inline constexpr const char *kInputAudioChange = "MXR-K7 InputAudio Change";
inline constexpr const char *kBoostLevelChange = "MXR-K7 BoostLevel Change";

// Posting: keeps the payload as the family's payload global (inputAudioInfo / boostLevelInfo) and
// broadcasts it on the session bus. Safe on any thread; returns within a bounded time (about a
// second at most) and silently does nothing without a reachable bus. Never throws.
void postInputAudioChange(int32_t channel, int32_t index) noexcept;
void postBoostLevelChange(int32_t index) noexcept;

}  // namespace nvx::notify
