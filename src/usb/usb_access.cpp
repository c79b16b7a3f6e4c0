#include "usb/usb_access.h"

#include "usb/mixer_identity.h"

namespace nvx::usb {

namespace {

bool isMixer(const DeviceEntry &entry, const MixerId &id) {
  return entry.vendor == id.vendor && entry.product == id.product;
}

}  // namespace

uint32_t CheckUSBAudio(int32_t productId) {
  if (productId != 0) return 0;
  const auto transport = acquireTransport();
  if (!transport) return 0;
  const MixerId id = mixerId();
  uint32_t count = 0;
  for (const auto &entry : transport->enumerate())
    if (entry.queryResult == kIOReturnSuccess && isMixer(entry, id)) ++count;
  return count;
}

IOReturn openUSB(USBDeviceHandle *handle, uint32_t deviceNumber) {
  if (handle->openGuard != 0) return kIOReturnError;
  const auto transport = acquireTransport();
  if (!transport) return kIOReturnError;

  // The walk visits every device even after the wanted one was kept; the result is the step code
  // of the last device visited. A device whose identity cannot be read after the mixer was found
  // therefore turns the result into a failure although the handle holds the mixer.
  const MixerId id = mixerId();
  IOReturn step = kIOReturnSuccess;
  for (const auto &entry : transport->enumerate()) {
    if (entry.queryResult != kIOReturnSuccess) {
      step = entry.queryResult;
      continue;
    }
    step = kIOReturnSuccess;
    if (!isMixer(entry, id)) continue;
    if (deviceNumber == 0) {
      if (handle->deviceRef) return kIOReturnError;
      handle->deviceRef = transport->reference(entry);
      handle->bus = entry.bus;
      handle->port = entry.portPath;
    }
    --deviceNumber;  // wraps below 0, so no later mixer is ever taken
  }
  return handle->deviceRef ? step : kIOReturnError;
}

IOReturn open_pipes(USBDeviceHandle *handle, uint32_t deviceNumber) {
  if (!handle) return kIOReturnError;
  handle->deviceRef.reset();
  const IOReturn found = openUSB(handle, deviceNumber);
  if (found != kIOReturnSuccess) return found;
  if (!handle->deviceRef) return kIOReturnSuccess;
  return handle->deviceRef->open();
}

void closeUSB(USBDeviceHandle *handle) {
  if (!handle || !handle->deviceRef) return;
  handle->deviceRef->close();
  handle->deviceRef.reset();
}

IOReturn GetLocationID(Device *deviceRef, uint32_t *locationId) {
  if (!deviceRef || !locationId) return kIOReturnBadArgument;
  return deviceRef->locationId(locationId);
}

}  // namespace nvx::usb
