// Private connections to the session bus, and waiting on one with a bound of our own: sd-bus's own
// deadlines (90 s for a peer that accepts but never authenticates) are far too long for a library
// call, and sd_bus_flush() has no bound at all.
#pragma once

#include <systemd/sd-bus.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>

namespace nvx::notify {

// Closes and frees a connection. Closing is a no-op in a forked child, so the parent's connection
// is left alone there; the child only drops its copy of the socket.
struct BusCloser {
  void operator()(sd_bus *bus) const noexcept { sd_bus_close_unref(bus); }
};
using BusPtr = std::unique_ptr<sd_bus, BusCloser>;

// A started private connection to the session bus as a bus client (it says Hello), or null when
// there is no session bus address or it cannot be connected. Does not wait for the peer: the
// authentication and Hello complete in later processing.
BusPtr openSessionConnection(const char *description);
BusPtr openConnection(const std::string &address, const char *description);

// CLOCK_MONOTONIC in microseconds, the clock of sd-bus's time-outs and GLib's monotonic time.
uint64_t monotonicMicros();

inline constexpr uint64_t kBusWaitBoundMicros = 1'000'000;

// Processes the connection and waits on it until done() holds or the monotonic deadline passes.
// Returns done() at the end; false as well when the connection fails.
template <typename Done>
bool processUntil(sd_bus *bus, uint64_t deadlineMicros, Done done) {
  for (;;) {
    if (done()) {
      return true;
    }
    const int processed = sd_bus_process(bus, nullptr);
    if (processed < 0) {
      return false;
    }
    if (processed > 0) {
      continue;
    }
    const uint64_t now = monotonicMicros();
    if (now >= deadlineMicros) {
      return done();
    }
    const int waited = sd_bus_wait(bus, deadlineMicros - now);
    if (waited < 0 && waited != -EINTR) {
      return false;
    }
  }
}

}  // namespace nvx::notify
