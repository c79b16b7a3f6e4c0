// Whether change notifications can travel at all: the library posts and observes on the user's
// session bus and silently does nothing without one.
#pragma once

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

}  // namespace nvx::support
