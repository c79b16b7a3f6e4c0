// The virtual mixers' JSON config (the file MXRK7_VIRTUAL_MIXERS names). Every field is optional;
// a field of the wrong type or out of range makes the whole config invalid, which the transport
// treats as a bus with no mixers.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "usb/io_return.h"

namespace nvx::usb {

struct VirtualMixerConfig {
  std::vector<uint8_t> firmware{0, 1};            // answer of the firmware read (wIndex 0x8001)
  std::array<uint8_t, 4> inputSelectors{4, 4, 4, 4};  // second answer byte for wValue 1..4 of 0x8002
  uint8_t serato = 0;                              // first answer byte of 0x8004
  std::vector<uint8_t> beatfx{0, 0};               // answer of 0x8005
  IOReturn openResult = kIOReturnSuccess;          // "open": "ok", "busy" or "denied"
  std::set<uint16_t> fail;                         // wIndex values whose requests fail
  std::map<uint16_t, uint32_t> shortReads;         // wIndex -> most bytes a read moves
};

struct VirtualConfig {
  std::string logPath;  // empty: no log
  std::vector<VirtualMixerConfig> mixers;
};

// Parses the config text; relative log paths are taken relative to `baseDir`.
std::optional<VirtualConfig> parseVirtualConfig(std::string_view text, const std::string &baseDir);

// Reads and parses the file; nullopt when it is missing or invalid.
std::optional<VirtualConfig> loadVirtualConfig(const std::string &path);

}  // namespace nvx::usb
