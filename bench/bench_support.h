// What the benchmarks share: scratch folders, environment settings, settings files of a given size,
// virtual mixer configs, and the bare work that a benchmark compares the library against.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace nvx::bench {

// A fresh folder below $TMPDIR (or /tmp), removed with its content on destruction.
class Scratch {
 public:
  explicit Scratch(const char *tag = "nvx-bench");
  ~Scratch();
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;
  const std::string &path() const { return path_; }
  std::string file(const std::string &name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Sets or (with nullptr) unsets an environment variable, for the whole process.
void setEnv(const char *name, const char *value);

// The XML property list holding `keys` integer entries: the key "PADMode" = 1 and filler keys
// "Bench.Filler.NNNN" that no setter touches (an application's own settings in the same file).
std::string settingsXml(uint32_t keys);

// The settings file as the library names it below `configHome`.
std::string settingsPath(const std::string &configHome);

// Writes `bytes` to `path` (plain write, no durability).
void writeFile(const std::string &path, const std::string &bytes);

// A virtual mixer config with `mixers` mixers of default answers and no request log.
std::string virtualConfig(uint32_t mixers);

// The bare durable replacement of a file: a temporary file in the same folder, write, fsync,
// close, rename over `path`, fsync of the folder. What any careful program does to save a file.
// Returns false on any failure.
bool bareDurableWrite(const std::string &path, const std::string &bytes);

// Times a piece of library work against the bare work it stands for, interleaved pair by pair (the
// order alternating), so that both see the same disk and the same load: a shared machine's noise
// then moves both numbers alike instead of skewing their ratio. Reports the medians and their
// ratio as counters of the benchmark: bare_us, library_us, overhead_us and ratio.
class PairTimer {
 public:
  template <class Bare, class Library>
  void run(benchmark::State &state, Bare &&bare, Library &&library) {
    bool bareFirst = true;
    for (auto _ : state) {
      if (bareFirst) {
        bare_.push_back(timed(bare));
        library_.push_back(timed(library));
      } else {
        library_.push_back(timed(library));
        bare_.push_back(timed(bare));
      }
      bareFirst = !bareFirst;
    }
    report(state);
  }

 private:
  template <class Work>
  static double timed(Work &&work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
  }
  void report(benchmark::State &state) const;

  std::vector<double> bare_;
  std::vector<double> library_;
};

double median(std::vector<double> values);

}  // namespace nvx::bench
