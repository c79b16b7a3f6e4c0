// Test runner for the libusb backend under umockdev: starts itself again with umockdev's preload
// library when it is missing, whether run by CTest (also for test discovery) or by hand.
#include <gtest/gtest.h>

#include "usb/umockdev_preload.h"

int main(int argc, char **argv) {
  if (!nvx::test::runUnderUmockdev(argv)) return 1;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
