#include "usb/virtual_config.h"

#include <nlohmann/json.hpp>

#include <filesystem>

#include "store/safe_file.h"

namespace nvx::usb {

namespace {

using nlohmann::json;

// A config describes a handful of mixers in a few hundred bytes; larger files are not read.
constexpr size_t kMaxConfigBytes = 1024 * 1024;

// Thrown inside the parser only; turned into "invalid config" at its edge.
struct Invalid {};

uint8_t byteOf(const json &value) {
  if (!value.is_number_integer()) throw Invalid{};
  const auto number = value.get<int64_t>();
  if (number < 0 || number > 255) throw Invalid{};
  return static_cast<uint8_t>(number);
}

std::vector<uint8_t> bytesOf(const json &value) {
  if (!value.is_array() || value.size() > 64) throw Invalid{};
  std::vector<uint8_t> bytes;
  for (const auto &element : value) bytes.push_back(byteOf(element));
  return bytes;
}

// A wIndex written as a hexadecimal string, "0x8002" (the 0x is optional).
uint16_t wIndexOf(const std::string &text) {
  std::string_view digits = text;
  if (digits.starts_with("0x") || digits.starts_with("0X")) digits.remove_prefix(2);
  if (digits.empty() || digits.size() > 4) throw Invalid{};
  uint32_t value = 0;
  for (char c : digits) {
    uint32_t digit = 0;
    if (c >= '0' && c <= '9') digit = static_cast<uint32_t>(c - '0');
    else if (c >= 'a' && c <= 'f') digit = static_cast<uint32_t>(c - 'a' + 10);
    else if (c >= 'A' && c <= 'F') digit = static_cast<uint32_t>(c - 'A' + 10);
    else throw Invalid{};
    value = value * 16 + digit;
  }
  return static_cast<uint16_t>(value);
}

VirtualMixerConfig mixerOf(const json &object) {
  if (!object.is_object()) throw Invalid{};
  VirtualMixerConfig mixer;
  if (auto it = object.find("firmware"); it != object.end()) mixer.firmware = bytesOf(*it);
  if (auto it = object.find("input_selectors"); it != object.end()) {
    const auto bytes = bytesOf(*it);
    if (bytes.size() != mixer.inputSelectors.size()) throw Invalid{};
    std::copy(bytes.begin(), bytes.end(), mixer.inputSelectors.begin());
  }
  if (auto it = object.find("serato"); it != object.end()) mixer.serato = byteOf(*it);
  if (auto it = object.find("beatfx"); it != object.end()) mixer.beatfx = bytesOf(*it);
  if (auto it = object.find("open"); it != object.end()) {
    if (!it->is_string()) throw Invalid{};
    const auto &mode = it->get_ref<const std::string &>();
    if (mode == "busy") mixer.openResult = kIOReturnExclusiveAccess;  // another program holds it
    else if (mode == "denied") mixer.openResult = kIOReturnNotPrivileged;  // no access to the node
    else if (mode != "ok") throw Invalid{};
  }
  if (auto it = object.find("fail"); it != object.end()) {
    if (!it->is_array()) throw Invalid{};
    for (const auto &entry : *it) {
      if (!entry.is_string()) throw Invalid{};
      mixer.fail.insert(wIndexOf(entry.get<std::string>()));
    }
  }
  if (auto it = object.find("short"); it != object.end()) {
    if (!it->is_object()) throw Invalid{};
    for (const auto &[key, limit] : it->items()) {
      if (!limit.is_number_integer() || limit.get<int64_t>() < 0 || limit.get<int64_t>() > 0xFFFF) throw Invalid{};
      mixer.shortReads[wIndexOf(key)] = static_cast<uint32_t>(limit.get<int64_t>());
    }
  }
  return mixer;
}

}  // namespace

std::optional<VirtualConfig> parseVirtualConfig(std::string_view text, const std::string &baseDir) {
  try {
    const json root = json::parse(text.begin(), text.end(), nullptr, true, false);
    if (!root.is_object()) return std::nullopt;
    VirtualConfig config;
    if (auto it = root.find("log"); it != root.end()) {
      if (!it->is_string()) return std::nullopt;
      std::filesystem::path log = it->get<std::string>();
      if (!log.empty() && log.is_relative()) log = std::filesystem::path(baseDir) / log;
      config.logPath = log.string();
    }
    if (auto it = root.find("mixers"); it != root.end()) {
      if (!it->is_array()) return std::nullopt;
      for (const auto &mixer : *it) config.mixers.push_back(mixerOf(mixer));
    }
    return config;
  } catch (const Invalid &) {
    return std::nullopt;
  } catch (const json::exception &) {
    return std::nullopt;
  }
}

std::optional<VirtualConfig> loadVirtualConfig(const std::string &path) {
  // A FIFO or /dev/zero named by mistake reads as a missing config rather than blocking or
  // filling memory.
  const auto file = store::readRegularFile(path, kMaxConfigBytes);
  if (!file.ok()) return std::nullopt;
  return parseVirtualConfig(file.bytes, std::filesystem::path(path).parent_path().string());
}

}  // namespace nvx::usb
