// The payload globals (inputAudioInfo, boostLevelInfo): each points at a record of the last payload
// this process posted for its family, or is NULL (before the first post, and again after a Register
// of that family). The records are static, so a reference a client keeps never dangles; posts may
// come from any thread, hence the lock around the records and the atomic pointer stores.
#pragma once

#include <optional>

#include "notify/payload.h"
#include "notify/wire.h"

namespace nvx::notify {

// Records the payload and points the family's global at it.
void storeLastPayload(Family family, const Payload &payload) noexcept;

// Sets the family's global back to NULL (the record stays, unreferenced).
void dropLastPayload(Family family) noexcept;

// The payload the family's global refers to, if it refers to one.
std::optional<Payload> lastPayload(Family family) noexcept;

}  // namespace nvx::notify
