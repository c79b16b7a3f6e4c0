#include "usb/usb_testbed.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace nvx::test {

namespace {

constexpr size_t kSetupSize = 8;

// Three decimal digits (a bus or device number in a node's path) or four hex digits (an identity).
std::string digits(unsigned number, bool hex) {
  char text[16];
  std::snprintf(text, sizeof text, hex ? "%04x" : "%03u", number);
  return text;
}

uint8_t low(uint16_t value) { return static_cast<uint8_t>(value & 0xFF); }
uint8_t high(uint16_t value) { return static_cast<uint8_t>(value >> 8); }

// Device descriptor and one configuration with one vendor-specific interface: what libusb reads
// from the sysfs "descriptors" file.
std::vector<uint8_t> descriptors(uint16_t vendor, uint16_t product) {
  return {// device
          18, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 64, low(vendor), high(vendor), low(product), high(product),
          0x00, 0x01, 0, 0, 0, 1,
          // configuration: total length 18, one interface, value 1, bus-powered, 100 mA
          9, 0x02, 18, 0, 1, 1, 0, 0x80, 50,
          // interface 0, no endpoints
          9, 0x04, 0, 0, 0, 0xFF, 0, 0, 0};
}

uint16_t word(const SetupBytes &setup, size_t at) { return static_cast<uint16_t>(setup[at] | setup[at + 1] << 8); }

void setUrbField(UMockdevIoctlData *urb, size_t offset, int value) {
  umockdev_ioctl_data_update(urb, offset, reinterpret_cast<guint8 *>(&value), sizeof value);
}

void complete(UMockdevIoctlClient *client, long result, int error) {
  umockdev_ioctl_client_complete(client, result, error);
}

}  // namespace

// ---- the device side of usbfs ----

MockUsbDevice::MockUsbDevice(std::string node, std::string hostNode)
    : node_(std::move(node)), hostNode_(std::move(hostNode)) {
  handler_ = umockdev_ioctl_base_new();
  handlerId_ = g_signal_connect(handler_, "handle-ioctl", reinterpret_cast<GCallback>(&MockUsbDevice::onIoctl), this);
}

MockUsbDevice::~MockUsbDevice() {
  g_signal_handler_disconnect(handler_, handlerId_);
  g_object_unref(handler_);
  for (auto &urb : done_) release(urb);
  for (auto &urb : waiting_) release(urb);
}

void MockUsbDevice::answer(uint16_t wIndex, uint16_t wValue, std::vector<uint8_t> bytes) {
  const std::lock_guard lock(mutex_);
  answers_[{wIndex, wValue}] = std::move(bytes);
}

void MockUsbDevice::fail(uint16_t wIndex, UsbFault fault) {
  const std::lock_guard lock(mutex_);
  faults_[wIndex] = fault;
}

std::vector<SetupBytes> MockUsbDevice::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void MockUsbDevice::release(Urb &urb) {
  if (urb.buffer) g_object_unref(urb.buffer);
  if (urb.urb) g_object_unref(urb.urb);
  urb.buffer = urb.urb = nullptr;
}

int MockUsbDevice::onIoctl(UMockdevIoctlBase *, UMockdevIoctlClient *client, void *self) {
  auto *device = static_cast<MockUsbDevice *>(self);
  const auto request = umockdev_ioctl_client_get_request(client);
  if (request == USBDEVFS_SUBMITURB) device->submit(client);
  else if (request == USBDEVFS_REAPURBNDELAY || request == USBDEVFS_REAPURB) device->reap(client);  // never blocks
  else if (request == USBDEVFS_DISCARDURB) device->discard(client);
  else complete(client, -1, ENOTTY);  // capabilities and the like: an old kernel without them
  return TRUE;
}

