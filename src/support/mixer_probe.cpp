#include "support/mixer_probe.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "usb/device_loop.h"
#include "usb/mixer_identity.h"
#include "usb/request_table.h"
#include "usb/requests.h"
#include "usb/transport.h"

namespace nvx::support {

namespace {

using usb::IOReturn;

// The device loop's reading of an open's code, in the words of a probe.
Access classify(IOReturn code) {
  using Result = usb::MixerReport::Result;
  switch (usb::openResultOf(code)) {
    case Result::Ok:
      return Access::Ok;
    case Result::Busy:
      return Access::Busy;
    case Result::Denied:
      return Access::Denied;
    case Result::Gone:
      return Access::Gone;
    default:
      return Access::Failed;
  }
}

// One read request of the protocol with an explicit wValue; the answer only when `want` bytes came.
std::optional<std::array<uint8_t, 2>> readTwo(usb::Device &device, usb::Request request, uint16_t wValue,
                                              uint16_t want) {
  std::array<uint8_t, 2> answer{};
  uint16_t length = 2;
  const IOReturn result = usb::DeviceRequest(&device, usb::kReadRequestType, usb::kReadRequest, wValue,
                                             usb::requestRow(request).wIndex, answer.data(), &length);
  if (result != usb::kIOReturnSuccess || length < want) return std::nullopt;
  return answer;
}

// Unlike the library's status queries, every selector is asked on its own with the full length, so
// one short answer cannot leak into the next selector's value.
void readStatus(usb::Device &device, MixerStatus &mixer) {
  mixer.firmware = readTwo(device, usb::Request::GetFirmwareVersionNumber, 0, 2);
  for (uint16_t selector = 1; selector <= mixer.inputSelectors.size(); ++selector) {
    if (const auto answer = readTwo(device, usb::Request::GetInputSelectorInfo, selector, 2))
      mixer.inputSelectors[selector - 1u] = (*answer)[1];
  }
  if (const auto answer = readTwo(device, usb::Request::GetSeratoActiveInfo, 0, 1)) mixer.serato = (*answer)[0];
}

std::string commandName(int pid) {
  std::ifstream comm("/proc/" + std::to_string(pid) + "/comm");
  std::string name;
  std::getline(comm, name);
  return name;
}

bool isDecimalDigits(uint8_t byte) { return (byte >> 4) <= 9 && (byte & 0xF) <= 9; }

}  // namespace

const char *accessName(Access access) {
  switch (access) {
    case Access::Ok:
      return "ok";
    case Access::Busy:
      return "busy";
    case Access::Denied:
      return "permission denied";
    case Access::Gone:
      return "gone";
    case Access::Failed:
      break;
  }
  return "failed";
}

std::optional<LockHolder> findLockHolder(const std::string &path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return std::nullopt;
  // Lines such as "1: FLOCK  ADVISORY  WRITE 4711 00:05:1056 0 EOF"; a waiting request has "->"
  // after the number and holds nothing.
  std::ifstream locks("/proc/locks");
  std::string line;
  while (std::getline(locks, line)) {
    std::istringstream fields(line);
    std::string number, kind, mode, access, device;
    long pid = 0;
    if (!(fields >> number >> kind) || kind != "FLOCK") continue;
    if (!(fields >> mode >> access >> pid >> device) || pid <= 0) continue;
    unsigned major = 0, minor = 0;
    unsigned long long inode = 0;
    if (std::sscanf(device.c_str(), "%x:%x:%llu", &major, &minor, &inode) != 3) continue;
    if (major != ::major(info.st_dev) || minor != ::minor(info.st_dev) || inode != info.st_ino) continue;
    return LockHolder{static_cast<int>(pid), commandName(static_cast<int>(pid))};
  }
  return std::nullopt;
}

UsbId mixerUsbId() {
  const usb::MixerId id = usb::mixerId();
  return {id.vendor, id.product};
}

size_t BusReport::accessible() const {
  return static_cast<size_t>(
      std::count_if(mixers.begin(), mixers.end(), [](const MixerStatus &m) { return m.access == Access::Ok; }));
}

BusReport probeMixers(Probe depth) {
  const usb::CallScope scope;  // one transport (one libusb context) for the whole probe
  BusReport report;
  const auto transport = usb::acquireTransport();
  if (!transport) {
    report.transport = "libusb";
    report.transportAvailable = false;
    return report;
  }
  report.transport = transport->name();
  const usb::MixerId id = usb::mixerId();
  uint32_t number = 0;
  for (const auto &entry : transport->enumerate()) {
    if (entry.queryResult != usb::kIOReturnSuccess || entry.vendor != id.vendor || entry.product != id.product)
      continue;
    MixerStatus mixer;
    mixer.number = number++;
    mixer.bus = entry.bus;
    mixer.port = entry.portPath;
    mixer.node = entry.node;
    const auto device = transport->reference(entry);
    mixer.openCode = device ? device->open() : usb::kIOReturnNoDevice;
    mixer.access = classify(mixer.openCode);
    if (mixer.access != Access::Ok) mixer.openError = usb::describeIOReturn(mixer.openCode);
    if (mixer.access == Access::Busy && !mixer.node.empty()) mixer.holder = findLockHolder(mixer.node);
    if (device && mixer.access == Access::Ok) {
      if (depth == Probe::WithStatus) readStatus(*device, mixer);
      device->close();
    }
    report.mixers.push_back(std::move(mixer));
  }
  return report;
}

uint16_t firmwareNumber(const std::array<uint8_t, 2> &bytes) {
  return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

std::string firmwareText(const std::array<uint8_t, 2> &bytes) {
  char text[16];
  if (isDecimalDigits(bytes[1]) && isDecimalDigits(bytes[0]))
    std::snprintf(text, sizeof text, "%x.%02x", unsigned{bytes[1]}, unsigned{bytes[0]});
  else
    std::snprintf(text, sizeof text, "0x%04X", unsigned{firmwareNumber(bytes)});
  return text;
}

}  // namespace nvx::support
