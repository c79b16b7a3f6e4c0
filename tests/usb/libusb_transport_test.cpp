// The libusb backend against USB devices emulated by umockdev: enumeration and its order, what goes
// on the wire, how each failure of a transfer or an open comes back, and the lifetime of libusb's
// context and threads.
#include <dirent.h>
#include <gtest/gtest.h>
#include <libusb.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <optional>
#include <set>
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
using test::NodeLock;
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

  test::UsbTestbed bed_;
  test::EnvGuard env_;
};

std::vector<DeviceEntry> mixersOf(Transport &transport) {
  std::vector<DeviceEntry> mixers;
  for (auto &entry : transport.enumerate())
    if (entry.vendor == kMixer.vendor && entry.product == kMixer.product) mixers.push_back(entry);
  return mixers;
}

// The n-th mixer of a fresh enumeration, opened.
std::unique_ptr<Device> openMixer(Transport &transport, size_t number = 0) {
  const auto mixers = mixersOf(transport);
  if (number >= mixers.size()) return nullptr;
  auto device = transport.reference(mixers[number]);
  if (!device || device->open() != kIOReturnSuccess) return nullptr;
  return device;
}

// ---- enumeration ----

TEST_F(LibusbBackend, EnumeratesEveryDeviceByBusThenNumericPortPath) {
  // Added in bus order; libusb itself lists them the other way round, and a textual sort of the
  // port paths would put "10" before "2".
  bed_.add(200, "7", 2, 0x046d, 0xc52b);
  bed_.add(201, "10", 3, 0x05e3, 0x0608, /*hubClass=*/true);
  addMixer(201, "2", 5);
  addMixer(201, "10.4", 6);

  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  EXPECT_STREQ(transport->name(), "libusb");
  const auto entries = transport->enumerate();

  struct Expected {
    uint8_t bus;
    const char *ports;
    const char *node;
    uint16_t vendor;
    uint16_t product;
  };
  const std::vector<Expected> expected = {
      {200, "7", "/dev/bus/usb/200/002", 0x046d, 0xc52b},
      {201, "2", "/dev/bus/usb/201/005", kMixer.vendor, kMixer.product},
      {201, "10", "/dev/bus/usb/201/003", 0x05e3, 0x0608},
      {201, "10.4", "/dev/bus/usb/201/006", kMixer.vendor, kMixer.product},
  };
  ASSERT_EQ(entries.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(expected[i].node);
    EXPECT_EQ(entries[i].queryResult, kIOReturnSuccess);
    EXPECT_EQ(entries[i].bus, expected[i].bus);
    EXPECT_EQ(entries[i].portPath, expected[i].ports);
    EXPECT_EQ(entries[i].node, expected[i].node);
    EXPECT_EQ(entries[i].vendor, expected[i].vendor);
    EXPECT_EQ(entries[i].product, expected[i].product);
  }
}

TEST_F(LibusbBackend, LocationIdHoldsBusThenOnePortPerNibble) {
  bed_.add(200, "7", 2, 0x046d, 0xc52b);
  bed_.add(201, "10", 3, 0x05e3, 0x0608, /*hubClass=*/true);
  addMixer(201, "10.4", 6);

  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const std::vector<std::pair<std::string, uint32_t>> expected = {
      {"/dev/bus/usb/200/002", 0xC8700000u},  // bus 200, port 7
      {"/dev/bus/usb/201/003", 0xC9A00000u},  // bus 201, port 10
      {"/dev/bus/usb/201/006", 0xC9A40000u},  // bus 201, port 10, then 4
  };
  const auto entries = transport->enumerate();
  ASSERT_EQ(entries.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(expected[i].first);
    ASSERT_EQ(entries[i].node, expected[i].first);
    const auto device = transport->reference(entries[i]);
    ASSERT_TRUE(device);
    uint32_t location = 0;
    EXPECT_EQ(device->locationId(&location), kIOReturnSuccess);  // needs no open
    EXPECT_EQ(location, expected[i].second);
  }
}

