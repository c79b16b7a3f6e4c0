// The observer: turns the change signals on the session bus into calls of the registered callbacks.
//
// One per process, made at the first Register and kept for the life of the process. It owns one
// private bus connection, driven by a GSource on the thread-default GLib main context of the thread
// that registered, so callbacks run on that thread while its main loop runs; the library never
// starts a thread. Each family is observed once per process, however often it is registered.
#pragma once

#include <glib.h>
#include <systemd/sd-bus.h>
#include <sys/types.h>

#include <array>
#include <mutex>
#include <vector>

#include "notify/bus_source.h"
#include "notify/connection.h"
#include "notify/payload.h"
#include "notify/wire.h"

namespace nvx::notify {

class Observer final : public BusSourceHandler {
 public:
  Observer() = default;
  ~Observer() override = default;
  Observer(const Observer &) = delete;
  Observer &operator=(const Observer &) = delete;

  // Starts observing the family's signals, unless that is already done. Connects when there is no
  // working connection in this process (the first time, after the bus went away, or in a forked
  // child), then waits at most one second for the bus to confirm the match. Without a bus it does
  // nothing and a later call tries again.
  void observe(Family family);

  BusWants prepare(GSource *source) noexcept override;
  bool dispatch(GSource *source) noexcept override;

 private:
  bool connectionUsable() const;
  void connect(GMainContext *context);
  void disconnect();
  void addMatch(Family family);

  static int onSignal(sd_bus_message *message, void *userdata, sd_bus_error *error);
  static int onMatchInstalled(sd_bus_message *message, void *userdata, sd_bus_error *error);

  // Guards everything below. Held around every use of the connection, so the sd-bus handlers
  // (which only run inside sd_bus_process) never take it; released while callbacks run.
  std::mutex mutex_;
  std::array<bool, kFamilyCount> wanted_{};  // families registered in this process
  std::array<bool, kFamilyCount> matched_{};  // families with a match on the current connection
  BusPtr bus_;
  pid_t pid_ = 0;                 // the process that made the connection
  GSource *source_ = nullptr;
  int pendingInstalls_ = 0;       // match replies not yet received on the current connection
  std::vector<Received> pending_;  // received changes waiting to be delivered
};

// The observer of this process, null until the first successful Register.
extern Observer *_NVXFunc;

// Makes the observer if needed and observes the family.
void observe(Family family);

}  // namespace nvx::notify
