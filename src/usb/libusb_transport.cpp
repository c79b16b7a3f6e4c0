// The libusb backend of the transport. One transport owns one libusb context: libusb's own threads
// (its hot-plug monitor) live only as long as the context, and the context lives only as long as the
// transport and the devices referenced through it.
//
// Opening a mixer takes an advisory lock on its device node before libusb opens it: two programs
// using this library then never talk to the same mixer at once, the second finds it busy. No
// interface is claimed and the kernel's audio driver stays attached: vendor requests to the device
// itself need neither.
#include <fcntl.h>
#include <libusb.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <tuple>
#include <utility>

#include "usb/libusb_errors.h"
#include "usb/requests.h"
#include "usb/transport.h"

namespace nvx::usb {

namespace {

struct LibusbCode {
  int error;
  IOReturn code;
};

constexpr std::array<LibusbCode, 13> kLibusbCodes = {{
    {LIBUSB_ERROR_IO, kIOReturnIOError},
    {LIBUSB_ERROR_INVALID_PARAM, kIOReturnBadArgument},
    {LIBUSB_ERROR_ACCESS, kIOReturnNotPrivileged},
    {LIBUSB_ERROR_NO_DEVICE, kIOReturnNoDevice},
    {LIBUSB_ERROR_NOT_FOUND, kIOReturnNotFound},
    {LIBUSB_ERROR_BUSY, kIOReturnExclusiveAccess},
    {LIBUSB_ERROR_TIMEOUT, kIOReturnTimeout},
    {LIBUSB_ERROR_OVERFLOW, kIOReturnOverrun},
    {LIBUSB_ERROR_PIPE, kIOUSBPipeStalled},
    {LIBUSB_ERROR_INTERRUPTED, kIOReturnAborted},
    {LIBUSB_ERROR_NO_MEM, kIOReturnNoMemory},
    {LIBUSB_ERROR_NOT_SUPPORTED, kIOReturnUnsupported},
    {LIBUSB_ERROR_OTHER, kIOReturnError},
}};

// Deepest port path a location id can hold: one nibble per port below the bus byte.
constexpr size_t kLocationPorts = 6;
// USB allows seven tiers of hubs below the root.
constexpr size_t kMaxPortPath = 7;

struct DeviceUnref {
  void operator()(libusb_device *device) const { libusb_unref_device(device); }
};
using DeviceRef = std::unique_ptr<libusb_device, DeviceUnref>;

struct ContextExit {
  void operator()(libusb_context *context) const { libusb_exit(context); }
};
using ContextRef = std::unique_ptr<libusb_context, ContextExit>;

DeviceRef addReference(libusb_device *device) { return DeviceRef(libusb_ref_device(device)); }

std::vector<uint8_t> portNumbers(libusb_device *device) {
  std::array<uint8_t, kMaxPortPath> ports{};
  const int count = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
  if (count <= 0) return {};
  return {ports.begin(), ports.begin() + count};
}

std::string joinPorts(const std::vector<uint8_t> &ports) {
  std::string path;
  for (const uint8_t port : ports) {
    if (!path.empty()) path += '.';
    path += std::to_string(port);
  }
  return path;
}

std::string nodeFor(libusb_device *device) {
  std::array<char, 32> node{};
  std::snprintf(node.data(), node.size(), "/dev/bus/usb/%03u/%03u", unsigned{libusb_get_bus_number(device)},
                unsigned{libusb_get_device_address(device)});
  return node.data();
}

class LibusbTransport;

class LibusbDevice final : public Device {
 public:
  LibusbDevice(std::shared_ptr<LibusbTransport> transport, DeviceRef device, std::string node)
      : transport_(std::move(transport)), device_(std::move(device)), node_(std::move(node)) {}

  ~LibusbDevice() override { LibusbDevice::close(); }

