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

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>

#include "stress.h"
#include "support/plist_integers.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace nvx::test {
namespace {

constexpr int kWriters = 16, kKeysPerWriter = 100, kReaders = 2;

std::string writerPrefix(int writer) { return "Writer" + std::to_string(100 + writer).substr(1) + ".Key"; }

TEST(StressConcurrency, SimultaneousWritersLoseNoKeyAndReadersNeverSeeABrokenFile) {
  EnvGuard env;
  const char *base = std::getenv("MXRK7_STRESS_DIR");
  env.set("TMPDIR", std::string(base && *base ? base : "/dev/shm"));
  SettingsHome home;
  const int keys = kKeysPerWriter * testScale();
  // The file exists before the readers start, so every read of theirs must succeed.
  ASSERT_EQ(run({NVX_CORE_HELPER, "update", "Seed", "1"}).exitCode, 0);

  std::vector<std::unique_ptr<Process>> readers, writers;
  for (int r = 0; r < kReaders; ++r) readers.push_back(std::make_unique<Process>(std::vector<std::string>{NVX_CORE_HELPER, "read"}));
  for (int w = 0; w < kWriters; ++w)
    writers.push_back(std::make_unique<Process>(
        std::vector<std::string>{NVX_CORE_HELPER, "update", writerPrefix(w), std::to_string(keys), "--wait"}));
  const auto start = std::chrono::steady_clock::now();
  for (auto &writer : writers) writer->writeLine("go");
  long long longestWait = 0;  // the longest a writer went between two updates: about its longest wait for the lock
  for (int w = 0; w < kWriters; ++w) {
    const auto end = writers[w]->finish(600s);
    EXPECT_EQ(end.exitCode, 0) << end.transcript();
    const auto lines = end.lines();
    EXPECT_EQ(static_cast<int>(lines.size()), keys) << "writer " << w << " did not finish its updates";
    long long previous = 0;
    for (const std::string &line : lines) {
      EXPECT_TRUE(line.ends_with(" stored")) << "writer " << w << ": " << line;
      std::istringstream words(line);
      std::string done;
      long long index = 0, at = 0;
      words >> done >> index >> at;
      if (previous) longestWait = std::max(longestWait, at - previous);
      previous = at;
    }
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  long reads = 0;
  for (auto &reader : readers) {
    const auto summary = reader->finish(60s).out;
    std::istringstream words(summary);
    std::string w1, w2, w3;
    long count = 0, unreadable = -1, shrank = -1;
    ASSERT_TRUE(words >> w1 >> count >> w2 >> unreadable >> w3 >> shrank) << summary;
    EXPECT_GT(count, 0);
    EXPECT_EQ(unreadable, 0) << "a reader found the file unreadable";
    EXPECT_EQ(shrank, 0) << "a reader saw keys disappear";
    reads += count;
  }

  const auto values = plistIntegers(readFile(home.filePath()));
  ASSERT_TRUE(values);
  EXPECT_EQ(values->size(), static_cast<size_t>(kWriters * keys + 1));
  int lost = 0;
  for (int w = 0; w < kWriters; ++w)
    for (int k = 0; k < keys; ++k) {
      char key[64];
      std::snprintf(key, sizeof key, "%s%03d", writerPrefix(w).c_str(), k);  // as the helper names them
      lost += !(values->count(key) && values->at(key) == 1000 + k);
    }
  EXPECT_EQ(lost, 0) << "keys lost or wrong";
  EXPECT_EQ(temporaryFilesIn(home.home()), std::vector<std::string>{});
  EXPECT_FALSE(std::filesystem::exists(home.filePath() + ".bak")) << "an update found the file unreadable";
  std::cout << "concurrency (in " << home.home() << "): " << kWriters << " writers x " << keys << " keys in " << seconds
            << " s (" << (kWriters * keys) / seconds << " updates/s), " << reads << " reads by " << kReaders
            << " readers; longest time between two updates of one writer " << longestWait / 1000 << " ms\n";
}

}  // namespace
}  // namespace nvx::test
