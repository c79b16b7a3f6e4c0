#include "usb/transport.h"

#include <cstdlib>

namespace nvx::usb {

namespace {

// One transport per exported call and thread: made at the first USB need of the call, dropped when
// the outermost CallScope ends (devices still referenced keep it alive until they are released).
thread_local int scopeDepth = 0;
thread_local std::shared_ptr<Transport> callTransport;

std::shared_ptr<Transport> makeTransport() {
  const char *config = std::getenv("MXRK7_VIRTUAL_MIXERS");
  if (config && *config) return makeVirtualTransport(config);
  return makeLibusbTransport();
}

}  // namespace

CallScope::CallScope() { ++scopeDepth; }

CallScope::~CallScope() {
  if (--scopeDepth == 0) callTransport.reset();
}

std::shared_ptr<Transport> acquireTransport() {
  if (scopeDepth == 0) return makeTransport();
  if (!callTransport) callTransport = makeTransport();
  return callTransport;
}

}  // namespace nvx::usb