  IOReturn open() override {
    if (handle_) return kIOReturnSuccess;
    // The lock is what makes the open exclusive between programs; libusb itself would let two
    // processes open the same device.
    const int fd = ::open(node_.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return ioReturnFromErrno(errno);
    int locked = 0;
    do locked = ::flock(fd, LOCK_EX | LOCK_NB);
    while (locked != 0 && errno == EINTR);
    if (locked != 0) {
      const int error = errno;
      ::close(fd);
      return ioReturnFromErrno(error);
    }
    libusb_device_handle *handle = nullptr;
    const int opened = libusb_open(device_.get(), &handle);
    if (opened != LIBUSB_SUCCESS) {
      ::close(fd);
      return ioReturnFromLibusb(opened);
    }
    handle_ = handle;
    lockFd_ = fd;
    return kIOReturnSuccess;
  }

  void close() override {
    if (handle_) libusb_close(handle_);
    handle_ = nullptr;
    if (lockFd_ >= 0) ::close(lockFd_);  // drops the lock
    lockFd_ = -1;
  }

  IOReturn control(const SetupPacket &setup, uint8_t *data, uint32_t *moved) override {
    if (!moved) return kIOReturnBadArgument;
    *moved = 0;
    if (!handle_) return kIOReturnError;
    if (setup.wLength != 0 && !data) return kIOReturnBadArgument;
    const int result = libusb_control_transfer(handle_, setup.bmRequestType, setup.bRequest, setup.wValue, setup.wIndex,
                                               data, setup.wLength, kRequestTimeoutMs);
    if (result < 0) return ioReturnFromLibusb(result);
    *moved = static_cast<uint32_t>(result);  // fewer than wLength is a short transfer, not a failure
    return kIOReturnSuccess;
  }

  IOReturn locationId(uint32_t *location) override {
    if (!location) return kIOReturnBadArgument;
    uint32_t id = uint32_t{libusb_get_bus_number(device_.get())} << 24;
    const auto ports = portNumbers(device_.get());
    for (size_t i = 0; i < ports.size() && i < kLocationPorts; ++i) id |= uint32_t{ports[i] & 0xFu} << (20 - 4 * i);
    *location = id;
    return kIOReturnSuccess;
  }

 private:
  // Declared first so it is released last: the context must outlive the device and its handle.
  std::shared_ptr<LibusbTransport> transport_;
  DeviceRef device_;
  std::string node_;
  libusb_device_handle *handle_ = nullptr;
  int lockFd_ = -1;
};

class LibusbTransport final : public Transport, public std::enable_shared_from_this<LibusbTransport> {
 public:
  explicit LibusbTransport(ContextRef context) : context_(std::move(context)) {}

  std::vector<DeviceEntry> enumerate() override {
    known_.clear();
    libusb_device **list = nullptr;
    const ssize_t count = libusb_get_device_list(context_.get(), &list);
    if (count < 0) return {};

    struct Found {
      DeviceEntry entry;
      std::vector<uint8_t> ports;
      uint8_t address;
      DeviceRef device;
    };
    std::vector<Found> found;
    found.reserve(static_cast<size_t>(count));
    for (ssize_t i = 0; i < count; ++i) {
      libusb_device *device = list[i];
      Found item{{}, portNumbers(device), libusb_get_device_address(device), addReference(device)};
      libusb_device_descriptor descriptor{};
      const int read = libusb_get_device_descriptor(device, &descriptor);
      item.entry.queryResult = ioReturnFromLibusb(read);
      if (read == LIBUSB_SUCCESS) {
        item.entry.vendor = descriptor.idVendor;
        item.entry.product = descriptor.idProduct;
      }
      item.entry.bus = libusb_get_bus_number(device);
      item.entry.portPath = joinPorts(item.ports);
      item.entry.node = nodeFor(device);
      found.push_back(std::move(item));
    }
    libusb_free_device_list(list, 1);  // the references taken above keep the devices

    // libusb's own order is that of its hot-plug bookkeeping (under test, the reverse of plugging
    // in). Ports compare as numbers, so port 2 comes before port 10.
    std::sort(found.begin(), found.end(), [](const Found &a, const Found &b) {
      return std::tie(a.entry.bus, a.ports, a.address) < std::tie(b.entry.bus, b.ports, b.address);
    });

    std::vector<DeviceEntry> entries;
    entries.reserve(found.size());
    for (auto &item : found) {
      item.entry.backendIndex = known_.size();
      known_.push_back({std::move(item.device), item.entry.node});
      entries.push_back(std::move(item.entry));
    }
    return entries;
  }

  std::unique_ptr<Device> reference(const DeviceEntry &entry) override {
    // An entry of an older enumeration may name another device by now: the node must still match.
    if (entry.backendIndex >= known_.size() || known_[entry.backendIndex].node != entry.node) return nullptr;
    const Known &known = known_[entry.backendIndex];
    return std::make_unique<LibusbDevice>(shared_from_this(), addReference(known.device.get()), known.node);
  }

  const char *name() const override { return "libusb"; }

 private:
  struct Known {
    DeviceRef device;
    std::string node;
  };

  ContextRef context_;        // declared first so it is exited last
  std::vector<Known> known_;  // the last enumeration, indexed by DeviceEntry::backendIndex
};

}  // namespace

IOReturn ioReturnFromLibusb(int result) {
  if (result >= 0) return kIOReturnSuccess;
  for (const auto &[error, code] : kLibusbCodes)
    if (error == result) return code;
  return kIOReturnError;
}

IOReturn ioReturnFromErrno(int error) {
  switch (error) {
    case 0:
      return kIOReturnSuccess;
    case EACCES:
    case EPERM:
      return kIOReturnNotPrivileged;
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return kIOReturnNoDevice;
    case EWOULDBLOCK:
      return kIOReturnExclusiveAccess;
    case ENOMEM:
      return kIOReturnNoMemory;
    default:
      return kIOReturnError;
  }
}

std::shared_ptr<Transport> makeLibusbTransport() {
  libusb_context *raw = nullptr;
  if (libusb_init(&raw) != LIBUSB_SUCCESS) return nullptr;
  ContextRef context(raw);  // exited here should the transport not be made
  return std::make_shared<LibusbTransport>(std::move(context));
}

}  // namespace nvx::usb
