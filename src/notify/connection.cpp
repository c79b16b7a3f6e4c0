#include "notify/connection.h"

#include <ctime>

#include "notify/bus_address.h"

namespace nvx::notify {

uint64_t monotonicMicros() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<uint64_t>(ts.tv_sec) * 1'000'000U + static_cast<uint64_t>(ts.tv_nsec) / 1'000U;
}

BusPtr openConnection(const std::string &address, const char *description) {
  sd_bus *raw = nullptr;
  if (sd_bus_new(&raw) < 0) {
    return nullptr;
  }
  BusPtr bus(raw);
  if (sd_bus_set_address(raw, address.c_str()) < 0 || sd_bus_set_bus_client(raw, 1) < 0) {
    return nullptr;
  }
  // Nothing we receive carries file descriptors; refusing them keeps a peer from handing us any.
  (void)sd_bus_negotiate_fds(raw, 0);
  (void)sd_bus_set_description(raw, description);
  if (sd_bus_start(raw) < 0) {
    return nullptr;
  }
  return bus;
}

BusPtr openSessionConnection(const char *description) {
  const auto address = sessionBusAddress();
  if (!address) {
    return nullptr;
  }
  return openConnection(*address, description);
}

}  // namespace nvx::notify
