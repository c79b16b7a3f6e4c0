// Runs another program for a diagnosis, never for longer than a bound: the tool must not hang on
// a service manager that does not answer.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace mxrk7 {

struct CommandResult {
  int exitCode = -1;
  std::string out;  // standard output (standard error is discarded)
};

// Runs argv[0] (looked up in PATH) with standard input from /dev/null. nullopt when it cannot be
// started, is ended by a signal, or has not finished within `bound` (it is then killed).
std::optional<CommandResult> runBounded(const std::vector<std::string> &argv, std::chrono::milliseconds bound);

}  // namespace mxrk7
