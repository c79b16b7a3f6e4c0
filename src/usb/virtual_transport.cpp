// Virtual mixers for demos and tests. The bus holds only the mixers of the config file, which is read
// afresh by every exported call (at its first enumeration) so a test or demo can plug and unplug
// mixers between calls. Every event is appended to the config's request log, one line per event in a
// single write.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string>

#include "store/safe_file.h"
#include "usb/mixer_identity.h"
#include "usb/transport.h"
#include "usb/virtual_config.h"

namespace nvx::usb {

namespace {

void appendLogLine(const std::string &logPath, std::string line) {
  if (logPath.empty()) return;
  line += '\n';
  // Only to a regular file: a FIFO without a reader in the log's place must not block the call.
  const store::Fd fd = store::openForAppend(logPath, 0644);
  if (!fd.valid()) return;
  [[maybe_unused]] const ssize_t written = ::write(fd.get(), line.data(), line.size());
}

std::string hexByte(uint8_t byte) {
  char text[4];
  std::snprintf(text, sizeof text, " %02X", byte);
  return text;
}

class VirtualTransport;

class VirtualDevice final : public Device {
 public:
  VirtualDevice(std::shared_ptr<VirtualTransport> transport, VirtualMixerConfig mixer, size_t number,
                std::string logPath)
      : transport_(std::move(transport)), mixer_(std::move(mixer)), number_(number), logPath_(std::move(logPath)) {}

  ~VirtualDevice() override { VirtualDevice::close(); }

  IOReturn open() override {
    if (mixer_.openResult != kIOReturnSuccess) {
      log(" open failed");
      return mixer_.openResult;
    }
    open_ = true;
    log(" open");
    return kIOReturnSuccess;
  }

  void close() override {
    if (!open_) return;
    open_ = false;
    log(" close");
  }

  IOReturn control(const SetupPacket &setup, uint8_t *data, uint32_t *moved) override {
    *moved = 0;
    std::string line = std::to_string(number_);
    for (uint8_t byte : wireBytes(setup)) line += hexByte(byte);
    if (!open_ || mixer_.fail.contains(setup.wIndex)) {
      appendLogLine(logPath_, line + " -> error");
      return kIOReturnIOError;
    }
    if ((setup.bmRequestType & 0x80) == 0) {
      appendLogLine(logPath_, line);
      return kIOReturnSuccess;
    }
    const auto answer = answerFor(setup);
    if (!answer) {
      appendLogLine(logPath_, line + " -> error");
      return kIOUSBPipeStalled;
    }
    uint32_t count = std::min<uint32_t>(setup.wLength, static_cast<uint32_t>(answer->size()));
    if (auto limit = mixer_.shortReads.find(setup.wIndex); limit != mixer_.shortReads.end())
      count = std::min(count, limit->second);
    std::copy_n(answer->begin(), count, data);
    *moved = count;
    line += " ->";
    for (uint32_t i = 0; i < count; ++i) line += hexByte((*answer)[i]);
    appendLogLine(logPath_, line);
    return kIOReturnSuccess;
  }

  IOReturn locationId(uint32_t *location) override {
    // No real bus: bus 0, the mixer's number + 1 as its only port.
    *location = static_cast<uint32_t>((number_ + 1) & 0xF) << 20;
    return kIOReturnSuccess;
  }

 private:
  static std::array<uint8_t, 8> wireBytes(const SetupPacket &s) {
    return {s.bmRequestType,
            s.bRequest,
            static_cast<uint8_t>(s.wValue & 0xFF),
            static_cast<uint8_t>(s.wValue >> 8),
            static_cast<uint8_t>(s.wIndex & 0xFF),
            static_cast<uint8_t>(s.wIndex >> 8),
            static_cast<uint8_t>(s.wLength & 0xFF),
            static_cast<uint8_t>(s.wLength >> 8)};
  }

  // The mixer's answer to a read, or nullopt for an item it does not know (it stalls).
  std::optional<std::vector<uint8_t>> answerFor(const SetupPacket &setup) const {
    switch (setup.wIndex) {
      case 0x8001:
        return mixer_.firmware;
      case 0x8002:
        if (setup.wValue >= 1 && setup.wValue <= 4)
          return std::vector<uint8_t>{0, mixer_.inputSelectors[setup.wValue - 1u]};
        return std::nullopt;
      case 0x8004:
        return std::vector<uint8_t>{mixer_.serato, 0};
      case 0x8005:
        return mixer_.beatfx;
      default:
        return std::nullopt;
    }
  }

  void log(const std::string &event) const { appendLogLine(logPath_, std::to_string(number_) + event); }

  std::shared_ptr<VirtualTransport> transport_;
  VirtualMixerConfig mixer_;
  size_t number_;
  std::string logPath_;
  bool open_ = false;
};

class VirtualTransport final : public Transport, public std::enable_shared_from_this<VirtualTransport> {
 public:
  explicit VirtualTransport(std::string configPath) : configPath_(std::move(configPath)) {}

  std::vector<DeviceEntry> enumerate() override {
    // A transport serves one exported call (see CallScope): the file is read at its first walk of
    // the bus, and the device loop's later walks in the same call (one per mixer) use what was read.
    // Reading it each time cost a parse of the whole file per mixer, quadratic in the mixers.
    if (!loaded_) {
      config_ = loadVirtualConfig(configPath_).value_or(VirtualConfig{});
      loaded_ = true;
    }
    const MixerId id = mixerId();
    std::vector<DeviceEntry> entries;
    for (size_t n = 0; n < config_.mixers.size(); ++n) {
      DeviceEntry entry;
      entry.vendor = id.vendor;
      entry.product = id.product;
      entry.portPath = "virtual-" + std::to_string(n);
      entry.backendIndex = n;
      entries.push_back(std::move(entry));
    }
    return entries;
  }

  std::unique_ptr<Device> reference(const DeviceEntry &entry) override {
    if (entry.backendIndex >= config_.mixers.size()) return nullptr;
    return std::make_unique<VirtualDevice>(shared_from_this(), config_.mixers[entry.backendIndex],
                                           entry.backendIndex, config_.logPath);
  }

  const char *name() const override { return "virtual"; }

 private:
  std::string configPath_;
  VirtualConfig config_;
  bool loaded_ = false;
};

}  // namespace

std::shared_ptr<Transport> makeVirtualTransport(const std::string &configPath) {
  return std::make_shared<VirtualTransport>(configPath);
}

}  // namespace nvx::usb
