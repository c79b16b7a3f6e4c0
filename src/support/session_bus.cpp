#include "support/session_bus.h"

#include "notify/bus_address.h"

namespace nvx::support {

std::optional<std::string> sessionBusAddress() { return notify::sessionBusAddress(); }

}  // namespace nvx::support