TEST_F(LibusbBackend, ReferenceRefusesAnEntryThatNoLongerMatches) {
  addMixer(201, "1", 2);
  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  auto entries = transport->enumerate();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_TRUE(transport->reference(entries[0]));

  DeviceEntry stale = entries[0];
  stale.node = "/dev/bus/usb/201/009";
  EXPECT_FALSE(transport->reference(stale));
  stale = entries[0];
  stale.backendIndex = 1;
  EXPECT_FALSE(transport->reference(stale));
}

// ---- control transfers ----

TEST_F(LibusbBackend, WriteAndReadPutTheExactSetupBytesOnTheWire) {
  auto &mixer = addMixer(201, "1", 2);
  mixer.answer(0x8001, 0, {0x05, 0x01});

  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const auto device = openMixer(*transport);
  ASSERT_TRUE(device);

  uint16_t unused = 0;
  uint32_t moved = 99;
  EXPECT_EQ(device->control({0x40, 3, 0x0207, 0x8002, 0}, reinterpret_cast<uint8_t *>(&unused), &moved),
            kIOReturnSuccess);
  EXPECT_EQ(moved, 0u);

  std::array<uint8_t, 2> answer{0xAA, 0xAA};
  EXPECT_EQ(device->control({0xC0, 0, 0, 0x8001, 2}, answer.data(), &moved), kIOReturnSuccess);
  EXPECT_EQ(moved, 2u);
  EXPECT_EQ(answer, (std::array<uint8_t, 2>{0x05, 0x01}));

  const std::vector<SetupBytes> expected = {
      {0x40, 0x03, 0x07, 0x02, 0x02, 0x80, 0x00, 0x00},
      {0xC0, 0x00, 0x00, 0x00, 0x01, 0x80, 0x02, 0x00},
  };
  EXPECT_EQ(mixer.requests(), expected);
}

struct TransferCase {
  const char *name;
  std::optional<UsbFault> fault;
  bool read;
  std::vector<uint8_t> answer;  // the device's answer to a read with wLength 2
  IOReturn code;
  uint32_t moved;
  std::array<uint8_t, 2> buffer;  // the caller's buffer afterwards (it starts as AA AA)
};

void PrintTo(const TransferCase &c, std::ostream *out) { *out << c.name; }

class LibusbTransfer : public LibusbBackend, public testing::WithParamInterface<TransferCase> {};

