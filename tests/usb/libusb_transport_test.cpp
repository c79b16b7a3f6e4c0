// The libusb backend against USB devices emulated by umockdev: enumeration and its order, what goes
// on the wire, how each failure of a transfer or an open comes back, and the lifetime of libusb's
// context and thread.
#include <gtest/gtest.h>
#include <libusb.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/process.h"
#include "support/scratch_dir.h"
#include "usb/libusb_errors.h"
#include "usb/mixer_identity.h"
#include "usb/transport.h"
#include "usb/usb_testbed.h"

namespace nvx::usb {
namespace {

using test::MockUsbDevice;
using test::SetupBytes;
using test::UsbFault;

const MixerId kMixer = buildMixerId();

class LibusbBackend : public testing::Test {
 protected:
  void SetUp() override {
    env_.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);
    env_.set("MXRK7_USB_ID", std::nullopt);
  }

  MockUsbDevice &addMixer(uint8_t bus, const std::string &ports, uint8_t address) {
    return bed_.add(bus, ports, address, kMixer.vendor, kMixer.product);
  }
  // The test's transport, made at the first use (once the test has plugged its devices in).
  Transport &transport() {
    if (!transport_) transport_ = makeLibusbTransport();
    if (!transport_) throw std::runtime_error("no libusb transport");
    return *transport_;
  }

  test::UsbTestbed bed_;
  test::EnvGuard env_;
  std::shared_ptr<Transport> transport_;
};

// The first mixer of a fresh enumeration, not opened.
std::unique_ptr<Device> firstMixer(Transport &transport) {
  for (const auto &entry : transport.enumerate())
    if (entry.vendor == kMixer.vendor && entry.product == kMixer.product) return transport.reference(entry);
  return nullptr;
}

TEST_F(LibusbBackend, EnumeratesEveryDeviceByBusThenNumericPortPath) {
  // Added in bus order; libusb itself lists them the other way round, and a textual sort of the
  // port paths would put "10" before "2".
  bed_.add(200, "7", 2, 0x046d, 0xc52b);
  bed_.add(201, "10", 3, 0x05e3, 0x0608);  // a hub
  bed_.add(201, "2", 5, 0x1234, 0x0001);
  bed_.add(201, "10.4", 6, 0x1234, 0x0002);
  // bus, port path, node, identity, location (the bus, then one port per nibble)
  const char *expected[] = {
      "200 7 /dev/bus/usb/200/002 046d:c52b C8700000",
      "201 2 /dev/bus/usb/201/005 1234:0001 C9200000",
      "201 10 /dev/bus/usb/201/003 05e3:0608 C9A00000",
      "201 10.4 /dev/bus/usb/201/006 1234:0002 C9A40000",
  };
  EXPECT_STREQ(transport().name(), "libusb");
  const auto entries = transport().enumerate();
  ASSERT_EQ(entries.size(), std::size(expected));
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto device = transport().reference(entries[i]);
    ASSERT_TRUE(device);
    uint32_t location = 0;
    EXPECT_EQ(device->locationId(&location), kIOReturnSuccess);  // needs no open
    const auto &e = entries[i];
    char line[80];
    std::snprintf(line, sizeof line, "%u %s %s %04x:%04x %08X", e.bus, e.portPath.c_str(), e.node.c_str(), e.vendor,
                  e.product, location);
    EXPECT_EQ(line, std::string(expected[i]));
    EXPECT_EQ(e.queryResult, kIOReturnSuccess);
  }
  // An entry that no longer matches the last enumeration is refused.
  DeviceEntry stale = entries[1];
  stale.node = "/dev/bus/usb/201/009";
  EXPECT_FALSE(transport().reference(stale));
  stale = entries[1];
  stale.backendIndex = entries[0].backendIndex;
  EXPECT_FALSE(transport().reference(stale));
}

