// Runs the built mxrk7 as a child process and captures what it prints and how it ends. The child
// inherits the test's environment (virtual mixers, settings folder, locale).
#pragma once

#include <nlohmann/json.hpp>
#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace nvx::test {

struct ToolResult {
  int exitCode = -1;  // the exit status, or 128 + signal number when a signal ended the tool
  std::string out;
  std::string err;
  std::chrono::milliseconds took{0};

 private:
  mutable std::optional<nlohmann::json> parsed_;

 public:

  // Standard output parsed as one JSON document; fails the test (and gives null) if it is not.
  // Parsed once and kept, so references into it live as long as the result (and a missing key
  // reads as null rather than failing an assertion).
  nlohmann::json &json() const;
  // Both streams, for failure messages.
  std::string transcript() const;
};

// How the tool is started beyond its arguments.
struct ToolOptions {
  std::vector<std::string> wrapper;  // a command that runs the tool, such as setpriv with its options
  std::string stdinFile;             // standard input from this file (else the test's own)
};

// A running tool. Reads both streams as they come so the child never blocks on a full pipe.
class ToolProcess {
 public:
  explicit ToolProcess(const std::vector<std::string> &args, const ToolOptions &options = {});
  ~ToolProcess();
  ToolProcess(const ToolProcess &) = delete;
  ToolProcess &operator=(const ToolProcess &) = delete;

  // The next whole line of standard output, waiting at most `timeout`.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  // Waits until standard error holds `text`; false on time-out or when the tool ended first.
  bool waitForError(const std::string &text, std::chrono::milliseconds timeout);
  void signal(int number) const;
  // Waits for the end (killing the tool after `timeout`) and collects the rest of its output.
  ToolResult finish(std::chrono::milliseconds timeout = std::chrono::seconds(60));

 private:
  // Reads what is available within `timeout`; false once both streams are closed.
  bool pump(std::chrono::milliseconds timeout);

  pid_t pid_ = -1;
  int outFd_ = -1;
  int errFd_ = -1;
  std::string out_;
  std::string err_;
  size_t outConsumed_ = 0;  // bytes of out_ handed out by readLine
  std::chrono::steady_clock::time_point started_;
};

// The tool with `args`, run to its end.
ToolResult runTool(const std::vector<std::string> &args, const ToolOptions &options = {});

}  // namespace nvx::test
