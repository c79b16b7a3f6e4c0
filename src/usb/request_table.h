// The wire protocol: every vendor control request the library sends to the mixer on endpoint 0.
// Reads are bmRequestType 0xC0 / bRequest 0 with a data stage into the caller's buffer; writes are
// bmRequestType 0x40 / bRequest 3 with the 16-bit value in wValue and no data stage. Read and
// write requests share some wIndex numbers; the direction tells them apart.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace nvx::usb {

enum class Request : uint8_t {
  GetFirmwareVersionNumber,
  GetInputSelectorInfo,
  GetSeratoActiveInfo,
  GetBEATFXStatus,
  SetMixerOutputSetting,
  SetUSBOutputLevelSetting,
  SetMidiChannelSetting,
  SetMidiKeyModeSetting,
  SetFXBANKFILTERModeSetting,
  SetFXBANKBFXModeSetting,
  SetFXBANKCHFADERModeSetting,
  SetFXBANKBFXTAILSetting,
  SetCROSSFADERCUTLAGSetting,
  Set4BEETLOOPBUTTONTYPESetting,
  SetFADERSTARTSetting,
  SetPADModeSetting,
  SetCROSSFADERFADESetting,
  Count
};

enum class Direction : uint8_t { Read, Write };

struct RequestRow {
  std::string_view name;
  Direction direction;
  uint16_t wIndex;
};

inline constexpr uint8_t kReadRequestType = 0xC0;
inline constexpr uint8_t kReadRequest = 0;
inline constexpr uint8_t kWriteRequestType = 0x40;
inline constexpr uint8_t kWriteRequest = 3;

// In the order of the Request enumeration.
inline constexpr std::array<RequestRow, 17> kRequestTable = {{
    {"GetFirmwareVersionNumber", Direction::Read, 0x8001},
    {"GetInputSelectorInfo", Direction::Read, 0x8002},
    {"GetSeratoActiveInfo", Direction::Read, 0x8004},
    {"GetBEATFXStatus", Direction::Read, 0x8005},
    {"SetMixerOutputSetting", Direction::Write, 0x8002},
    {"SetUSBOutputLevelSetting", Direction::Write, 0x8003},
    {"SetMidiChannelSetting", Direction::Write, 0x8004},
    {"SetMidiKeyModeSetting", Direction::Write, 0x8005},
    {"SetFXBANKFILTERModeSetting", Direction::Write, 0x850D},
    {"SetFXBANKBFXModeSetting", Direction::Write, 0x850E},
    {"SetFXBANKCHFADERModeSetting", Direction::Write, 0x850F},
    {"SetFXBANKBFXTAILSetting", Direction::Write, 0x8510},
    {"SetCROSSFADERCUTLAGSetting", Direction::Write, 0x8511},
    {"Set4BEETLOOPBUTTONTYPESetting", Direction::Write, 0x8512},
    {"SetFADERSTARTSetting", Direction::Write, 0x8513},
    {"SetPADModeSetting", Direction::Write, 0x8514},
    {"SetCROSSFADERFADESetting", Direction::Write, 0x8515},
}};
static_assert(kRequestTable.size() == static_cast<size_t>(Request::Count));

constexpr const RequestRow &requestRow(Request request) { return kRequestTable[static_cast<size_t>(request)]; }

static_assert(requestRow(Request::SetCROSSFADERFADESetting).name == "SetCROSSFADERFADESetting",
              "the table follows the enumeration's order");
static_assert(requestRow(Request::GetInputSelectorInfo).name == "GetInputSelectorInfo");

}  // namespace nvx::usb
