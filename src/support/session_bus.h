// Whether change notifications can travel at all: the library posts and observes on the user's
// session bus and silently does nothing without one.
#pragma once

#include <optional>
#include <string>

namespace nvx::support {

// The session bus address the library would use (DBUS_SESSION_BUS_ADDRESS, else the socket
// $XDG_RUNTIME_DIR/bus), or nullopt when there is none.
std::optional<std::string> sessionBusAddress();

}  // namespace nvx::support
