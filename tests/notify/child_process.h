// A helper program run by a test: its stdin and stdout are pipes, its environment is the test's
// with some variables changed or removed. stderr is shared with the test (sanitizer reports show).
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace nvx::test {

class ChildProcess {
 public:
  using Environment = std::map<std::string, std::optional<std::string>>;

  explicit ChildProcess(const std::vector<std::string> &argv, const Environment &changes = {});
  ~ChildProcess();
  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  void send(const std::string &line);
  // The next line of output (without its newline), or nothing if none came within `limit`.
  std::optional<std::string> readLine(std::chrono::milliseconds limit);
  // Lines up to and including the first that starts with `prefix`; nothing if it did not come.
  std::optional<std::vector<std::string>> readUntil(const std::string &prefix, std::chrono::milliseconds limit);
  // Closes stdin and waits for the exit: the exit status, or nothing if it did not end in `limit`
  // (it is then killed).
  std::optional<int> finish(std::chrono::milliseconds limit);

 private:
  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  std::string buffer_;
};

}  // namespace nvx::test
