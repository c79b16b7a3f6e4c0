// The update reaches the disk whole: the new bytes are written and synced before the temporary file
// is renamed over the file, and the folder is synced after the rename. No crash test can see a
// missing fsync on a file system that survives the test, so the system calls of one update (the
// core helper's, in a process of its own) are traced and their order checked.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <regex>
#include <sstream>

#include "support/process.h"
#include "support/settings_file.h"

namespace {

using namespace nvx::test;

struct Call {
  std::string name, args, result;
};

std::vector<Call> tracedUpdate(SettingsHome &home, ScratchDir &trace) {
  const char *asan = std::getenv("ASAN_OPTIONS");  // LeakSanitizer does not work under ptrace
  const auto update = run({"strace", "-f", "-qq", "-o", trace.file("log"), "-e",
                        "trace=openat,write,fsync,fdatasync,rename,renameat,renameat2", NVX_CORE_HELPER, "set",
                        "MaxLevel", "2"},
                       {.env = {{"ASAN_OPTIONS", std::string(asan ? asan : "") + ":detect_leaks=0"}}});
  EXPECT_EQ(update.out, "stored\n") << update.transcript();
  EXPECT_EQ(home.value("MaxLevel"), 2);
  std::vector<Call> calls;
  const std::regex traced(R"(^\d+ +(\w+)\((.*)\) += (-?\d+))");
  std::istringstream log(readFile(trace.file("log")));
  for (std::string line; std::getline(log, line);)
    if (std::smatch m; std::regex_search(line, m, traced)) calls.push_back({m[1], m[2], m[3]});
  return calls;
}

TEST(StoreDurability, SyncsTheTemporaryFileBeforeTheRenameAndTheFolderAfter) {
  SettingsHome home;
  home.writeIntegers({{"Output0", 1}});
  ScratchDir trace;
  const auto calls = tracedUpdate(home, trace);
  const auto first = [&](size_t from, const std::function<bool(const Call &)> &is) {
    for (size_t i = from; i < calls.size(); ++i)
      if (is(calls[i])) return i;
    return std::string::npos;
  };
  const std::string temp = "\".com.norvane.MXR-K7autosetup.plist.";
  const size_t opened =
      first(0, [&](const Call &c) { return c.name == "openat" && c.args.find(temp) != std::string::npos; });
  ASSERT_NE(opened, std::string::npos) << "no temporary file was made:\n" << readFile(trace.file("log"));
  const std::string fd = calls[opened].result, folder = calls[opened].args.substr(0, calls[opened].args.find(','));
  const size_t written =
      first(opened, [&](const Call &c) { return c.name == "write" && c.args.starts_with(fd + ","); });
  const size_t synced = first(opened, [&](const Call &c) { return c.name.ends_with("sync") && c.args == fd; });
  const size_t renamed = first(opened, [&](const Call &c) {
    return c.name.starts_with("rename") && c.args.find(temp) != std::string::npos &&
           c.args.find(", \"com.norvane.MXR-K7autosetup.plist\"") != std::string::npos;
  });
  const size_t folderSynced = renamed == std::string::npos ? renamed : first(renamed, [&](const Call &c) {
    return c.name == "fsync" && c.args == folder;
  });
  const std::vector<size_t> order = {written, synced, renamed, folderSynced};
  EXPECT_TRUE(std::find(order.begin(), order.end(), std::string::npos) == order.end() &&
              std::is_sorted(order.begin(), order.end()))
      << "write(temp), fsync(temp), rename, fsync(folder) at calls " << ::testing::PrintToString(order) << " of:\n"
      << readFile(trace.file("log"));
}

}  // namespace