void MockUsbDevice::submit(UMockdevIoctlClient *client) {
  // The argument is the client's URB pointer; its buffer holds the setup packet and the data stage.
  UMockdevIoctlData *arg = umockdev_ioctl_client_get_arg(client);
  Urb pending;
  pending.urb = umockdev_ioctl_data_resolve(arg, 0, sizeof(usbdevfs_urb), nullptr);
  if (!pending.urb) return complete(client, -1, EFAULT);
  // The resolved copy of the client's struct usbdevfs_urb (g_malloc'ed, so aligned).
  const auto *fields = reinterpret_cast<const usbdevfs_urb *>(pending.urb->data);
  const int length = fields->buffer_length;
  if (fields->type != USBDEVFS_URB_TYPE_CONTROL || length < static_cast<int>(kSetupSize)) {
    release(pending);
    return complete(client, -1, EINVAL);
  }
  pending.buffer =
      umockdev_ioctl_data_resolve(pending.urb, offsetof(usbdevfs_urb, buffer), static_cast<size_t>(length), nullptr);
  if (!pending.buffer) {
    release(pending);
    return complete(client, -1, EFAULT);
  }

  SetupBytes setup{};
  std::copy_n(pending.buffer->data, kSetupSize, setup.begin());
  const bool read = (setup[0] & 0x80) != 0;
  const uint16_t wValue = word(setup, 2), wIndex = word(setup, 4), wLength = word(setup, 6);

  const std::lock_guard lock(mutex_);
  requests_.push_back(setup);
  if (const auto fault = faults_.find(wIndex); fault != faults_.end()) {
    if (fault->second == UsbFault::Timeout) {
      waiting_.push_back(pending);
      return complete(client, 0, 0);
    }
    pending.status = fault->second == UsbFault::Stall ? -EPIPE : fault->second == UsbFault::IoError ? -EPROTO : -ENODEV;
  } else if (!read) {
    pending.actualLength = wLength;
  } else if (const auto answer = answers_.find({wIndex, wValue}); answer == answers_.end()) {
    pending.status = -EPIPE;  // a request the device does not know
  } else {
    const size_t count = std::min<size_t>(wLength, answer->second.size());
    pending.in.assign(answer->second.begin(), answer->second.begin() + static_cast<std::ptrdiff_t>(count));
    pending.actualLength = static_cast<int>(count);
  }
  done_.push_back(pending);
  complete(client, 0, 0);
}

void MockUsbDevice::reap(UMockdevIoctlClient *client) {
  Urb urb;
  {
    const std::lock_guard lock(mutex_);
    if (done_.empty()) return complete(client, -1, EAGAIN);
    urb = done_.front();
    done_.pop_front();
  }
  // Fill in the URB as the kernel would, then hand its address back through the argument.
  setUrbField(urb.urb, offsetof(usbdevfs_urb, status), urb.status);
  setUrbField(urb.urb, offsetof(usbdevfs_urb, actual_length), urb.actualLength);
  if (!urb.in.empty())
    umockdev_ioctl_data_update(urb.buffer, kSetupSize, urb.in.data(), static_cast<int>(urb.in.size()));

  UMockdevIoctlData *slot =
      umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, sizeof(void *), nullptr);
  if (!slot || !umockdev_ioctl_data_set_ptr(slot, 0, urb.urb)) {
    if (slot) g_object_unref(slot);
    release(urb);
    return complete(client, -1, EFAULT);
  }
  complete(client, 0, 0);
  g_object_unref(slot);
  release(urb);
}

void MockUsbDevice::discard(UMockdevIoctlClient *client) {
  // The argument is the URB's address itself. A discarded URB comes back on the next reap with
  // -ENOENT, which is how libusb learns that its time-out took effect.
  UMockdevIoctlData *arg = umockdev_ioctl_client_get_arg(client);
  gulong address = 0;
  std::memcpy(&address, arg->data, std::min(sizeof address, static_cast<size_t>(arg->data_len)));
  const std::lock_guard lock(mutex_);
  const auto found =
      std::find_if(waiting_.begin(), waiting_.end(), [&](const Urb &urb) { return urb.urb->client_addr == address; });
  if (found == waiting_.end()) return complete(client, -1, EINVAL);
  found->status = -ENOENT;
  done_.push_back(*found);
  waiting_.erase(found);
  complete(client, 0, 0);
}

