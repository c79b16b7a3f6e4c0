// Cost of one exported setter (NVX_SetPADModeIndex) and one getter (NVX_GetPADModeIndex) through
// the shared library, by number of virtual mixers and by size of the settings file.
//
// Each case gets its own scratch folder holding the virtual mixers' config (no request log) and a
// settings file of the given number of keys; no session bus is reachable (the pad mode posts no
// change anyway). Wall-clock time: the setter waits for the disk (two fsyncs per update).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "NorvaneMXRK7Setup.h"
#include "bench_support.h"

namespace {

using nvx::bench::Scratch;

// One case's world: mixers on the virtual bus, a settings file of `keys` keys.
class World {
 public:
  World(uint32_t mixers, uint32_t keys) {
    const std::string config = scratch_.file("mixers.json");
    nvx::bench::writeFile(config, nvx::bench::virtualConfig(mixers));
    nvx::bench::writeFile(nvx::bench::settingsPath(scratch_.path()), nvx::bench::settingsXml(keys));
    nvx::bench::setEnv("MXRK7_VIRTUAL_MIXERS", config.c_str());
    nvx::bench::setEnv("XDG_CONFIG_HOME", scratch_.path().c_str());
    nvx::bench::setEnv("DBUS_SESSION_BUS_ADDRESS", nullptr);
    nvx::bench::setEnv("XDG_RUNTIME_DIR", nullptr);
  }

 private:
  Scratch scratch_;
};

void BM_SetPADModeIndex(benchmark::State &state) {
  const World world(static_cast<uint32_t>(state.range(0)), static_cast<uint32_t>(state.range(1)));
  uint32_t index = 0;
  for (auto _ : state) {
    const int32_t result = NVX_SetPADModeIndex(0, index);
    if (result != NVX_OK) state.SkipWithError("NVX_SetPADModeIndex failed");
    index = (index + 1) % 3;
  }
  state.counters["mixers"] = static_cast<double>(state.range(0));
  state.counters["keys"] = static_cast<double>(state.range(1));
}

void BM_GetPADModeIndex(benchmark::State &state) {
  const World world(static_cast<uint32_t>(state.range(0)), static_cast<uint32_t>(state.range(1)));
  for (auto _ : state) {
    uint32_t index = 7;
    const int32_t result = NVX_GetPADModeIndex(0, &index);
    if (result != NVX_OK || index != 1) state.SkipWithError("NVX_GetPADModeIndex did not read the stored 1");
    benchmark::DoNotOptimize(index);
  }
  state.counters["mixers"] = static_cast<double>(state.range(0));
  state.counters["keys"] = static_cast<double>(state.range(1));
}

void cases(benchmark::internal::Benchmark *b) {
  b->ArgNames({"mixers", "keys"});
  for (int64_t mixers : {0, 1, 4, 16})
    for (int64_t keys : {10, 100, 1000}) b->Args({mixers, keys});
  b->UseRealTime()->Unit(benchmark::kMicrosecond);
}

BENCHMARK(BM_SetPADModeIndex)->Apply(cases);
BENCHMARK(BM_GetPADModeIndex)->Apply(cases);

}  // namespace

BENCHMARK_MAIN();
