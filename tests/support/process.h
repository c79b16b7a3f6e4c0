// The one way the tests start a program: the built tool, a helper, a bus daemon, a shell. Standard
// output and error are read as they come, so a child never blocks on a full pipe.
#pragma once

#include <nlohmann/json.hpp>
#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/test_accounts.h"

namespace nvx::test {

using namespace std::chrono_literals;

struct ProcessOptions {
  std::map<std::string, std::optional<std::string>> env = {};  // changes to the test's environment; nullopt unsets
  const TestAccount *asUser = nullptr;                     // run as this unprivileged account
  std::optional<uid_t> namespaceUser =
      {};  // run in a user namespace that maps only root and this user (no group of its own)
  std::string stdinFile = {};          // standard input from this file (else a pipe: writeLine, closeInput)
};

struct Finished {
  int exitCode = -1;  // the exit status, or 128 + the number of the signal that ended it
  std::string out;    // what standard output held that readLine did not hand out
  std::string err;
  std::chrono::milliseconds took{0};

  // Standard output as one JSON document, parsed once and kept, so a loop over a part of it is
  // safe; fails the test (and gives null) when it is not one.
  const nlohmann::json &json() const;
  std::vector<std::string> lines() const;
  std::string transcript() const;  // both streams, for failure messages

 private:
  mutable std::optional<nlohmann::json> parsed_;
};

class Process {
 public:
  explicit Process(const std::vector<std::string> &argv, const ProcessOptions &options = {});
  ~Process();  // a child still running is killed
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  void writeLine(const std::string &line);
  void closeInput();
  // The next whole line of standard output; nothing when none came within `timeout` or it ended.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  // Waits until standard error holds `text`; false on time-out or when the child ended first.
  bool waitForError(const std::string &text, std::chrono::milliseconds timeout);
  void signal(int number) const;
  // Closes standard input, waits for the end (killing the child after `timeout`) and collects the rest.
  Finished finish(std::chrono::milliseconds timeout = 60s);

 private:
  bool pump(std::chrono::milliseconds timeout);  // false once both streams are closed

  pid_t pid_ = -1;
  int in_ = -1, out_ = -1, err_ = -1;
  std::string outText_, errText_;
  size_t outConsumed_ = 0;
  std::chrono::steady_clock::time_point started_;
};

Finished run(const std::vector<std::string> &argv, const ProcessOptions &options = {});

}  // namespace nvx::test
