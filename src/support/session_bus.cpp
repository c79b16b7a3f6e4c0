#include "support/session_bus.h"

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

}  // namespace nvx::support
