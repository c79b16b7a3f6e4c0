// The narrow transport interface under the USB layer. Two backends implement it: libusb (real
// mixers) and the virtual mixers of MXRK7_VIRTUAL_MIXERS (demos and tests). No libusb type appears
// above this interface.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "usb/io_return.h"

namespace nvx::usb {

// The 8 setup fields of a control transfer, in host order.
struct SetupPacket {
  uint8_t bmRequestType = 0;
  uint8_t bRequest = 0;
  uint16_t wValue = 0;
  uint16_t wIndex = 0;
  uint16_t wLength = 0;
};

// A reference to one USB device, valid until destroyed. It is not open for requests until open()
// succeeds; destroying it closes it first if it is still open.
class Device {
 public:
  virtual ~Device() = default;
  Device() = default;
  Device(const Device &) = delete;
  Device &operator=(const Device &) = delete;

  // Opens the device for exclusive use by this process (another holder makes it fail as busy).
  virtual IOReturn open() = 0;
  virtual void close() = 0;
  // A control transfer on endpoint 0: wLength bytes at most are moved to or from `data`;
  // `moved` receives the number actually moved (0 on failure).
  virtual IOReturn control(const SetupPacket &setup, uint8_t *data, uint32_t *moved) = 0;
  // The device's location on the bus: bus number in bits 31-24, then one port number per nibble.
  virtual IOReturn locationId(uint32_t *location) = 0;
};

// One USB device seen while walking the bus.
struct DeviceEntry {
  IOReturn queryResult = kIOReturnSuccess;  // non-zero when the identity could not be read
  uint16_t vendor = 0;
  uint16_t product = 0;
  uint8_t bus = 0;
  std::string portPath;  // "1.4.2", or "virtual-<n>" for a virtual mixer
  std::string node;      // device node (/dev/bus/usb/BBB/DDD); empty for a virtual mixer
  size_t backendIndex = 0;
};

class Transport {
 public:
  virtual ~Transport() = default;
  Transport() = default;
  Transport(const Transport &) = delete;
  Transport &operator=(const Transport &) = delete;

  // Every USB device on the bus (not only mixers), in a stable order: by bus number, then port path.
  virtual std::vector<DeviceEntry> enumerate() = 0;
  // A new reference to a device of the last enumeration; it keeps this transport alive.
  virtual std::unique_ptr<Device> reference(const DeviceEntry &entry) = 0;
  // "libusb" or "virtual".
  virtual const char *name() const = 0;
};

// The transport for the current call: virtual mixers when MXRK7_VIRTUAL_MIXERS names a file, else
// libusb. Within a CallScope every acquisition on the thread shares one transport (for libusb one
// context), which is freed when the outermost scope ends; outside a scope each acquisition makes a
// fresh one. Returns null only when no transport can be made (libusb_init failed).
std::shared_ptr<Transport> acquireTransport();

// Marks one exported call on this thread: USB state made during it is freed when it returns.
class CallScope {
 public:
  CallScope();
  ~CallScope();
  CallScope(const CallScope &) = delete;
  CallScope &operator=(const CallScope &) = delete;
};

// Backends, for acquireTransport and for tests.
std::shared_ptr<Transport> makeLibusbTransport();
std::shared_ptr<Transport> makeVirtualTransport(const std::string &configPath);

}  // namespace nvx::usb
