// What every exported function shares: the one product check, and the guard that runs its body.
#pragma once

#include <cstdint>
#include <string>

#include "NorvaneMXRK7Setup.h"
#include "usb/transport.h"

namespace nvx::api {

// The MXR-K7 is the only product; its productId is 0.
constexpr bool isProduct(int32_t productId) { return productId == 0; }

// Runs an exported function's body within one USB call scope (the transport made at the call's
// first USB need is freed when it returns), so that no C++ exception crosses the C interface: any
// exception, a failed allocation included, gives `onException` (NVX_ERROR unless said otherwise).
template <class Body>
int32_t guarded(Body &&body, int32_t onException = NVX_ERROR) noexcept {
  try {
    const usb::CallScope scope;
    return body();
  } catch (...) {
    return onException;
  }
}

// Keeps a text read from a file in `slot` (a thread_local of the calling function) and hands out
// a pointer that stays valid until the same function runs again on the same thread.
inline const char *keepText(std::string &slot, std::string text) {
  slot = std::move(text);
  return slot.c_str();
}

}  // namespace nvx::api
