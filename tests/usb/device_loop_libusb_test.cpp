// The device loop over the libusb backend: a mixer that another program holds is skipped, and the
// loop still serves the mixers after it.
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "support/scratch_dir.h"
#include "usb/device_loop.h"
#include "usb/mixer_identity.h"
#include "usb/requests.h"
#include "usb/usb_testbed.h"

namespace nvx::usb {
namespace {

using test::NodeLock;
using test::SetupBytes;
using test::wireBytes;

class DeviceLoopOnLibusb : public testing::Test {
 protected:
  void SetUp() override {
    env_.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);
    env_.set("MXRK7_USB_ID", std::nullopt);
  }

  test::UsbTestbed bed_;
  test::EnvGuard env_;
};

TEST_F(DeviceLoopOnLibusb, BusyFirstMixerIsSkippedAndTheSecondStillServed) {
  const MixerId id = buildMixerId();
  auto &first = bed_.add(201, "1", 2, id.vendor, id.product);
  bed_.add(201, "2", 3, 0x046d, 0xc52b);  // not a mixer: never opened, never counted
  auto &second = bed_.add(201, "3", 4, id.vendor, id.product);

  SendReport sent;
  {
    const NodeLock other(first);
    ASSERT_TRUE(other.held());
    sent = sendToEveryMixer(Request::SetMixerOutputSetting, 0x0207);
  }
  EXPECT_EQ(sent.count, 2u);
  ASSERT_EQ(sent.mixers.size(), 2u);
  EXPECT_EQ(sent.mixers[0].result, MixerReport::Result::Busy);
  EXPECT_EQ(sent.mixers[1].result, MixerReport::Result::Ok);
  EXPECT_TRUE(first.requests().empty());
  EXPECT_EQ(second.requests(), std::vector<SetupBytes>{wireBytes(0x40, 3, 0x0207, 0x8002, 0)});
  // The loop closed the second mixer again: its lock is free.
  EXPECT_TRUE(NodeLock(second).held());
}

TEST_F(DeviceLoopOnLibusb, ReadsReachEveryMixerInBusOrder) {
  const MixerId id = buildMixerId();
  // Plugged in bus order, which libusb lists the other way round: the loop still visits port 1 first.
  auto &earlier = bed_.add(201, "1", 2, id.vendor, id.product);
  auto &later = bed_.add(201, "4", 3, id.vendor, id.product);
  earlier.answer(0x8001, 0, {0x05, 0x01});
  later.answer(0x8001, 0, {0x06, 0x02});

  std::vector<std::vector<uint8_t>> firmware;
  visitMixers(countMixers(), [&](Device &device) {
    std::vector<uint8_t> answer(2, 0);
    GetFirmwareVersionNumber(&device, answer.data(), 2);
    firmware.push_back(answer);
    return Visit::Next;
  });
  EXPECT_EQ(firmware, (std::vector<std::vector<uint8_t>>{{0x05, 0x01}, {0x06, 0x02}}));
  EXPECT_EQ(earlier.requests(), std::vector<SetupBytes>{wireBytes(0xC0, 0, 0, 0x8001, 2)});
}

}  // namespace
}  // namespace nvx::usb
