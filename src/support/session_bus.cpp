#include "support/session_bus.h"

#include <glib-unix.h>

#include "notify/bus_address.h"
#include "notify/connection.h"

namespace nvx::support {

std::optional<std::string> sessionBusAddress() { return notify::sessionBusAddress(); }

SessionBusState probeSessionBus() {
  SessionBusState state;
  state.address = sessionBusAddress();
  if (!state.address) return state;
  const uint64_t deadline = notify::monotonicMicros() + notify::kBusWaitBoundMicros;
  const notify::BusPtr bus = notify::openConnection(*state.address, "mxrk7-doctor");
  if (!bus) return state;
  // Ready once the bus has authenticated the connection and answered its Hello.
  state.answers = notify::processUntil(bus.get(), deadline, [&bus] { return sd_bus_is_ready(bus.get()) > 0; });
  return state;
}

BusWatchdog::BusWatchdog(std::function<void()> gone) : gone_(std::move(gone)) {
  const auto address = sessionBusAddress();
  if (!address) return;
  const uint64_t deadline = notify::monotonicMicros() + notify::kBusWaitBoundMicros;
  notify::BusPtr bus = notify::openConnection(*address, "mxrk7-watchdog");
  if (!bus || !notify::processUntil(bus.get(), deadline, [&bus] { return sd_bus_is_ready(bus.get()) > 0; })) return;
  const int fd = sd_bus_get_fd(bus.get());
  if (fd < 0) return;
  bus_ = bus.release();
  source_ = g_unix_fd_add(fd, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR), onReady, this);
}

BusWatchdog::~BusWatchdog() {
  if (source_) g_source_remove(source_);
  if (bus_) sd_bus_close_unref(bus_);
}

gboolean BusWatchdog::onReady(gint, GIOCondition, gpointer data) {
  auto *self = static_cast<BusWatchdog *>(data);
  // Whatever the bus sent is read and dropped; a closed connection ends the watch.
  int processed;
  while ((processed = sd_bus_process(self->bus_, nullptr)) > 0) {
  }
  if (processed < 0 || sd_bus_is_open(self->bus_) <= 0) {
    self->source_ = 0;
    self->gone_();
    return G_SOURCE_REMOVE;
  }
  return G_SOURCE_CONTINUE;
}

}  // namespace nvx::support
