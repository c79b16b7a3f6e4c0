#include "usb/io_return.h"

#include <array>
#include <utility>

namespace nvx::usb {

namespace {

constexpr std::array<std::pair<IOReturn, const char *>, 15> kDescriptions = {{
    {kIOReturnSuccess, "success"},
    {kIOReturnError, "general failure"},
    {kIOReturnNoMemory, "out of memory"},
    {kIOReturnNoDevice, "device gone"},
    {kIOReturnNotPrivileged, "permission denied"},
    {kIOReturnBadArgument, "invalid argument"},
    {kIOReturnExclusiveAccess, "busy: held by another program"},
    {kIOReturnUnsupported, "not supported"},
    {kIOReturnIOError, "I/O error"},
    {kIOReturnTimeout, "timed out"},
    {kIOReturnOverrun, "overrun"},
    {kIOReturnAborted, "interrupted"},
    {kIOReturnNotResponding, "not responding"},
    {kIOReturnNotFound, "not found"},
    {kIOUSBPipeStalled, "request stalled"},
}};

}  // namespace

const char *describeIOReturn(IOReturn code) {
  for (const auto &[known, text] : kDescriptions)
    if (known == code) return text;
  return "unknown error";
}

}  // namespace nvx::usb
