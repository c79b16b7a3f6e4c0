// Where the user's session bus is. The address is resolved here rather than by sd-bus so that the
// rules are ours: the environment first, then the conventional socket in the runtime folder, and
// never an autolaunched bus.
#pragma once

#include <optional>
#include <string>

namespace nvx::notify {

// From the two environment values (either may be null): DBUS_SESSION_BUS_ADDRESS as given when it
// is non-empty; else "unix:path=<runtime dir>/bus" when the runtime folder is an absolute path and
// that file is a socket; else nothing.
std::optional<std::string> sessionBusAddressFrom(const char *dbusSessionBusAddress, const char *xdgRuntimeDir);

// The same, reading the process environment (ignored in setuid/setgid programs).
std::optional<std::string> sessionBusAddress();

// Escapes a value for use inside a D-Bus address ("unix:path=<escaped>").
std::string escapeAddressValue(const std::string &value);

}  // namespace nvx::notify
