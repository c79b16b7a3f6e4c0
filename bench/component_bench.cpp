// The setter's parts on their own, through the library's internal modules: the device loop over
// virtual mixers, loading the settings file, and the read-merge-write update measured against the
// bare durable write of the same bytes (same fsync-rename-fsync steps, nothing else).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "bench_support.h"
#include "store/auto_setup_file.h"
#include "store/plist_file.h"
#include "tables/settings.h"
#include "usb/device_loop.h"
#include "usb/transport.h"

namespace {

using nvx::bench::Scratch;

const auto &padMode() { return nvx::tables::setting(nvx::tables::SettingId::PadMode); }
std::string padModeKey() { return *padMode().key({}); }

class Settings {
 public:
  explicit Settings(uint32_t keys) {
    nvx::bench::writeFile(nvx::bench::settingsPath(scratch_.path()), nvx::bench::settingsXml(keys));
    nvx::bench::setEnv("XDG_CONFIG_HOME", scratch_.path().c_str());
  }
  std::string path() const { return nvx::bench::settingsPath(scratch_.path()); }

 private:
  Scratch scratch_;
};

class Mixers {
 public:
  explicit Mixers(uint32_t count) {
    const std::string config = scratch_.file("mixers.json");
    nvx::bench::writeFile(config, nvx::bench::virtualConfig(count));
    nvx::bench::setEnv("MXRK7_VIRTUAL_MIXERS", config.c_str());
  }

 private:
  Scratch scratch_;
};

// Count the mixers, then open, send one write and close each: the first half of every setter.
void BM_DeviceLoop(benchmark::State &state) {
  const Mixers mixers(static_cast<uint32_t>(state.range(0)));
  for (auto _ : state) {
    const nvx::usb::CallScope scope;
    benchmark::DoNotOptimize(nvx::usb::sendToEveryMixer(*padMode().request, 0x0100).count);
  }
}
BENCHMARK(BM_DeviceLoop)->ArgName("mixers")->Arg(0)->Arg(1)->Arg(4)->Arg(16)->UseRealTime()->Unit(benchmark::kMicrosecond);

// Reading and parsing the whole settings file: what every getter does.
void BM_LoadSettings(benchmark::State &state) {
  const Settings settings(static_cast<uint32_t>(state.range(0)));
  for (auto _ : state) {
    auto file = nvx::store::LoadAutoSetupFile();
    if (!file) state.SkipWithError("the settings file did not load");
    benchmark::DoNotOptimize(file);
  }
}
BENCHMARK(BM_LoadSettings)->ArgName("keys")->Arg(10)->Arg(100)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

// The update of one key by the file's size, for the CPU time it takes: the update's own work (read,
// parse, merge, write) is linear in the file, so 10 times the keys should cost at most about 10
// times the CPU (the fixed cost of the system calls aside).
void BM_StoreUpdate(benchmark::State &state) {
  const Settings settings(static_cast<uint32_t>(state.range(0)));
  int32_t value = 0;
  for (auto _ : state) {
    nvx::store::StoreAutoSetupValue(padModeKey(), value);
    value = (value + 1) % 3;
  }
}
BENCHMARK(BM_StoreUpdate)->ArgName("keys")->Arg(100)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

// The read-merge-write update of one key (lock, read, merge, write a temporary file, fsync, rename,
// fsync of the folder) against its physical work alone: the same bytes written to the same file
// with the same durable steps.
void BM_StoreUpdateVsBareWrite(benchmark::State &state) {
  const auto keys = static_cast<uint32_t>(state.range(0));
  const Settings settings(keys);
  const std::string bytes = nvx::bench::settingsXml(keys);
  const std::string path = settings.path();
  int32_t value = 0;
  nvx::bench::PairTimer timer;
  timer.run(
      state, [&] { if (!nvx::bench::bareDurableWrite(path, bytes)) state.SkipWithError("bare write failed"); },
      [&] {
        nvx::store::StoreAutoSetupValue(padModeKey(), value);
        value = (value + 1) % 3;
      });
  // The update must have kept every key.
  const auto file = nvx::store::LoadAutoSetupFile();
  if (!file || (keys > 1 && !file->contains("Bench.Filler.0001"))) state.SkipWithError("the update lost keys");
}
BENCHMARK(BM_StoreUpdateVsBareWrite)->ArgName("keys")->Arg(10)->Arg(100)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
