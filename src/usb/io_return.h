// I/O return codes of the USB layer. 0 is success; kIOReturnError is the library's own failure;
// every failure of the underlying USB stack maps to its own distinct code, so a caller (and the
// setup tool) can tell a busy mixer from a denied one, a stall from a time-out.
#pragma once

#include <cstdint>

namespace nvx::usb {

using IOReturn = int32_t;

inline constexpr IOReturn kIOReturnSuccess = 0;
inline constexpr IOReturn kIOReturnError = static_cast<IOReturn>(0xE00002BCu);
inline constexpr IOReturn kIOReturnNoMemory = static_cast<IOReturn>(0xE00002BDu);
inline constexpr IOReturn kIOReturnNoDevice = static_cast<IOReturn>(0xE00002C0u);
inline constexpr IOReturn kIOReturnNotPrivileged = static_cast<IOReturn>(0xE00002C1u);
inline constexpr IOReturn kIOReturnBadArgument = static_cast<IOReturn>(0xE00002C2u);
inline constexpr IOReturn kIOReturnExclusiveAccess = static_cast<IOReturn>(0xE00002C5u);
inline constexpr IOReturn kIOReturnUnsupported = static_cast<IOReturn>(0xE00002C7u);
inline constexpr IOReturn kIOReturnIOError = static_cast<IOReturn>(0xE00002CAu);
inline constexpr IOReturn kIOReturnTimeout = static_cast<IOReturn>(0xE00002D6u);
inline constexpr IOReturn kIOReturnOverrun = static_cast<IOReturn>(0xE00002E8u);
inline constexpr IOReturn kIOReturnAborted = static_cast<IOReturn>(0xE00002EBu);
inline constexpr IOReturn kIOReturnNotResponding = static_cast<IOReturn>(0xE00002EDu);
inline constexpr IOReturn kIOReturnNotFound = static_cast<IOReturn>(0xE00002F0u);
inline constexpr IOReturn kIOUSBPipeStalled = static_cast<IOReturn>(0xE000404Fu);

// A short English description of a code, for diagnostics ("busy", "permission denied", ...).
const char *describeIOReturn(IOReturn code);

}  // namespace nvx::usb
