// One wrapper per vendor request of the request table. Every wrapper takes the open device of a
// USBDeviceHandle and returns the transfer's I/O code (which no caller looks at).
#pragma once

#include <cstdint>

#include "usb/request_table.h"
#include "usb/transport.h"

namespace nvx::usb {

inline constexpr unsigned kRequestTimeoutMs = 1000;

// The general form: `length` holds wLength on entry and the bytes moved (low 16 bits) on return.
IOReturn DeviceRequest(Device *deviceRef, uint8_t bmRequestType, uint8_t bRequest, uint16_t wValue, uint16_t wIndex,
                       void *data, uint16_t *length);

// A write request of the table: the value in wValue, wLength 0 and no data stage.
IOReturn sendWrite(Device *deviceRef, Request request, uint16_t value);
// A read request of the table with wValue 0 into `buffer`, `length` bytes at most.
IOReturn sendRead(Device *deviceRef, Request request, uint8_t *buffer, uint16_t length);

template <Request R>
IOReturn writeRequest(Device *deviceRef, uint16_t value) {
  static_assert(requestRow(R).direction == Direction::Write);
  return sendWrite(deviceRef, R, value);
}

template <Request R>
IOReturn readRequest(Device *deviceRef, uint8_t *buffer, uint16_t length) {
  static_assert(requestRow(R).direction == Direction::Read);
  return sendRead(deviceRef, R, buffer, length);
}

using WriteWrapper = IOReturn (*)(Device *deviceRef, uint16_t value);

// The wrappers, under the protocol's own names.
inline constexpr auto GetFirmwareVersionNumber = readRequest<Request::GetFirmwareVersionNumber>;
inline constexpr auto GetSeratoActiveInfo = readRequest<Request::GetSeratoActiveInfo>;
inline constexpr auto GetBEATFXStatus = readRequest<Request::GetBEATFXStatus>;
inline constexpr auto SetMixerOutputSetting = writeRequest<Request::SetMixerOutputSetting>;
inline constexpr auto SetUSBOutputLevelSetting = writeRequest<Request::SetUSBOutputLevelSetting>;
inline constexpr auto SetMidiChannelSetting = writeRequest<Request::SetMidiChannelSetting>;
inline constexpr auto SetMidiKeyModeSetting = writeRequest<Request::SetMidiKeyModeSetting>;
inline constexpr auto SetFXBANKFILTERModeSetting = writeRequest<Request::SetFXBANKFILTERModeSetting>;
inline constexpr auto SetFXBANKBFXModeSetting = writeRequest<Request::SetFXBANKBFXModeSetting>;
inline constexpr auto SetFXBANKCHFADERModeSetting = writeRequest<Request::SetFXBANKCHFADERModeSetting>;
inline constexpr auto SetFXBANKBFXTAILSetting = writeRequest<Request::SetFXBANKBFXTAILSetting>;
inline constexpr auto SetCROSSFADERCUTLAGSetting = writeRequest<Request::SetCROSSFADERCUTLAGSetting>;
inline constexpr auto Set4BEETLOOPBUTTONTYPESetting = writeRequest<Request::Set4BEETLOOPBUTTONTYPESetting>;
inline constexpr auto SetFADERSTARTSetting = writeRequest<Request::SetFADERSTARTSetting>;
inline constexpr auto SetPADModeSetting = writeRequest<Request::SetPADModeSetting>;
inline constexpr auto SetCROSSFADERFADESetting = writeRequest<Request::SetCROSSFADERFADESetting>;

// Reads the four input selectors (wValue 1..4) into buffer[1..4]; buffer[0] and buffer[5] are never
// written. Each request asks for as many bytes as the one before it moved (the first for 2), and
// only the second byte of its answer is kept; a short or failed answer leaves the internal buffer's
// earlier byte in place. `size` is not looked at. Returns the code of the fourth request.
IOReturn GetInputSelectorInfo(Device *deviceRef, uint8_t *buffer, uint32_t size);

}  // namespace nvx::usb