// ---- the testbed ----

UsbTestbed::UsbTestbed() {
  testbed_ = umockdev_testbed_new();
  gchar *root = umockdev_testbed_get_root_dir(testbed_);
  root_ = root;
  g_free(root);
}

UsbTestbed::~UsbTestbed() {
  for (const auto &device : devices_) umockdev_testbed_detach_ioctl(testbed_, device->node().c_str(), nullptr);
  g_object_unref(testbed_);  // removes the testbed's folder
  devices_.clear();
}

MockUsbDevice &UsbTestbed::add(uint8_t bus, const std::string &ports, uint8_t address, uint16_t vendor,
                               uint16_t product) {
  const std::string busText = std::to_string(bus);
  const std::string sysName = busText + "-" + ports;
  std::string parent;
  if (const auto dot = sysName.rfind('.'); dot != std::string::npos) {
    const auto hub = syspaths_.find(sysName.substr(0, dot));
    if (hub == syspaths_.end()) throw std::logic_error("add the hub of " + sysName + " first");
    parent = hub->second;
  }
  const std::string node = "/dev/bus/usb/" + digits(bus, false) + "/" + digits(address, false);

  const std::string busnum = busText, devnum = std::to_string(address);
  const std::string vendorText = digits(vendor, true), productText = digits(product, true);
  const gchar *attributes[] = {"busnum",    busnum.c_str(),        "devnum", devnum.c_str(), "speed",
                               "480",       "bConfigurationValue", "1",      "idVendor",     vendorText.c_str(),
                               "idProduct", productText.c_str(),   nullptr};
  const gchar *properties[] = {"DEVTYPE",      "usb_device", "DEVNAME",      node.c_str(), "BUSNUM",
                               busnum.c_str(), "DEVNUM",     devnum.c_str(), nullptr};
  // Top-level devices hang below the bus's root hub folder, as in the kernel's sysfs.
  const std::string name = parent.empty() ? "usb" + busText + "/" + sysName : sysName;
  gchar *syspath =
      umockdev_testbed_add_devicev(testbed_, "usb", name.c_str(), parent.empty() ? nullptr : parent.c_str(),
                                   const_cast<gchar **>(attributes), const_cast<gchar **>(properties));
  if (!syspath) throw std::runtime_error("umockdev cannot add " + sysName);
  syspaths_[sysName] = syspath;
  auto bytes = descriptors(vendor, product);
  umockdev_testbed_set_attribute_binary(testbed_, syspath, "descriptors", bytes.data(), static_cast<int>(bytes.size()));
  g_free(syspath);

  const std::string hostNode = root_ + node;
  fs::create_directories(fs::path(hostNode).parent_path());
  if (!fs::exists(hostNode)) std::ofstream(hostNode).close();

  devices_.push_back(std::unique_ptr<MockUsbDevice>(new MockUsbDevice(node, hostNode)));
  MockUsbDevice &device = *devices_.back();
  GError *error = nullptr;
  if (!umockdev_testbed_attach_ioctl(testbed_, node.c_str(), device.handler_, &error)) {
    const std::string message = error ? error->message : "unknown error";
    g_clear_error(&error);
    throw std::runtime_error("umockdev cannot attach to " + node + ": " + message);
  }
  return device;
}

void UsbTestbed::shareWithEveryone() const {
  // umockdev stands in for udev's netlink socket with a socket that the monitoring program binds in
  // the testbed's root folder: every user has to be able to create one there.
  chmod(root_.c_str(), 01777);
  std::error_code ignored;
  for (auto it = fs::recursive_directory_iterator(root_, ignored); it != fs::recursive_directory_iterator();
       it.increment(ignored))
    if (!it->is_symlink(ignored) && (it->is_directory(ignored) || it->is_socket(ignored)))
      chmod(it->path().c_str(), 0777);
}

}  // namespace nvx::test
