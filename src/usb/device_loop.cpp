#include "usb/device_loop.h"

#include "usb/usb_access.h"

namespace nvx::usb {

MixerReport::Result openResultOf(IOReturn code) {
  switch (code) {
    case kIOReturnSuccess:
      return MixerReport::Result::Ok;
    case kIOReturnExclusiveAccess:
      return MixerReport::Result::Busy;
    case kIOReturnNotPrivileged:
      return MixerReport::Result::Denied;
    case kIOReturnNoDevice:
      return MixerReport::Result::Gone;
    default:
      return MixerReport::Result::NoOpen;
  }
}

const char *resultName(MixerReport::Result result) {
  switch (result) {
    case MixerReport::Result::Ok:
      return "ok";
    case MixerReport::Result::Failed:
      return "failed";
    case MixerReport::Result::Busy:
      return "busy";
    case MixerReport::Result::Denied:
      return "denied";
    case MixerReport::Result::Gone:
      return "gone";
    case MixerReport::Result::NoOpen:
      break;
  }
  return "not opened";
}

std::string placeOf(uint8_t bus, const std::string &port) { return std::to_string(bus) + "-" + port; }

bool MixerSelection::matches(uint32_t deviceNumber, uint8_t bus, const std::string &port) const {
  if (number && *number != deviceNumber) return false;
  return !place || *place == placeOf(bus, port);
}

uint32_t countMixers() { return CheckUSBAudio(0); }

std::vector<MixerReport> visitMixers(uint32_t count, const MixerUse &use, const MixerSelection &which) {
  const CallScope scope;  // one transport for the whole loop
  std::vector<MixerReport> reports;
  USBDeviceHandle handle;
  handle.openGuard = 0;
  for (uint32_t number = 0; number < count; ++number) {
    // A selection needs the mixer's place, which finding it tells; the exported functions select
    // every mixer and go straight to opening, as they always have.
    if (!which.all()) {
      USBDeviceHandle probe;
      if (openUSB(&probe, number) != kIOReturnSuccess || !which.matches(number, probe.bus, probe.port)) continue;
    }
    const IOReturn opened = open_pipes(&handle, number);
    MixerReport report{number, handle.bus, handle.port, openResultOf(opened)};
    if (opened != kIOReturnSuccess) {
      if (handle.deviceRef) reports.push_back(std::move(report));  // found, but not opened
      handle.deviceRef.reset();
      continue;
    }
    const Visit next = use(*handle.deviceRef, report);
    closeUSB(&handle);
    reports.push_back(std::move(report));
    if (next == Visit::Stop) break;
  }
  return reports;
}

std::vector<MixerReport> visitMixers(uint32_t count, const std::function<Visit(Device &)> &use) {
  return visitMixers(count, [&](Device &device, MixerReport &) { return use(device); });
}

std::vector<MixerReport> sendToMixers(uint32_t count, Request request, uint16_t value, const MixerSelection &which) {
  return visitMixers(
      count,
      [&](Device &device, MixerReport &report) {
        if (sendWrite(&device, request, value) != kIOReturnSuccess) report.result = MixerReport::Result::Failed;
        return Visit::Next;
      },
      which);
}

SendReport sendToEveryMixer(Request request, uint16_t value, const MixerSelection &which) {
  const CallScope scope;
  SendReport sent;
  sent.count = countMixers();
  sent.mixers = sendToMixers(sent.count, request, value, which);
  return sent;
}

}  // namespace nvx::usb
