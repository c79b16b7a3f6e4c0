#include "support/virtual_bus.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace nvx::test {

VirtualBus::VirtualBus(const std::vector<VirtualMixer> &mixers)
    : config_(dir_.file("mixers.json")), log_(dir_.file("requests.log")) {
  setMixers(mixers);
  env_.set("MXRK7_VIRTUAL_MIXERS", config_);
  env_.set("MXRK7_USB_ID", std::nullopt);
}

void VirtualBus::setMixersOpening(const std::vector<std::string> &opens) {
  std::vector<VirtualMixer> mixers(opens.size());
  for (size_t i = 0; i < opens.size(); ++i) mixers[i].open = opens[i];
  setMixers(mixers);
}

void VirtualBus::setMixers(const std::vector<VirtualMixer> &mixers) {
  nlohmann::json list = nlohmann::json::array();
  for (const auto &m : mixers) {
    nlohmann::json short_reads = nlohmann::json::object();
    for (const auto &[index, bytes] : m.shortReads) short_reads[index] = bytes;
    list.push_back({{"firmware", m.firmware},
                    {"input_selectors", m.selectors},
                    {"serato", m.serato},
                    {"beatfx", m.beatfx},
                    {"open", m.open},
                    {"fail", m.fail},
                    {"short", short_reads}});
  }
  dir_.write("mixers.json", nlohmann::json{{"log", "requests.log"}, {"mixers", list}}.dump(2));
}

std::vector<std::string> VirtualBus::log() const {
  std::vector<std::string> lines;
  std::istringstream in(readFile(log_));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> VirtualBus::requests() const {
  std::vector<std::string> lines;
  for (auto &line : log()) {
    if (line.find(" open") == std::string::npos && line.find(" close") == std::string::npos) lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> VirtualBus::writes() const {
  std::vector<std::string> lines;
  for (auto &line : requests())
    if (line.find(" 40 03 ") != std::string::npos) lines.push_back(line);
  return lines;
}

void VirtualBus::clearLog() const { std::ofstream(log_, std::ios::trunc); }

std::string writeLine(int device, uint16_t wIndex, uint16_t value) {
  char line[64];
  std::snprintf(line, sizeof line, "%d 40 03 %02X %02X %02X %02X 00 00", device, value & 0xFF, value >> 8,
                wIndex & 0xFF, wIndex >> 8);
  return line;
}

}  // namespace nvx::test
