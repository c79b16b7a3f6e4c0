// Concurrency: 16 processes update 100 keys of their own each, all let go at the same moment,
// through the library's store, while reader processes read the file over and over. No key may be
// lost, and no reader may ever find the file unreadable or holding fewer keys than before.
//
// The file lives on /dev/shm (a tmpfs) unless MXRK7_STRESS_DIR names another folder: this test is
// about the lock, and a shared machine's disk can stall a single fsync for seconds. A writer waits
// at most a few seconds for the lock and then does not make its update (it says so), so a stall
// that long refuses updates by design (see docs/RELIABILITY.md); on a tmpfs the test checks the
// locking itself, at a far higher rate of contention than a disk allows.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "stress_support.h"
#include "support/scratch_dir.h"

namespace nvx::stress {
namespace {

using namespace std::chrono_literals;

constexpr int kWriters = 16;
constexpr int kKeysPerWriter = 100;
constexpr int kReaders = 2;

std::string writerPrefix(int writer) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "Writer%02d.Key", writer);
  return prefix;
}

TEST(ConcurrencyTest, SimultaneousWritersLoseNoKeyAndReadersNeverSeeABrokenFile) {
  test::EnvGuard env;
  const char *base = std::getenv("MXRK7_STRESS_DIR");
  env.set("TMPDIR", std::string(base && *base ? base : "/dev/shm"));
  test::ScratchDir dir;
  env.set("XDG_CONFIG_HOME", dir.path());
  const std::string file = dir.file(kSettingsName);
  const int keys = kKeysPerWriter * scale();

  // The file exists before the readers start, so every read of theirs must succeed.
  {
    Process seed({NVX_STRESS_STORE, "update", "Seed", "1"});
    seed.drain();
    ASSERT_EQ(seed.wait(), 0);
  }
  ASSERT_TRUE(readIntegers(file).has_value());

  std::vector<std::unique_ptr<Process>> readers;
  for (int r = 0; r < kReaders; ++r) readers.push_back(std::make_unique<Process>(std::vector<std::string>{NVX_STRESS_STORE, "read"}));
  std::vector<std::unique_ptr<Process>> writers;
  for (int w = 0; w < kWriters; ++w)
    writers.push_back(std::make_unique<Process>(
        std::vector<std::string>{NVX_STRESS_STORE, "update", writerPrefix(w), std::to_string(keys), "--wait"}));

  const auto start = std::chrono::steady_clock::now();
  for (auto &writer : writers) writer->writeLine("go");
  // The longest a writer went between two of its updates (or from the start to its first): about
  // the longest it waited for the lock.
  long long longestWaitMicros = 0;
  timespec go{};
  clock_gettime(CLOCK_MONOTONIC, &go);
  const long long goMicros = go.tv_sec * 1'000'000LL + go.tv_nsec / 1000;
  for (int w = 0; w < kWriters; ++w) {
    const auto lines = writers[w]->drain();
    EXPECT_EQ(static_cast<int>(lines.size()), keys) << "writer " << w << " did not finish its updates";
    const auto refused = std::count_if(lines.begin(), lines.end(),
                                       [](const std::string &line) { return line.find(" stored ") == std::string::npos; });
    EXPECT_EQ(refused, 0) << "writer " << w << " had updates refused";
    EXPECT_EQ(writers[w]->wait(), 0) << "writer " << w;
    long long previous = goMicros;
    for (const std::string &line : lines) {
      const long long at = std::stoll(line.substr(line.rfind(' ') + 1));
      longestWaitMicros = std::max(longestWaitMicros, at - previous);
      previous = at;
    }
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

  long totalReads = 0;
  for (int r = 0; r < kReaders; ++r) {
    readers[r]->closeInput();
    const auto summary = readers[r]->readLine(60s);
    ASSERT_TRUE(summary.has_value()) << "reader " << r << " did not report";
    std::istringstream words(*summary);
    std::string w1, w2, w3, w4;
    long reads = 0, unreadable = -1, shrank = -1, largest = 0;
    ASSERT_TRUE(words >> w1 >> reads >> w2 >> unreadable >> w3 >> shrank >> w4 >> largest) << *summary;
    EXPECT_GT(reads, 0) << "reader " << r;
    EXPECT_EQ(unreadable, 0) << "reader " << r << " found the file unreadable";
    EXPECT_EQ(shrank, 0) << "reader " << r << " saw keys disappear";
    totalReads += reads;
    EXPECT_EQ(readers[r]->wait(), 0);
  }

  const auto values = readIntegers(file);
  ASSERT_TRUE(values.has_value());
  EXPECT_EQ(values->size(), static_cast<size_t>(kWriters * keys + 1));
  int lost = 0;
  for (int w = 0; w < kWriters; ++w) {
    for (int k = 0; k < keys; ++k) {
      char key[64];
      std::snprintf(key, sizeof key, "%s%03d", writerPrefix(w).c_str(), k);
      const auto found = values->find(key);
      if (found == values->end() || found->second != 1000 + k) ++lost;
    }
  }
  EXPECT_EQ(lost, 0) << "keys lost or wrong";
  EXPECT_EQ(values->count("Seed000"), 1U);
  EXPECT_EQ(leftoverTempFiles(dir.path()), std::vector<std::string>{});
  EXPECT_NE(access((file + ".bak").c_str(), F_OK), 0) << "an update found the file unreadable";

  std::cout << "concurrency (in " << dir.path() << "): " << kWriters << " writers x " << keys << " keys in " << seconds << " s ("
            << (kWriters * keys) / seconds << " updates/s), " << totalReads << " reads by " << kReaders
            << " readers; longest time between two updates of one writer " << longestWaitMicros / 1000 << " ms\n";
  RecordProperty("updates", kWriters * keys);
  RecordProperty("reads", static_cast<int>(totalReads));
  RecordProperty("longest_wait_ms", static_cast<int>(longestWaitMicros / 1000));
}

}  // namespace
}  // namespace nvx::stress
