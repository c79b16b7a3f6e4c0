// USB devices emulated with umockdev, for tests of the libusb backend without hardware.
//
// The test binary must run with libumockdev-preload in LD_PRELOAD from its start (see main.cpp).
// Each device gets a sysfs entry that libusb enumerates, an empty file standing for its device node,
// and an ioctl handler that plays the device's side of usbfs: it records the setup bytes of every
// control transfer and answers reads from a table, or fails them in the way a test asks for.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

typedef struct _UMockdevTestbed UMockdevTestbed;
typedef struct _UMockdevIoctlBase UMockdevIoctlBase;
typedef struct _UMockdevIoctlClient UMockdevIoctlClient;
typedef struct _UMockdevIoctlData UMockdevIoctlData;

namespace nvx::test {

// How a device fails a control transfer. A time-out is a request the device never answers.
enum class UsbFault { Stall, IoError, Gone, Timeout };

// The 8 setup bytes of a control transfer as they travel on the wire.
using SetupBytes = std::array<uint8_t, 8>;

class MockUsbDevice {
 public:
  MockUsbDevice(const MockUsbDevice &) = delete;
  MockUsbDevice &operator=(const MockUsbDevice &) = delete;
  ~MockUsbDevice();

  // A read with this wIndex and wValue is answered with `bytes` (at most wLength of them; fewer
  // make a short answer). A read without an answer stalls.
  void answer(uint16_t wIndex, uint16_t wValue, std::vector<uint8_t> bytes);
  // Every later request with this wIndex, read or write, fails with `fault`.
  void fail(uint16_t wIndex, UsbFault fault);
  // The setup bytes of every control transfer submitted so far, in order.
  std::vector<SetupBytes> requests() const;

  // The device node as the library names it, and the file standing for it in the testbed.
  const std::string &node() const { return node_; }
  const std::string &hostNode() const { return hostNode_; }

 private:
  friend class UsbTestbed;
  MockUsbDevice(std::string node, std::string hostNode);

  // A submitted URB waiting to be reaped, with the answer it will carry.
  struct Urb {
    UMockdevIoctlData *urb = nullptr;
    UMockdevIoctlData *buffer = nullptr;
    int status = 0;
    int actualLength = 0;
    std::vector<uint8_t> in;  // data stage of a read
  };

  static int onIoctl(UMockdevIoctlBase *handler, UMockdevIoctlClient *client, void *self);
  void submit(UMockdevIoctlClient *client);
  void reap(UMockdevIoctlClient *client);
  void discard(UMockdevIoctlClient *client);
  static void release(Urb &urb);

  std::string node_;
  std::string hostNode_;
  UMockdevIoctlBase *handler_ = nullptr;
  unsigned long handlerId_ = 0;

  mutable std::mutex mutex_;  // the handler runs on umockdev's worker thread
  std::map<std::pair<uint16_t, uint16_t>, std::vector<uint8_t>> answers_;
  std::map<uint16_t, UsbFault> faults_;
  std::vector<SetupBytes> requests_;
  std::deque<Urb> done_;      // answered, waiting for the reap
  std::vector<Urb> waiting_;  // never answered (time-outs) until libusb discards them
};

class UsbTestbed {
 public:
  UsbTestbed();
  ~UsbTestbed();
  UsbTestbed(const UsbTestbed &) = delete;
  UsbTestbed &operator=(const UsbTestbed &) = delete;

  // A device on `bus` at port path `ports` ("2", or "10.4" below the hub added earlier at "10"),
  // with device address `address` and the given identity.
  MockUsbDevice &add(uint8_t bus, const std::string &ports, uint8_t address, uint16_t vendor, uint16_t product);

  // Lets any user read the emulated sysfs, watch for devices and reach the devices' ioctl sockets,
  // so a test can run a helper program as an unprivileged user. Device node files keep their modes.
  void shareWithEveryone() const;

 private:
  UMockdevTestbed *testbed_ = nullptr;
  std::string root_;
  std::map<std::string, std::string> syspaths_;  // "201-10" -> its sysfs path, for devices below hubs
  std::vector<std::unique_ptr<MockUsbDevice>> devices_;
};

}  // namespace nvx::test
