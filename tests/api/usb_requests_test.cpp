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
using Lines = std::vector<std::string>;

class UsbRequests : public ::testing::Test {
 protected:
  // Opens mixer 0, runs `use` on it, closes it; returns the request lines it left.
  Lines onFirstMixer(const std::function<void(Device *)> &use) {
    USBDeviceHandle handle;
    EXPECT_EQ(open_pipes(&handle, 0), kIOReturnSuccess);
    bus.clearLog();
    use(handle.deviceRef.get());
    closeUSB(&handle);
    return bus.requests();
  }

  VirtualBus bus{std::vector<VirtualMixer>(1)};
};

// The setters' and status queries' requests are checked with them; these the library never sends.
TEST_F(UsbRequests, TheReservedAndToolOnlyWrappersPutTheirSetupBytesOnTheWire) {
  bus.setMixers({{.beatfx = {0xAA, 0xBB, 0xCC}}});
  EXPECT_EQ(onFirstMixer([](Device *d) { SetMidiChannelSetting(d, 0x1203); }), Lines{"0 40 03 03 12 04 80 00 00"});
  EXPECT_EQ(onFirstMixer([](Device *d) { SetMidiKeyModeSetting(d, 0x1203); }), Lines{"0 40 03 03 12 05 80 00 00"});
  uint8_t buffer[4] = {};
  EXPECT_EQ(onFirstMixer([&](Device *d) { GetBEATFXStatus(d, buffer, 3); }),
            Lines{"0 C0 00 00 00 05 80 03 00 -> AA BB CC"});
  EXPECT_EQ(buffer[2], 0xCC);
}

TEST_F(UsbRequests, OpeningFollowsTheHandleRules) {
  bus.setMixers(std::vector<VirtualMixer>(2));
  USBDeviceHandle handle;
  EXPECT_EQ(open_pipes(nullptr, 0), kIOReturnError);
  EXPECT_EQ(open_pipes(&handle, 2), kIOReturnError) << "only two mixers";
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
  EXPECT_EQ(bus.log(), (Lines{"1 open", "1 close"}));
}

// The loop visits every mixer in bus order (open, request, close), reports what each did (from the
// code its open or request returned), and skips one that does not open.
TEST(UsbDeviceLoop, ReportsWhatEveryMixerDid) {
  VirtualBus bus({{}, {.open = "busy"}, {.open = "denied"}, {.fail = {"0x8514"}}});
  const auto sent = sendToEveryMixer(Request::SetPADModeSetting, 0x0200);
  Lines results;
  for (const auto &mixer : sent.mixers)
    results.push_back(std::to_string(mixer.number) + " " + placeOf(mixer.bus, mixer.port) + " " +
                      resultName(mixer.result));
  EXPECT_EQ(results, (Lines{"0 0-virtual-0 ok", "1 0-virtual-1 busy", "2 0-virtual-2 denied", "3 0-virtual-3 failed"}));
  EXPECT_EQ(bus.log(), (Lines{"0 open", writeLine(0, 0x8514, 0x0200), "0 close", "1 open failed", "2 open failed",
                              "3 open", writeLine(3, 0x8514, 0x0200) + " -> error", "3 close"}));
  EXPECT_STREQ(describeIOReturn(kIOReturnExclusiveAccess), "busy: held by another program");
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
    EXPECT_EQ(bus.requests(), Lines{writeLine(2, 0x8514, 0x0100)});
  }
}

}  // namespace
}  // namespace nvx::test
