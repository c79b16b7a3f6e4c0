#include "notify/bus_source.h"

#include <poll.h>

namespace nvx::notify {

namespace {

struct BusSource {
  GSource base;
  BusSourceHandler *handler;
  gpointer fdTag;
  GIOCondition events;  // what the poll record currently asks for
  uint64_t deadlineMicros;
};

BusSource *busSource(GSource *source) { return reinterpret_cast<BusSource *>(source); }

GIOCondition conditionOf(int pollEvents) {
  unsigned condition = 0;
  if ((pollEvents & POLLIN) != 0) {
    condition |= G_IO_IN;
  }
  if ((pollEvents & POLLOUT) != 0) {
    condition |= G_IO_OUT;
  }
  return static_cast<GIOCondition>(condition);
}

gboolean prepareSource(GSource *source, gint *timeoutMs) {
  BusSource *self = busSource(source);
  const BusWants wants = self->handler->prepare(source);
  if (wants.dispatchNow) {
    *timeoutMs = 0;
    return TRUE;
  }
  // Touch the poll record only when the events change: modifying it on every iteration makes
  // GLib rebuild its poll set each time, which keeps a core busy.
  const GIOCondition events = conditionOf(wants.pollEvents);
  if (events != self->events) {
    g_source_modify_unix_fd(source, self->fdTag, events);
    self->events = events;
  }
  self->deadlineMicros = wants.deadlineMicros;
  if (wants.deadlineMicros == UINT64_MAX) {
    *timeoutMs = -1;
    return FALSE;
  }
  const auto now = static_cast<uint64_t>(g_get_monotonic_time());
  if (wants.deadlineMicros <= now) {
    *timeoutMs = 0;
    return TRUE;
  }
  const uint64_t waitMs = (wants.deadlineMicros - now + 999) / 1000;
  *timeoutMs = waitMs > static_cast<uint64_t>(G_MAXINT) ? G_MAXINT : static_cast<gint>(waitMs);
  return FALSE;
}

gboolean checkSource(GSource *source) {
  BusSource *self = busSource(source);
  if (g_source_query_unix_fd(source, self->fdTag) != 0) {
    return TRUE;
  }
  return self->deadlineMicros != UINT64_MAX &&
         static_cast<uint64_t>(g_get_monotonic_time()) >= self->deadlineMicros;
}

gboolean dispatchSource(GSource *source, GSourceFunc, gpointer) {
  return busSource(source)->handler->dispatch(source) ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

GSourceFuncs busSourceFuncs = {prepareSource, checkSource, dispatchSource, nullptr, nullptr, nullptr};

}  // namespace

GSource *attachBusSource(GMainContext *context, int fd, BusSourceHandler *handler) {
  GSource *source = g_source_new(&busSourceFuncs, sizeof(BusSource));
  BusSource *self = busSource(source);
  self->handler = handler;
  self->events = G_IO_IN;
  self->deadlineMicros = UINT64_MAX;
  self->fdTag = g_source_add_unix_fd(source, fd, G_IO_IN);
  g_source_set_name(source, "NorvaneMXRK7Setup notifications");
  g_source_attach(source, context);
  return source;
}

}  // namespace nvx::notify
