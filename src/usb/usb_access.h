// Finding, counting, opening and closing the mixers. The names and contracts are the library's
// long-standing internal ones; the transport underneath is libusb or the virtual mixers.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "usb/transport.h"

namespace nvx::usb {

// The caller-owned record that open_pipes fills and closeUSB empties.
struct USBDeviceHandle {
  std::unique_ptr<Device> deviceRef;  // the found (and possibly opened) device; null when nothing is held
  uint32_t openGuard = 0;             // must be 0 for an open to be attempted; nothing sets it otherwise
  uint8_t bus = 0;                    // where the found device sits, for reports
  std::string port;
};

// Number of connected mixers; 0 for a productId other than 0 and on any failure.
uint32_t CheckUSBAudio(int32_t productId);

// Walks every USB device and keeps a reference to mixer number `deviceNumber` (0-based, in bus
// order) in the handle, without opening it. Returns the code of the last device visited when a
// mixer was kept, else kIOReturnError.
IOReturn openUSB(USBDeviceHandle *handle, uint32_t deviceNumber);

// Clears the handle, finds mixer `deviceNumber` with openUSB and opens it for requests.
IOReturn open_pipes(USBDeviceHandle *handle, uint32_t deviceNumber);

// Closes and releases the handle's device; does nothing for an empty handle.
void closeUSB(USBDeviceHandle *handle);

// Forwards the device's location id; nothing in the library calls it.
IOReturn GetLocationID(Device *deviceRef, uint32_t *locationId);

}  // namespace nvx::usb