TEST_P(LibusbTransfer, OutcomeReachesTheCaller) {
  const TransferCase &c = GetParam();
  constexpr uint16_t kItem = 0x8005;
  auto &mixer = addMixer(201, "1", 2);
  if (c.fault) mixer.fail(kItem, *c.fault);
  mixer.answer(kItem, 0, c.answer);

  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const auto device = openMixer(*transport);
  ASSERT_TRUE(device);

  std::array<uint8_t, 2> buffer{0xAA, 0xAA};
  uint32_t moved = 99;
  const SetupPacket setup = c.read ? SetupPacket{0xC0, 0, 0, kItem, 2} : SetupPacket{0x40, 3, 0x0001, kItem, 0};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(device->control(setup, buffer.data(), &moved), c.code) << describeIOReturn(c.code);
  const auto elapsed = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(moved, c.moved);
  EXPECT_EQ(buffer, c.buffer);
  EXPECT_EQ(mixer.requests().size(), 1u);  // one attempt, no retry

  if (c.fault == UsbFault::Timeout) {
    // The transfer gives up after its one second, not at once and not much later.
    EXPECT_GE(elapsed, std::chrono::milliseconds(950));
    EXPECT_LT(elapsed, std::chrono::seconds(5));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, LibusbTransfer,
    testing::Values(TransferCase{"StalledRead", UsbFault::Stall, true, {1, 2}, kIOUSBPipeStalled, 0, {0xAA, 0xAA}},
                    TransferCase{"StalledWrite", UsbFault::Stall, false, {}, kIOUSBPipeStalled, 0, {0xAA, 0xAA}},
                    TransferCase{"IoErrorRead", UsbFault::IoError, true, {1, 2}, kIOReturnIOError, 0, {0xAA, 0xAA}},
                    TransferCase{"IoErrorWrite", UsbFault::IoError, false, {}, kIOReturnIOError, 0, {0xAA, 0xAA}},
                    TransferCase{"DeviceGone", UsbFault::Gone, true, {1, 2}, kIOReturnNoDevice, 0, {0xAA, 0xAA}},
                    TransferCase{"TimedOut", UsbFault::Timeout, true, {1, 2}, kIOReturnTimeout, 0, {0xAA, 0xAA}},
                    TransferCase{"ShortAnswer", std::nullopt, true, {0x07}, kIOReturnSuccess, 1, {0x07, 0xAA}},
                    TransferCase{"EmptyAnswer", std::nullopt, true, {}, kIOReturnSuccess, 0, {0xAA, 0xAA}},
                    TransferCase{
                        "FullAnswer", std::nullopt, true, {0x07, 0x08, 0x09}, kIOReturnSuccess, 2, {0x07, 0x08}}),
    [](const testing::TestParamInfo<TransferCase> &param) { return std::string(param.param.name); });

TEST_F(LibusbBackend, TransferOnADeviceNotOpenFailsWithoutReachingIt) {
  auto &mixer = addMixer(201, "1", 2);
  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const auto mixers = mixersOf(*transport);
  ASSERT_EQ(mixers.size(), 1u);
  const auto device = transport->reference(mixers[0]);
  ASSERT_TRUE(device);

  uint32_t moved = 99;
  EXPECT_NE(device->control({0x40, 3, 1, 0x8002, 0}, nullptr, &moved), kIOReturnSuccess);
  EXPECT_EQ(moved, 0u);
  ASSERT_EQ(device->open(), kIOReturnSuccess);
  device->close();
  EXPECT_NE(device->control({0x40, 3, 1, 0x8002, 0}, nullptr, &moved), kIOReturnSuccess);
  EXPECT_TRUE(mixer.requests().empty());
}

// ---- opening ----

TEST_F(LibusbBackend, OpenIsBusyWhileAnotherProgramHoldsTheMixer) {
  auto &mixer = addMixer(201, "1", 2);
  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const auto mixers = mixersOf(*transport);
  ASSERT_EQ(mixers.size(), 1u);
  const auto device = transport->reference(mixers[0]);
  ASSERT_TRUE(device);

  {
    const NodeLock other(mixer);
    ASSERT_TRUE(other.held());
    EXPECT_EQ(device->open(), kIOReturnExclusiveAccess);
    uint32_t moved = 0;
    EXPECT_NE(device->control({0x40, 3, 1, 0x8002, 0}, nullptr, &moved), kIOReturnSuccess);
  }
  EXPECT_EQ(device->open(), kIOReturnSuccess);  // the failed attempt left nothing behind
  EXPECT_TRUE(mixer.requests().empty());
}

TEST_F(LibusbBackend, TwoUsersOfTheLibraryNeverHoldTheSameMixer) {
  addMixer(201, "1", 2);
  // Separate transports, as two programs would each have their own.
  const auto first = makeLibusbTransport();
  const auto second = makeLibusbTransport();
  ASSERT_TRUE(first && second);
  const auto held = openMixer(*first);
  ASSERT_TRUE(held);

  const auto mixers = mixersOf(*second);
  ASSERT_EQ(mixers.size(), 1u);
  const auto waiting = second->reference(mixers[0]);
  ASSERT_TRUE(waiting);
  EXPECT_EQ(waiting->open(), kIOReturnExclusiveAccess);
  held->close();
  EXPECT_EQ(waiting->open(), kIOReturnSuccess);
}

TEST_F(LibusbBackend, OpenOfAMixerUnpluggedSinceEnumerationIsNoDevice) {
  auto &mixer = addMixer(201, "1", 2);
  const auto transport = makeLibusbTransport();
  ASSERT_TRUE(transport);
  const auto mixers = mixersOf(*transport);
  ASSERT_EQ(mixers.size(), 1u);
  const auto device = transport->reference(mixers[0]);
  ASSERT_TRUE(device);
  ASSERT_EQ(::unlink(mixer.hostNode().c_str()), 0);
  EXPECT_EQ(device->open(), kIOReturnNoDevice);
}

TEST_F(LibusbBackend, OpenWithoutAccessToTheNodeIsNotPrivileged) {
  auto &mixer = addMixer(201, "1", 2);
  bed_.shareWithEveryone();
  char id[16];
  std::snprintf(id, sizeof id, "%04x:%04x", kMixer.vendor, kMixer.product);
  // As a user of the tests' own (the tests run as root), against a node only root may use; the
  // same run succeeds when the node allows it.
  for (const auto &[mode, code] : {std::pair{mode_t{0666}, kIOReturnSuccess}, std::pair{mode_t{0600}, kIOReturnNotPrivileged}}) {
    ASSERT_EQ(::chmod(mixer.hostNode().c_str(), mode), 0);
    const auto run = test::run({NVX_CORE_HELPER, "open", id}, {.asUser = &test::testAccount(test::Role::User)});
    char line[32];
    std::snprintf(line, sizeof line, "open 0x%08X\n", static_cast<unsigned>(code));
    EXPECT_EQ(run.out, line) << run.transcript();
  }
}

// ---- codes and lifetime ----

TEST(LibusbErrors, EveryLibusbErrorHasItsOwnDescribedCode) {
  const std::vector<int> errors = {LIBUSB_ERROR_IO,          LIBUSB_ERROR_INVALID_PARAM, LIBUSB_ERROR_ACCESS,
                                   LIBUSB_ERROR_NO_DEVICE,   LIBUSB_ERROR_NOT_FOUND,     LIBUSB_ERROR_BUSY,
                                   LIBUSB_ERROR_TIMEOUT,     LIBUSB_ERROR_OVERFLOW,      LIBUSB_ERROR_PIPE,
                                   LIBUSB_ERROR_INTERRUPTED, LIBUSB_ERROR_NO_MEM,        LIBUSB_ERROR_NOT_SUPPORTED,
                                   LIBUSB_ERROR_OTHER};
  std::set<IOReturn> seen;
  for (const int error : errors) {
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

// Threads of this process that libusb started (it names its hot-plug monitor "libusb_event").
size_t libusbThreads() {
  size_t count = 0;
  if (DIR *tasks = ::opendir("/proc/self/task")) {
    while (const dirent *entry = ::readdir(tasks)) {
      if (entry->d_name[0] == '.') continue;
      const std::string name = test::readFile(std::string("/proc/self/task/") + entry->d_name + "/comm");
      if (name.rfind("libusb", 0) == 0) ++count;
    }
    ::closedir(tasks);
  }
  return count;
}

// The monitor names itself once it runs, which may be a moment after libusb_init returned.
size_t libusbThreadsOnceNamed() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  size_t count = libusbThreads();
  while (count == 0 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    count = libusbThreads();
  }
  return count;
}

TEST_F(LibusbBackend, ContextAndItsThreadLiveUntilTheLastDeviceIsReleased) {
  auto &mixer = addMixer(201, "1", 2);
  ASSERT_EQ(libusbThreads(), 0u);
  std::unique_ptr<Device> device;
  {
    const auto transport = makeLibusbTransport();
    ASSERT_TRUE(transport);
    const auto mixers = mixersOf(*transport);
    ASSERT_EQ(mixers.size(), 1u);
    device = transport->reference(mixers[0]);
    ASSERT_TRUE(device);
    EXPECT_EQ(libusbThreadsOnceNamed(), 1u);
  }
  // The transport is gone from view but the device still works through its context.
  ASSERT_EQ(device->open(), kIOReturnSuccess);
  uint32_t moved = 0;
  EXPECT_EQ(device->control({0x40, 3, 1, 0x8002, 0}, nullptr, &moved), kIOReturnSuccess);
  EXPECT_EQ(mixer.requests().size(), 1u);
  EXPECT_EQ(libusbThreads(), 1u);
  device.reset();
  EXPECT_EQ(libusbThreads(), 0u);
  // Its lock went with it.
  EXPECT_TRUE(NodeLock(mixer).held());
}

}  // namespace
}  // namespace nvx::usb
