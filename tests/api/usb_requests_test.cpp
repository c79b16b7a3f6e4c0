// The request wrappers, the open/close functions and the device loop, on virtual mixers.
#include <gtest/gtest.h>

#include <functional>

#include "support/virtual_bus.h"
#include "usb/device_loop.h"
#include "usb/requests.h"
#include "usb/usb_access.h"

namespace nvx::test {
namespace {

using namespace nvx::usb;

class UsbRequests : public ::testing::Test {
 protected:
  // Opens mixer 0, runs `use` on it, closes it; returns the request lines it left.
  std::vector<std::string> onFirstMixer(const std::function<void(Device *)> &use) {
    USBDeviceHandle handle;
    EXPECT_EQ(open_pipes(&handle, 0), kIOReturnSuccess);
    bus.clearLog();
    use(handle.deviceRef.get());
    closeUSB(&handle);
    return bus.requests();
  }

  VirtualBus bus{std::vector<VirtualMixer>(1)};
};

// The setters' requests are checked with the setters; these two the library never sends.
TEST_F(UsbRequests, TheReservedMidiWrappersPutTheirSetupBytesOnTheWire) {
  EXPECT_EQ(onFirstMixer([](Device *d) { SetMidiChannelSetting(d, 0x1203); }), std::vector<std::string>{"0 40 03 03 12 04 80 00 00"});
  EXPECT_EQ(onFirstMixer([](Device *d) { SetMidiKeyModeSetting(d, 0x1203); }), std::vector<std::string>{"0 40 03 03 12 05 80 00 00"});
}

TEST_F(UsbRequests, EveryReadWrapperAsksForTheCallersLength) {
  VirtualMixer mixer;
  mixer.firmware = {0x05, 0x01};
  mixer.serato = 1;
  mixer.beatfx = {0xAA, 0xBB, 0xCC};
  bus.setMixers({mixer});
  uint8_t buffer[4] = {};
  EXPECT_EQ(onFirstMixer([&](Device *d) { GetFirmwareVersionNumber(d, buffer, 2); }),
            std::vector<std::string>{"0 C0 00 00 00 01 80 02 00 -> 05 01"});
  EXPECT_EQ(onFirstMixer([&](Device *d) { GetSeratoActiveInfo(d, buffer, 2); }),
            std::vector<std::string>{"0 C0 00 00 00 04 80 02 00 -> 01 00"});
  EXPECT_EQ(onFirstMixer([&](Device *d) { GetBEATFXStatus(d, buffer, 3); }),
            std::vector<std::string>{"0 C0 00 00 00 05 80 03 00 -> AA BB CC"});
  EXPECT_EQ(buffer[2], 0xCC);
}

TEST_F(UsbRequests, DeviceRequestReportsTheBytesMoved) {
  VirtualMixer mixer;
  mixer.firmware = {1, 2, 3};
  mixer.shortReads = {{"0x8001", 2}};
  bus.setMixers({mixer});
  uint8_t buffer[8] = {};
  uint16_t length = 8;
  IOReturn result = kIOReturnError;
  onFirstMixer([&](Device *d) { result = DeviceRequest(d, 0xC0, 0, 0, 0x8001, buffer, &length); });
  EXPECT_EQ(result, kIOReturnSuccess);
  EXPECT_EQ(length, 2);
  EXPECT_EQ(DeviceRequest(nullptr, 0xC0, 0, 0, 0x8001, buffer, &length), kIOReturnBadArgument);
}

TEST_F(UsbRequests, InputSelectorInfoLeavesElementsZeroAndFiveAlone) {
  VirtualMixer mixer;
  mixer.selectors = {1, 2, 3, 4};
  bus.setMixers({mixer});
  uint8_t buffer[6] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  IOReturn result = kIOReturnError;
  onFirstMixer([&](Device *d) { result = GetInputSelectorInfo(d, buffer, 6); });
  EXPECT_EQ(result, kIOReturnSuccess);
  EXPECT_EQ(std::vector<uint8_t>(buffer, buffer + 6), (std::vector<uint8_t>{0xEE, 1, 2, 3, 4, 0xEE}));
}

TEST_F(UsbRequests, InputSelectorInfoReturnsTheCodeOfTheFourthRequest) {
  VirtualMixer mixer;
  mixer.fail = {"0x8002"};
  bus.setMixers({mixer});
  uint8_t buffer[6] = {};
  IOReturn result = kIOReturnSuccess;
  onFirstMixer([&](Device *d) { result = GetInputSelectorInfo(d, buffer, 6); });
  EXPECT_EQ(result, kIOReturnIOError);
}

TEST_F(UsbRequests, OpeningFollowsTheHandleRules) {
  bus.setMixers(std::vector<VirtualMixer>(2));
  EXPECT_EQ(CheckUSBAudio(0), 2u);
  EXPECT_EQ(CheckUSBAudio(1), 0u);

  USBDeviceHandle handle;
  EXPECT_EQ(open_pipes(nullptr, 0), kIOReturnError);
  EXPECT_EQ(open_pipes(&handle, 2), kIOReturnError) << "only two mixers";
  EXPECT_EQ(handle.deviceRef, nullptr);

  handle.openGuard = 1;
  EXPECT_EQ(open_pipes(&handle, 0), kIOReturnError);
  EXPECT_EQ(handle.deviceRef, nullptr);
  handle.openGuard = 0;

  ASSERT_EQ(open_pipes(&handle, 1), kIOReturnSuccess);
  uint32_t location = 0;
  EXPECT_EQ(GetLocationID(handle.deviceRef.get(), &location), kIOReturnSuccess);
  EXPECT_EQ(openUSB(&handle, 0), kIOReturnError) << "a held reference is never replaced";
  closeUSB(&handle);
  closeUSB(&handle);  // an empty handle: nothing happens
  EXPECT_EQ(bus.log(), (std::vector<std::string>{"1 open", "1 close"}));
}

TEST_F(UsbRequests, AMixerThatCannotBeOpenedFailsWithItsOwnCode) {
  for (const auto &[mode, code] : {std::pair{"busy", kIOReturnExclusiveAccess}, std::pair{"denied", kIOReturnNotPrivileged}}) {
    VirtualMixer mixer;
    mixer.open = mode;
    bus.setMixers({mixer});
    bus.clearLog();
    USBDeviceHandle handle;
    EXPECT_EQ(open_pipes(&handle, 0), code) << mode;
    EXPECT_EQ(bus.log(), std::vector<std::string>{"0 open failed"});
  }
  EXPECT_STREQ(describeIOReturn(kIOReturnExclusiveAccess), "busy: held by another program");
}

// The loop reports every mixer it found, with what it did; one that does not open is skipped.
TEST(UsbDeviceLoop, ReportsWhatEveryMixerDid) {
  VirtualMixer busy, denied, failing;
  busy.open = "busy";
  denied.open = "denied";
  failing.fail = {"0x8514"};
  VirtualBus bus({VirtualMixer{}, busy, denied, failing});
  const auto sent = sendToEveryMixer(Request::SetPADModeSetting, 0x0200);
  std::vector<std::string> results;
  for (const auto &mixer : sent.mixers)
    results.push_back(std::to_string(mixer.number) + " " + placeOf(mixer.bus, mixer.port) + " " + resultName(mixer.result));
  EXPECT_EQ(results, (std::vector<std::string>{"0 0-virtual-0 ok", "1 0-virtual-1 busy", "2 0-virtual-2 denied",
                                                "3 0-virtual-3 failed"}));
  EXPECT_EQ(bus.log(), (std::vector<std::string>{"0 open", writeLine(0, 0x8514, 0x0200), "0 close", "1 open failed",
                                                 "2 open failed", "3 open", writeLine(3, 0x8514, 0x0200) + " -> error",
                                                 "3 close"}));
}

TEST(UsbDeviceLoop, StopsWhenAskedAndTalksOnlyToASelectedMixer) {
  VirtualBus bus(std::vector<VirtualMixer>(3));
  int calls = 0;
  visitMixers(countMixers(), [&](Device &) { return ++calls == 2 ? Visit::Stop : Visit::Next; });
  EXPECT_EQ(calls, 2);
  for (const MixerSelection &which : {MixerSelection{2, std::nullopt}, MixerSelection{std::nullopt, "0-virtual-2"}}) {
    bus.clearLog();
    const auto sent = sendToEveryMixer(Request::SetPADModeSetting, 0x0100, which);
    ASSERT_EQ(sent.mixers.size(), 1u);
    EXPECT_EQ(sent.mixers[0].number, 2u);
    EXPECT_EQ(bus.requests(), std::vector<std::string>{writeLine(2, 0x8514, 0x0100)});
  }
}

}  // namespace
}  // namespace nvx::test
