// Whether change notifications can travel at all: the library posts and observes on the user's
// session bus and silently does nothing without one.
#pragma once

#include <glib.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <optional>
#include <string>

namespace nvx::support {

// The session bus address the library would use (DBUS_SESSION_BUS_ADDRESS, else the socket
// $XDG_RUNTIME_DIR/bus), or nullopt when there is none.
std::optional<std::string> sessionBusAddress();

struct SessionBusState {
  std::optional<std::string> address;  // as sessionBusAddress()
  bool answers = false;                // a connection was made and greeted within the bound
};

// Connects to the session bus the way the library does and waits at most one second (the
// library's own bound) for the bus to accept the connection. Never starts a bus.
SessionBusState probeSessionBus();

// A connection of its own to the session bus that tells when the bus goes away (its daemon ended),
// for a program that waits for change notifications and would otherwise go deaf without noticing.
// The library's own observer connects again at the next Register; a program that only listens has
// no next Register.
class BusWatchdog {
 public:
  // Calls `gone` on the thread-default GLib main context when the bus goes away. Without a bus
  // that answers within the library's bound, `connected()` is false and nothing is watched.
  explicit BusWatchdog(std::function<void()> gone);
  ~BusWatchdog();
  BusWatchdog(const BusWatchdog &) = delete;
  BusWatchdog &operator=(const BusWatchdog &) = delete;

  bool connected() const { return source_ != 0; }

 private:
  static gboolean onReady(gint fd, GIOCondition condition, gpointer self);

  std::function<void()> gone_;
  sd_bus *bus_ = nullptr;
  guint source_ = 0;
};

}  // namespace nvx::support
