// Concurrency: 16 processes update 100 keys of their own each, all let go at the same moment,
// through the library's store, while reader processes read the file over and over. No key may be
// lost, and no reader may ever find the file unreadable or holding fewer keys than before.
//
// The file lives on /dev/shm (a tmpfs) unless MXRK7_STRESS_DIR names another folder: this test is
// about the lock, and a shared machine's disk can stall one fsync for longer than a writer waits
// for the lock (see docs/RELIABILITY.md).
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>

#include "stress.h"
#include "support/plist_integers.h"
#include "support/process.h"
#include "support/settings_file.h"

namespace nvx::test {
namespace {

constexpr int kWriters = 16, kKeysPerWriter = 100, kReaders = 2;

TEST(StressConcurrency, SimultaneousWritersLoseNoKeyAndReadersNeverSeeABrokenFile) {
  EnvGuard env;
  const char *base = std::getenv("MXRK7_STRESS_DIR");
  env.set("TMPDIR", std::string(base && *base ? base : "/dev/shm"));
  SettingsHome home;
  const int keys = kKeysPerWriter * testScale();
  // The file exists before the readers start, so every read of theirs must succeed.
  ASSERT_EQ(run({NVX_CORE_HELPER, "update", "Seed", "1"}).exitCode, 0);

  std::vector<std::unique_ptr<Process>> readers, writers;
  for (int r = 0; r < kReaders; ++r)
    readers.push_back(std::make_unique<Process>(std::vector<std::string>{NVX_CORE_HELPER, "read"}));
  for (int w = 0; w < kWriters; ++w)
    writers.push_back(std::make_unique<Process>(std::vector<std::string>{
        NVX_CORE_HELPER, "update", "Writer" + std::to_string(10 + w) + ".Key", std::to_string(keys), "--wait"}));
  const auto start = std::chrono::steady_clock::now();
  for (auto &writer : writers) writer->writeLine("go");
  long long longestWait = 0;  // the longest a writer went between two updates: about its longest wait for the lock
  for (auto &writer : writers) {
    const auto end = writer->finish(600s);
    EXPECT_EQ(end.exitCode, 0) << end.transcript();
    EXPECT_EQ(static_cast<int>(end.lines().size()), keys) << "a writer did not finish its updates";
    long long previous = 0, index = 0, at = 0;
    for (const std::string &line : end.lines()) {
      EXPECT_TRUE(line.ends_with(" stored")) << line;
      ASSERT_EQ(std::sscanf(line.c_str(), "done %lld %lld", &index, &at), 2) << line;
      if (previous) longestWait = std::max(longestWait, at - previous);
      previous = at;
    }
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  long reads = 0;
  for (auto &reader : readers) {
    const auto summary = reader->finish(60s).out;
    long count = 0, unreadable = -1, shrank = -1;
    ASSERT_EQ(std::sscanf(summary.c_str(), "reads %ld unreadable %ld shrank %ld", &count, &unreadable, &shrank), 3)
        << summary;
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
      std::snprintf(key, sizeof key, "Writer%d.Key%03d", 10 + w, k);  // as the helper names them
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
