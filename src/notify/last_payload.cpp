#include "notify/last_payload.h"

#include <array>
#include <atomic>
#include <mutex>

#include "NorvaneMXRK7Setup.h"

namespace nvx::notify {

namespace {

std::mutex recordsMutex;
std::array<Payload, kFamilyCount> records;

std::atomic_ref<void *> globalOf(Family family) {
  return std::atomic_ref<void *>(family == Family::InputAudio ? inputAudioInfo : boostLevelInfo);
}

}  // namespace

void storeLastPayload(Family family, const Payload &payload) noexcept {
  Payload &record = records[static_cast<size_t>(familyIndex(family))];
  const std::lock_guard lock(recordsMutex);
  record = payload;
  globalOf(family).store(&record, std::memory_order_release);
}

void dropLastPayload(Family family) noexcept { globalOf(family).store(nullptr, std::memory_order_release); }

std::optional<Payload> lastPayload(Family family) noexcept {
  const std::lock_guard lock(recordsMutex);
  const void *current = globalOf(family).load(std::memory_order_acquire);
  if (current == nullptr) {
    return std::nullopt;
  }
  return *static_cast<const Payload *>(current);
}

}  // namespace nvx::notify