// Each outcome of a control transfer as the caller sees it, one request (each on a wIndex of its own)
// after the other on one open mixer: what comes back, the bytes moved, and one attempt on the wire
// with its setup bytes little-endian.
TEST_F(LibusbBackend, EveryOutcomeOfATransferReachesTheCaller) {
  const struct {
    const char *name;
    std::optional<UsbFault> fault;
    bool read;                    // a read of 2 bytes, else a write
    std::vector<uint8_t> answer;  // the device's answer to the read
    IOReturn code;
    uint32_t moved;
    std::array<uint8_t, 2> buffer;  // the caller's buffer afterwards (it starts as AA AA)
  } cases[] = {
      {"write", std::nullopt, false, {}, kIOReturnSuccess, 0, {0xAA, 0xAA}},
      {"full answer", std::nullopt, true, {0x07, 0x08, 0x09}, kIOReturnSuccess, 2, {0x07, 0x08}},
      {"short answer", std::nullopt, true, {0x07}, kIOReturnSuccess, 1, {0x07, 0xAA}},
      {"empty answer", std::nullopt, true, {}, kIOReturnSuccess, 0, {0xAA, 0xAA}},
      {"stalled read", UsbFault::Stall, true, {1, 2}, kIOUSBPipeStalled, 0, {0xAA, 0xAA}},
      {"I/O error in a write", UsbFault::IoError, false, {}, kIOReturnIOError, 0, {0xAA, 0xAA}},
      {"device gone", UsbFault::Gone, true, {1, 2}, kIOReturnNoDevice, 0, {0xAA, 0xAA}},
      {"timed out", UsbFault::Timeout, true, {1, 2}, kIOReturnTimeout, 0, {0xAA, 0xAA}},
  };
  auto &mixer = addMixer(201, "1", 2);
  const auto device = firstMixer(transport());
  ASSERT_TRUE(device);
  ASSERT_EQ(device->open(), kIOReturnSuccess);
  uint16_t wIndex = 0x8010;
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    ++wIndex;
    if (c.fault) mixer.fail(wIndex, *c.fault);
    mixer.answer(wIndex, 0x0207, c.answer);
    std::array<uint8_t, 2> buffer{0xAA, 0xAA};
    uint32_t moved = 99;
    const auto setup = c.read ? SetupPacket{0xC0, 0, 0x0207, wIndex, 2} : SetupPacket{0x40, 3, 0x0207, wIndex, 0};
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(device->control(setup, buffer.data(), &moved), c.code) << describeIOReturn(c.code);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(moved, c.moved);
    EXPECT_EQ(buffer, c.buffer);
    const auto low = static_cast<uint8_t>(wIndex);
    const SetupBytes read{0xC0, 0x00, 0x07, 0x02, low, 0x80, 0x02, 0x00};
    const SetupBytes write{0x40, 0x03, 0x07, 0x02, low, 0x80, 0x00, 0x00};
    EXPECT_EQ(mixer.requests().back(), c.read ? read : write);
    if (c.fault == UsbFault::Timeout) {  // the transfer gives up after its one second, not at once
      EXPECT_GE(elapsed, std::chrono::milliseconds(950));
      EXPECT_LT(elapsed, std::chrono::seconds(5));
    }
  }
  EXPECT_EQ(mixer.requests().size(), std::size(cases)) << "a transfer was tried again";
}

// Another program using this library holds the mixer (here: a transport of its own): the open fails
// as busy until it lets go. A device not open, before, after a failed open or after its close, sends
// nothing; once unplugged it cannot be opened.
TEST_F(LibusbBackend, OpenIsBusyWhileAnotherProgramHoldsTheMixer) {
  auto &mixer = addMixer(201, "1", 2);
  const auto other = makeLibusbTransport();
  ASSERT_TRUE(other);
  const auto held = firstMixer(*other), device = firstMixer(transport());
  ASSERT_TRUE(held && device);
  const SetupPacket write{0x40, 3, 1, 0x8002, 0};
  uint32_t moved = 99;
  EXPECT_NE(device->control(write, nullptr, &moved), kIOReturnSuccess) << "before the open";
  EXPECT_EQ(moved, 0u);
  ASSERT_EQ(held->open(), kIOReturnSuccess);
  EXPECT_EQ(device->open(), kIOReturnExclusiveAccess);
  EXPECT_NE(device->control(write, nullptr, &moved), kIOReturnSuccess) << "after a failed open";
  held->close();
  EXPECT_EQ(device->open(), kIOReturnSuccess);  // the failed attempt left nothing behind
  device->close();
  EXPECT_NE(device->control(write, nullptr, &moved), kIOReturnSuccess) << "after the close";
  EXPECT_TRUE(mixer.requests().empty());
  ASSERT_EQ(::unlink(mixer.hostNode().c_str()), 0);  // unplugged since the enumeration
  EXPECT_EQ(device->open(), kIOReturnNoDevice);
}

