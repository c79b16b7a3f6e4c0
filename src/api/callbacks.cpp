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

namespace {

// One family's slots: the callback and its context, index = productId.
template <class Proc>
struct Slots {
  Family family;
  Proc (&callback)[1];
  void *(&context)[1];
};

// A missing or silent bus is not an error: the callback is stored and simply never called. Only a
// failure to make the observer (out of memory) gives NVX_ERROR, with the slots left as they were.
// A null callback acts as Unregister.
template <class Proc>
int32_t registerCallback(const Slots<Proc> &slots, int32_t productId, Proc callback, void *context) {
  return guarded([&] {
    if (!isProduct(productId)) return NVX_ERROR;
    if (callback == nullptr) {
      slots.callback[0] = nullptr;
      return NVX_OK;
    }
    notify::dropLastPayload(slots.family);
    notify::observe(slots.family);
    slots.callback[0] = callback;
    slots.context[0] = context;
    return NVX_OK;
  });
}

template <class Proc>
int32_t unregisterCallback(const Slots<Proc> &slots, int32_t productId) {
  if (!isProduct(productId)) return NVX_ERROR;
  slots.callback[0] = nullptr;
  return NVX_OK;
}

const Slots<NVXInputAudioChangedProc> kInputAudio{Family::InputAudio, InputAudioChangedCallbackFunc,
                                                   InputAudioChangedContext};
const Slots<NVXIndexChangedProc> kBoostLevel{Family::BoostLevel, BoostLevelChangedCallbackFunc,
                                              BoostLevelChangedContext};

}  // namespace

extern "C" {

int32_t NVX_RegisterInputAudioChangedCallback(int32_t productId, NVXInputAudioChangedProc callback, void *context) {
  return registerCallback(kInputAudio, productId, callback, context);
}

int32_t NVX_UnregisterInputAudioChangedCallback(int32_t productId) { return unregisterCallback(kInputAudio, productId); }

int32_t NVX_RegisterBoostLevelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context) {
  return registerCallback(kBoostLevel, productId, callback, context);
}

int32_t NVX_UnregisterBoostLevelChangedCallback(int32_t productId) { return unregisterCallback(kBoostLevel, productId); }

}  // extern "C"
