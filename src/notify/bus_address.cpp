#include "notify/bus_address.h"

#include <sys/stat.h>

#include <cstdlib>

namespace nvx::notify {

std::string escapeAddressValue(const std::string &value) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out;
  out.reserve(value.size());
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
                       byte == '-' || byte == '_' || byte == '/' || byte == '.';
    if (plain) {
      out += c;
    } else {
      out += '%';
      out += kHex[byte >> 4];
      out += kHex[byte & 0x0f];
    }
  }
  return out;
}

std::optional<std::string> sessionBusAddressFrom(const char *dbusSessionBusAddress, const char *xdgRuntimeDir) {
  if (dbusSessionBusAddress != nullptr && *dbusSessionBusAddress != '\0') {
    // Used as given. sd-bus knows no "autolaunch:" transport and skips such entries, so an address
    // from the environment can never start a bus either.
    return std::string(dbusSessionBusAddress);
  }
  if (xdgRuntimeDir == nullptr || xdgRuntimeDir[0] != '/') {
    return std::nullopt;
  }
  const std::string socketPath = std::string(xdgRuntimeDir) + "/bus";
  struct stat st {};
  if (stat(socketPath.c_str(), &st) != 0 || !S_ISSOCK(st.st_mode)) {
    return std::nullopt;
  }
  return "unix:path=" + escapeAddressValue(socketPath);
}

std::optional<std::string> sessionBusAddress() {
  return sessionBusAddressFrom(secure_getenv("DBUS_SESSION_BUS_ADDRESS"), secure_getenv("XDG_RUNTIME_DIR"));
}

}  // namespace nvx::notify
