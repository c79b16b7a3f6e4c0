// Registering the routing and boost level change callbacks. Each family has one callback slot and
// one context slot (index = productId, so one of each). Register makes the process's observer once
// and observes the family's signal; Unregister only empties the callback slot, the context and the
// observation stay.
#include "NorvaneMXRK7Setup.h"
#include "api/guard.h"
#include "notify/last_payload.h"
#include "notify/observer.h"

using namespace nvx;
using api::guarded;
using api::isProduct;
using notify::Family;

extern "C" {

// A missing or silent bus is not an error: the callback is stored and simply never called. Only a
// failure to make the observer (out of memory) gives NVX_ERROR, with the slots left as they were.
int32_t NVX_RegisterInputAudioChangedCallback(int32_t productId, NVXInputAudioChangedProc callback, void *context) {
  return guarded([&] {
    if (!isProduct(productId)) return NVX_ERROR;
    if (callback == nullptr) return NVX_UnregisterInputAudioChangedCallback(productId);
    notify::dropLastPayload(Family::InputAudio);
    notify::observe(Family::InputAudio);
    InputAudioChangedCallbackFunc[0] = callback;
    InputAudioChangedContext[0] = context;
    return NVX_OK;
  });
}

int32_t NVX_UnregisterInputAudioChangedCallback(int32_t productId) {
  if (!isProduct(productId)) return NVX_ERROR;
  InputAudioChangedCallbackFunc[0] = nullptr;
  return NVX_OK;
}

int32_t NVX_RegisterBoostLevelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context) {
  return guarded([&] {
    if (!isProduct(productId)) return NVX_ERROR;
    if (callback == nullptr) return NVX_UnregisterBoostLevelChangedCallback(productId);
    notify::dropLastPayload(Family::BoostLevel);
    notify::observe(Family::BoostLevel);
    BoostLevelChangedCallbackFunc[0] = callback;
    BoostLevelChangedContext[0] = context;
    return NVX_OK;
  });
}

int32_t NVX_UnregisterBoostLevelChangedCallback(int32_t productId) {
  if (!isProduct(productId)) return NVX_ERROR;
  BoostLevelChangedCallbackFunc[0] = nullptr;
  return NVX_OK;
}

}  // extern "C"
