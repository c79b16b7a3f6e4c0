// Fuzzes the virtual mixers' config parser with arbitrary text. Besides the sanitizers' own findings
// (and any exception escaping the parser, which libFuzzer reports as a crash) it checks what the
// parser promises about an accepted config: byte lists within their bounds, a relative log path
// taken from the base folder, and that the config written back out as JSON parses to the same
// config again.
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "usb/virtual_config.h"

namespace {

using nlohmann::json;
using nvx::usb::VirtualConfig;
using nvx::usb::VirtualMixerConfig;

constexpr const char *kBaseDir = "/fuzz/base";

std::string hexIndex(uint16_t wIndex) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%04X", unsigned{wIndex});
  return text;
}

std::string openWord(nvx::usb::IOReturn result) {
  if (result == nvx::usb::kIOReturnSuccess) return "ok";
  if (result == nvx::usb::kIOReturnExclusiveAccess) return "busy";
  if (result == nvx::usb::kIOReturnNotPrivileged) return "denied";
  __builtin_trap();  // the parser made an open result that no config word names
}

// The config as the JSON that describes it, every field written out.
json toJson(const VirtualConfig &config) {
  json mixers = json::array();
  for (const VirtualMixerConfig &mixer : config.mixers) {
    json fail = json::array();
    for (uint16_t wIndex : mixer.fail) fail.push_back(hexIndex(wIndex));
    json shortReads = json::object();
    for (const auto &[wIndex, limit] : mixer.shortReads) shortReads[hexIndex(wIndex)] = limit;
    mixers.push_back({{"firmware", mixer.firmware},
                      {"input_selectors", mixer.inputSelectors},
                      {"serato", mixer.serato},
                      {"beatfx", mixer.beatfx},
                      {"open", openWord(mixer.openResult)},
                      {"fail", fail},
                      {"short", shortReads}});
  }
  return {{"log", config.logPath}, {"mixers", mixers}};
}

bool sameMixer(const VirtualMixerConfig &a, const VirtualMixerConfig &b) {
  return a.firmware == b.firmware && a.inputSelectors == b.inputSelectors && a.serato == b.serato &&
         a.beatfx == b.beatfx && a.openResult == b.openResult && a.fail == b.fail && a.shortReads == b.shortReads;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  const auto config = nvx::usb::parseVirtualConfig(text, kBaseDir);
  if (!config) return 0;

  for (const VirtualMixerConfig &mixer : config->mixers) {
    // Answers are at most 64 bytes; a short read's limit fits a wLength.
    if (mixer.firmware.size() > 64 || mixer.beatfx.size() > 64) __builtin_trap();
    for (const auto &[wIndex, limit] : mixer.shortReads)
      if (limit > 0xFFFF) __builtin_trap();
  }
  // A log path is empty (no log), absolute as given, or relative to the base folder.
  if (!config->logPath.empty() && config->logPath.front() != '/') __builtin_trap();

  const std::string again = toJson(*config).dump();
  const auto reparsed = nvx::usb::parseVirtualConfig(again, kBaseDir);
  if (!reparsed || reparsed->logPath != config->logPath || reparsed->mixers.size() != config->mixers.size())
    __builtin_trap();
  for (size_t n = 0; n < config->mixers.size(); ++n)
    if (!sameMixer(config->mixers[n], reparsed->mixers[n])) __builtin_trap();
  return 0;
}
