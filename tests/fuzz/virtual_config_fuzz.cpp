// Fuzzes the virtual mixers' config parser with arbitrary text. Besides the sanitizers' findings
// (an exception escaping the parser included): an accepted config has an absolute log path (or
// none), and written back out as JSON, every field spelt out, it parses to the same config.
#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <string_view>
#include <tuple>

#include "usb/virtual_config.h"

namespace {

using nlohmann::json;
using namespace nvx::usb;

std::string hexIndex(uint16_t wIndex) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%04X", unsigned{wIndex});
  return text;
}

json toJson(const VirtualConfig &config) {
  json mixers = json::array();
  for (const VirtualMixerConfig &mixer : config.mixers) {
    json fail = json::array(), shortReads = json::object();
    for (const uint16_t wIndex : mixer.fail) fail.push_back(hexIndex(wIndex));
    for (const auto &[wIndex, limit] : mixer.shortReads) shortReads[hexIndex(wIndex)] = limit;
    const char *open = mixer.openResult == kIOReturnSuccess           ? "ok"
                       : mixer.openResult == kIOReturnExclusiveAccess ? "busy"
                       : mixer.openResult == kIOReturnNotPrivileged   ? "denied"
                                                                      : "no such word";
    mixers.push_back({{"firmware", mixer.firmware}, {"input_selectors", mixer.inputSelectors},
                      {"serato", mixer.serato}, {"beatfx", mixer.beatfx}, {"open", open}, {"fail", fail},
                      {"short", shortReads}});
  }
  return {{"log", config.logPath}, {"mixers", mixers}};
}

auto fields(const VirtualMixerConfig &m) {
  return std::tie(m.firmware, m.inputSelectors, m.serato, m.beatfx, m.openResult, m.fail, m.shortReads);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const auto config = parseVirtualConfig(std::string_view(reinterpret_cast<const char *>(data), size), "/fuzz/base");
  if (!config) return 0;
  if (!config->logPath.empty() && config->logPath.front() != '/') __builtin_trap();
  const auto again = parseVirtualConfig(toJson(*config).dump(), "/fuzz/base");
  if (!again || again->logPath != config->logPath || again->mixers.size() != config->mixers.size()) __builtin_trap();
  for (size_t n = 0; n < config->mixers.size(); ++n)
    if (fields(config->mixers[n]) != fields(again->mixers[n])) __builtin_trap();
  return 0;
}