TEST_F(LibusbBackend, OpenWithoutAccessToTheNodeIsNotPrivileged) {
  auto &mixer = addMixer(201, "1", 2);
  bed_.shareWithEveryone();
  char id[16];
  std::snprintf(id, sizeof id, "%04x:%04x", kMixer.vendor, kMixer.product);
  // As a user of the tests' own (the tests run as root), against a node only root may use; the
  // same run succeeds when the node allows it.
  for (const auto &[mode, code] :
       {std::pair{mode_t{0666}, kIOReturnSuccess}, std::pair{mode_t{0600}, kIOReturnNotPrivileged}}) {
    ASSERT_EQ(::chmod(mixer.hostNode().c_str(), mode), 0);
    const auto run = test::run({NVX_CORE_HELPER, "open", id}, {.asUser = &test::testAccount(test::Role::User)});
    char line[32];
    std::snprintf(line, sizeof line, "open 0x%08X\n", static_cast<unsigned>(code));
    EXPECT_EQ(run.out, line) << run.transcript();
  }
}

TEST(LibusbErrors, EveryLibusbErrorHasItsOwnDescribedCode) {
  std::set<IOReturn> seen;
  // Every error libusb 1.0 has: LIBUSB_ERROR_IO (-1) down to LIBUSB_ERROR_NOT_SUPPORTED (-12), and LIBUSB_ERROR_OTHER.
  for (const int error : {-1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, int{LIBUSB_ERROR_OTHER}}) {
    SCOPED_TRACE(libusb_error_name(error));
    const IOReturn code = ioReturnFromLibusb(error);
    EXPECT_NE(code, kIOReturnSuccess);
    EXPECT_TRUE(seen.insert(code).second) << "shared code " << std::hex << code;
    EXPECT_STRNE(describeIOReturn(code), "unknown error");
  }
  // Success (a byte count included) is 0; an error libusb may add later is a general failure.
  EXPECT_EQ(ioReturnFromLibusb(LIBUSB_SUCCESS), kIOReturnSuccess);
  EXPECT_EQ(ioReturnFromLibusb(7), kIOReturnSuccess);
  EXPECT_EQ(ioReturnFromLibusb(-1000), kIOReturnError);
}

// Threads of this process that libusb started (it names its hot-plug monitor "libusb_event"),
// waiting up to `patience` for the first: the monitor names itself a moment after libusb_init.
size_t libusbThreads(std::chrono::milliseconds patience = {}) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (;; std::this_thread::sleep_for(std::chrono::milliseconds(5))) {
    size_t count = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task"))
      count += test::readFile(task.path() / "comm").starts_with("libusb");
    if (count > 0 || std::chrono::steady_clock::now() >= deadline) return count;
  }
}

TEST_F(LibusbBackend, ContextAndItsThreadLiveUntilTheLastDeviceIsReleased) {
  auto &mixer = addMixer(201, "1", 2);
  ASSERT_EQ(libusbThreads(), 0u);
  std::unique_ptr<Device> device;
  {
    const auto transport = makeLibusbTransport();
    ASSERT_TRUE(transport);
    device = firstMixer(*transport);
    ASSERT_TRUE(device);
    EXPECT_EQ(libusbThreads(std::chrono::seconds(2)), 1u);
  }
  // The transport is gone from view but the device still works through its context.
  ASSERT_EQ(device->open(), kIOReturnSuccess);
  uint32_t moved = 0;
  EXPECT_EQ(device->control({0x40, 3, 1, 0x8002, 0}, nullptr, &moved), kIOReturnSuccess);
  EXPECT_EQ(mixer.requests().size(), 1u);
  EXPECT_EQ(libusbThreads(), 1u);
  device.reset();
  EXPECT_EQ(libusbThreads(), 0u);
}

}  // namespace
}  // namespace nvx::usb
