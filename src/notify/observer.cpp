#include "notify/observer.h"

#include <unistd.h>

#include <memory>
#include <string>

#include "NorvaneMXRK7Setup.h"

namespace nvx::notify {

Observer *_NVXFunc = nullptr;

namespace {

// Calls the callbacks stored now (an Unregister after the signal arrived silences it). The slots
// are indexed by ProductID, which is 0 for every change that gets this far.
void deliver(const std::vector<Received> &batch) {
  for (const Received &received : batch) {
    const Payload &payload = received.payload;
    if (received.family == Family::InputAudio) {
      const NVXInputAudioChangedProc callback = InputAudioChangedCallbackFunc[0];
      if (callback != nullptr) {
        callback(payload.channel, payload.index, InputAudioChangedContext[0]);
      }
    } else {
      const NVXIndexChangedProc callback = BoostLevelChangedCallbackFunc[0];
      if (callback != nullptr) {
        callback(payload.index, BoostLevelChangedContext[0]);
      }
    }
  }
}

}  // namespace

bool Observer::connectionUsable() const { return bus_ && pid_ == getpid() && sd_bus_is_open(bus_.get()) > 0; }

void Observer::connect(GMainContext *context) {
  BusPtr bus = openSessionConnection("NorvaneMXRK7Setup-observer");
  if (!bus) {
    return;
  }
  const int fd = sd_bus_get_fd(bus.get());
  if (fd < 0) {
    return;
  }
  bus_ = std::move(bus);
  pid_ = getpid();
  // The source first: should adding a match fail, the connection is still driven, and the next
  // Register adds the missing match.
  source_ = attachBusSource(context, fd, this);
  for (int i = 0; i < kFamilyCount; ++i) {
    if (wanted_[static_cast<size_t>(i)]) {
      addMatch(static_cast<Family>(i));
    }
  }
}

void Observer::disconnect() {
  if (source_ != nullptr) {
    g_source_destroy(source_);
    g_source_unref(source_);
    source_ = nullptr;
  }
  // Frees the match slots with the connection, so no handler of the old connection runs again.
  bus_.reset();
  matched_ = {};
  pendingInstalls_ = 0;
}

void Observer::addMatch(Family family) {
  // A floating slot: the match lives as long as the connection.
  const std::string rule = matchRule(family);
  if (sd_bus_add_match_async(bus_.get(), nullptr, rule.c_str(), &Observer::onSignal, &Observer::onMatchInstalled,
                             this) >= 0) {
    matched_[static_cast<size_t>(familyIndex(family))] = true;
    ++pendingInstalls_;
  }
}

void Observer::observe(Family family) {
  std::unique_lock lock(mutex_);
  const auto slot = static_cast<size_t>(familyIndex(family));
  wanted_[slot] = true;
  bool added = false;
  if (!connectionUsable()) {
    // First use, a connection that went away, or a forked child: (re)connect on this thread's
    // main context. connect() adds a match for every family wanted so far.
    disconnect();
    pending_.clear();
    const std::unique_ptr<GMainContext, decltype(&g_main_context_unref)> context(g_main_context_ref_thread_default(),
                                                                                &g_main_context_unref);
    connect(context.get());
    added = bus_ != nullptr;
  } else if (!matched_[slot]) {
    addMatch(family);
    added = true;
  }
  if (!added || !bus_) {
    return;
  }
  // A match is live only once the bus has answered: one round trip, bounded to a second, so a
  // change posted right after Register is seen. Signals read meanwhile wait in pending_.
  processUntil(bus_.get(), monotonicMicros() + kBusWaitBoundMicros, [this] { return pendingInstalls_ == 0; });
  if (sd_bus_is_open(bus_.get()) <= 0) {
    disconnect();
    return;
  }
  if (!pending_.empty() && source_ != nullptr) {
    g_main_context_wakeup(g_source_get_context(source_));
  }
}

BusWants Observer::prepare(GSource *source) noexcept {
  const std::lock_guard lock(mutex_);
  BusWants wants;
  if (source != source_ || pid_ != getpid() || !pending_.empty()) {
    wants.dispatchNow = true;
    return wants;
  }
  const int events = sd_bus_get_events(bus_.get());
  uint64_t deadline = UINT64_MAX;
  if (events < 0 || sd_bus_get_timeout(bus_.get(), &deadline) < 0) {
    wants.dispatchNow = true;
    return wants;
  }
  wants.pollEvents = events;
  wants.deadlineMicros = deadline;
  return wants;
}

bool Observer::dispatch(GSource *source) noexcept {
  std::unique_lock lock(mutex_);
  if (source != source_) {
    return false;  // left over from an earlier connection
  }
  if (pid_ != getpid()) {
    // A forked child still polls the parent's socket: leave that connection to the parent and
    // make one of our own, on the same main context. The matches are re-added without waiting.
    GMainContext *context = g_main_context_ref(g_source_get_context(source));
    disconnect();
    pending_.clear();
    try {
      connect(context);
    } catch (...) {
      disconnect();  // out of memory: the next Register tries again
    }
    g_main_context_unref(context);
    return false;
  }
  bool keep = true;
  for (;;) {
    const int processed = sd_bus_process(bus_.get(), nullptr);
    if (processed < 0) {
      keep = false;  // the bus went away; the next Register connects again
      break;
    }
    if (processed == 0) {
      break;
    }
  }
  std::vector<Received> batch;
  batch.swap(pending_);
  if (!keep) {
    disconnect();
  }
  lock.unlock();
  deliver(batch);
  return keep;
}

int Observer::onSignal(sd_bus_message *message, void *userdata, sd_bus_error *) {
  auto *self = static_cast<Observer *>(userdata);
  const auto received = parseNotification(message);
  // The callback tables have one slot, for ProductID 0: any other product is not ours.
  if (!received || received->payload.productId != 0) {
    return 0;
  }
  try {
    self->pending_.push_back(*received);
  } catch (...) {
    // Out of memory: this change is not delivered.
  }
  return 0;
}

int Observer::onMatchInstalled(sd_bus_message *, void *userdata, sd_bus_error *) {
  // Success or an error reply alike: the bus has answered, waiting longer gains nothing.
  auto *self = static_cast<Observer *>(userdata);
  if (self->pendingInstalls_ > 0) {
    --self->pendingInstalls_;
  }
  return 0;
}

void observe(Family family) {
  static std::once_flag created;
  std::call_once(created, [] { _NVXFunc = new Observer(); });
  _NVXFunc->observe(family);
}

}  // namespace nvx::notify
