// What the stress tests share: helper processes with piped standard input and output, the size
// factor of a run, and the settings file read independently of the library.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace nvx::stress {

// Bounded sizes by default (CI); MXRK7_STRESS_SCALE=N multiplies the rounds and counts of a run.
int scale();

// A helper program with pipes for its standard input and output; standard error is shared.
class Process {
 public:
  explicit Process(const std::vector<std::string> &argv);
  ~Process();
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  pid_t pid() const { return pid_; }
  void writeLine(const std::string &line);
  void closeInput();
  // The next line of output without its newline; nothing when the output ended or nothing came
  // within `limit`.
  std::optional<std::string> readLine(std::chrono::milliseconds limit);
  // Every line still to come until the output ends (after a kill: what the process had written).
  std::vector<std::string> drain();
  void kill(int signal);
  // Waits for the end: the raw wait status.
  int wait();

 private:
  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  bool waited_ = false;
  int status_ = 0;
  std::string buffer_;
};

// The settings file's integer entries, parsed with libplist directly; nothing when the file is
// missing, is not a property list or has another root than a dictionary.
std::optional<std::map<std::string, int64_t>> readIntegers(const std::string &path);

// Names of update temporary files (".com.norvane.MXR-K7autosetup.plist.XXXXXX") in `folder`.
std::vector<std::string> leftoverTempFiles(const std::string &folder);

std::string fileBytes(const std::string &path);

inline constexpr const char *kSettingsName = "com.norvane.MXR-K7autosetup.plist";

}  // namespace nvx::stress
