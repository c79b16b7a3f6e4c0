// How failures of libusb and of the system calls around it become the USB layer's I/O return codes.
// Every libusb error has a code of its own, so a caller can tell a busy mixer from a denied one and
// a stalled request from a timed-out one.
#pragma once

#include "usb/io_return.h"

namespace nvx::usb {

// A libusb result: 0 or a positive count is success, each LIBUSB_ERROR_* its own non-zero code,
// an error libusb may add later kIOReturnError.
IOReturn ioReturnFromLibusb(int result);

// The errno of opening or locking a device node: EACCES/EPERM not privileged, ENOENT/ENODEV/ENXIO
// no device, EWOULDBLOCK busy; anything else kIOReturnError.
IOReturn ioReturnFromErrno(int error);

}  // namespace nvx::usb
