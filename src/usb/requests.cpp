#include "usb/requests.h"

namespace nvx::usb {

IOReturn DeviceRequest(Device *deviceRef, uint8_t bmRequestType, uint8_t bRequest, uint16_t wValue, uint16_t wIndex,
                       void *data, uint16_t *length) {
  if (!deviceRef || !length) return kIOReturnBadArgument;
  const SetupPacket setup{bmRequestType, bRequest, wValue, wIndex, *length};
  uint32_t moved = 0;
  const IOReturn result = deviceRef->control(setup, static_cast<uint8_t *>(data), &moved);
  *length = static_cast<uint16_t>(moved & 0xFFFF);
  return result;
}

IOReturn sendWrite(Device *deviceRef, Request request, uint16_t value) {
  // A data pointer is passed as the protocol always did; with wLength 0 nothing is transferred.
  uint16_t unused = 0;
  uint16_t length = 0;
  return DeviceRequest(deviceRef, kWriteRequestType, kWriteRequest, value, requestRow(request).wIndex, &unused, &length);
}

IOReturn sendRead(Device *deviceRef, Request request, uint8_t *buffer, uint16_t length) {
  return DeviceRequest(deviceRef, kReadRequestType, kReadRequest, 0, requestRow(request).wIndex, buffer, &length);
}

IOReturn GetInputSelectorInfo(Device *deviceRef, uint8_t *buffer, uint32_t /*size*/) {
  uint8_t answer[2] = {0, 0};  // cleared once, never between the four requests
  uint16_t length = sizeof answer;
  IOReturn result = kIOReturnSuccess;
  for (uint16_t selector = 1; selector <= 4; ++selector) {
    result = DeviceRequest(deviceRef, kReadRequestType, kReadRequest, selector,
                           requestRow(Request::GetInputSelectorInfo).wIndex, answer, &length);
    buffer[selector] = answer[1];
  }
  return result;
}

}  // namespace nvx::usb
