// The library's overhead over the physical work of a setter, with one mixer emulated by umockdev
// (the libusb backend, as with a real mixer). Each benchmark times library and bare work in
// interleaved pairs (see PairTimer):
//
//   DeviceLoopVsBareLibusb   the library's device loop for one setting (count, open with the
//                            advisory lock, one control transfer, close, in one call scope) against
//                            a bare libusb program's work: init, list, open, the same transfer,
//                            close, exit
//   SetterVsBareWork         the exported setter NVX_SetPADModeIndex (device loop, then the
//                            read-merge-write update) against the bare libusb work followed by the
//                            bare durable write of the same settings file (fsync, rename, fsync of
//                            the folder)
//
// The program must run with umockdev's preload library in place; it starts itself again with it.
#include <benchmark/benchmark.h>
#include <libusb.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "NorvaneMXRK7Setup.h"
#include "bench_support.h"
#include "tables/settings.h"
#include "usb/device_loop.h"
#include "usb/mixer_identity.h"
#include "usb/transport.h"
#include "usb/umockdev_preload.h"
#include "usb/usb_testbed.h"

namespace {

constexpr uint16_t kPadModeIndex = 0x8514;
constexpr uint32_t kSettingsKeys = 10;

// The emulated bus with one mixer, and a settings folder; made once for all benchmarks.
struct Rig {
  Rig() {
    const nvx::usb::MixerId id = nvx::usb::buildMixerId();
    mixer = &testbed.add(1, "2", 3, id.vendor, id.product);
    settingsFile = nvx::bench::settingsPath(settings.path());
    settingsBytes = nvx::bench::settingsXml(kSettingsKeys);
    nvx::bench::writeFile(settingsFile, settingsBytes);
    nvx::bench::setEnv("XDG_CONFIG_HOME", settings.path().c_str());
    nvx::bench::setEnv("MXRK7_VIRTUAL_MIXERS", nullptr);
    nvx::bench::setEnv("MXRK7_USB_ID", nullptr);
    nvx::bench::setEnv("DBUS_SESSION_BUS_ADDRESS", nullptr);
    nvx::bench::setEnv("XDG_RUNTIME_DIR", nullptr);
  }
  nvx::test::UsbTestbed testbed;
  nvx::test::MockUsbDevice *mixer = nullptr;
  nvx::bench::Scratch settings;
  std::string settingsFile;
  std::string settingsBytes;
};

Rig *rig = nullptr;

// What a program that knows nothing of this library does to send one vendor write to the mixer.
bool bareLibusbWrite(uint16_t value) {
  const nvx::usb::MixerId id = nvx::usb::buildMixerId();
  libusb_context *context = nullptr;
  if (libusb_init(&context) != LIBUSB_SUCCESS) return false;
  libusb_device **list = nullptr;
  const ssize_t count = libusb_get_device_list(context, &list);
  bool sent = false;
  for (ssize_t i = 0; i < count && !sent; ++i) {
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(list[i], &descriptor) != LIBUSB_SUCCESS) continue;
    if (descriptor.idVendor != id.vendor || descriptor.idProduct != id.product) continue;
    libusb_device_handle *handle = nullptr;
    if (libusb_open(list[i], &handle) != LIBUSB_SUCCESS) break;
    sent = libusb_control_transfer(handle, 0x40, 3, value, kPadModeIndex, nullptr, 0, 1000) == 0;
    libusb_close(handle);
  }
  if (count >= 0) libusb_free_device_list(list, 1);
  libusb_exit(context);
  return sent;
}

// Fails the benchmark unless each iteration reached the mixer `perIteration` times.
void expectRequests(benchmark::State &state, size_t before, size_t perIteration) {
  const size_t sent = rig->mixer->requests().size() - before;
  if (sent != perIteration * static_cast<size_t>(state.iterations()))
    state.SkipWithError("the mixer did not see every request");
}

// The device loop of one setting against a bare libusb program's work.
void BM_DeviceLoopVsBareLibusb(benchmark::State &state) {
  const auto send = *nvx::tables::setting(nvx::tables::SettingId::PadMode).request;
  const size_t before = rig->mixer->requests().size();
  nvx::bench::PairTimer timer;
  timer.run(
      state, [&] { if (!bareLibusbWrite(0x0100)) state.SkipWithError("bare libusb write failed"); },
      [&] {
        const nvx::usb::CallScope scope;
        if (nvx::usb::sendToEveryMixer(send, 0x0100).count != 1) state.SkipWithError("the mixer was not found");
      });
  expectRequests(state, before, 2);
}

// The exported setter against everything it must do: the bare libusb write, then the bare durable
// write of the settings file.
void BM_SetterVsBareWork(benchmark::State &state) {
  const size_t before = rig->mixer->requests().size();
  nvx::bench::PairTimer timer;
  timer.run(
      state,
      [&] {
        if (!bareLibusbWrite(0x0100) || !nvx::bench::bareDurableWrite(rig->settingsFile, rig->settingsBytes))
          state.SkipWithError("bare setter work failed");
      },
      [&] { if (NVX_SetPADModeIndex(0, 1) != NVX_OK) state.SkipWithError("NVX_SetPADModeIndex failed"); });
  expectRequests(state, before, 2);
}

BENCHMARK(BM_DeviceLoopVsBareLibusb)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SetterVsBareWork)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv) {
  if (!nvx::test::runUnderUmockdev(argv)) return 1;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  Rig world;
  rig = &world;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  rig = nullptr;
  return 0;
}
