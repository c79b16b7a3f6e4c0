// The advisory lock that every update of the auto-setup file holds from its read to its rename.
#pragma once

#include <chrono>

namespace nvx::store {

// How long an update waits for the lock: 3 s, or MXRK7_STORE_LOCK_TIMEOUT_MS milliseconds (for
// runs under valgrind or the sanitizers, where an update takes many times longer).
std::chrono::milliseconds lockTimeout();

// Takes the exclusive flock on the open lock file `fd`, waiting at most `timeout`; true when held.
// The lock goes with the descriptor: closing it releases the lock.
bool takeUpdateLock(int fd, std::chrono::milliseconds timeout);

}  // namespace nvx::store
