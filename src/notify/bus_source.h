// A GSource that drives one sd-bus connection from a GLib main context: it polls the connection's
// socket for the events sd-bus asks for and wakes up at sd-bus's own time-out.
#pragma once

#include <glib.h>

#include <cstdint>

namespace nvx::notify {

// What the connection wants before the next poll.
struct BusWants {
  bool dispatchNow = false;         // work is waiting: dispatch without polling
  int pollEvents = 0;               // POLLIN / POLLOUT as sd_bus_get_events() gives them
  uint64_t deadlineMicros = UINT64_MAX;  // CLOCK_MONOTONIC, as sd_bus_get_timeout() gives it
};

class BusSourceHandler {
 public:
  virtual ~BusSourceHandler() = default;
  // Both are called on the context's thread with the GSource they concern, from GLib's C code:
  // they must not throw.
  virtual BusWants prepare(GSource *source) noexcept = 0;
  // Returns false to remove the source.
  virtual bool dispatch(GSource *source) noexcept = 0;

 protected:
  BusSourceHandler() = default;
  BusSourceHandler(const BusSourceHandler &) = default;
  BusSourceHandler &operator=(const BusSourceHandler &) = default;
};

// Creates the source for `fd` and attaches it to `context`. The handler must outlive the source.
// The caller owns the returned reference (g_source_destroy + g_source_unref to end it).
GSource *attachBusSource(GMainContext *context, int fd, BusSourceHandler *handler);

}  // namespace nvx::notify
