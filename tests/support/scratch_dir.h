// Temporary folders and environment variables for one test, undone when the test ends.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace nvx::test {

// A fresh folder below $TMPDIR (or /tmp), removed with its content on destruction.
class ScratchDir {
 public:
  ScratchDir();
  ~ScratchDir();
  ScratchDir(const ScratchDir &) = delete;
  ScratchDir &operator=(const ScratchDir &) = delete;

  const std::string &path() const { return path_; }
  std::string file(const std::string &name) const { return path_ + "/" + name; }
  // Writes `content` to `name` (folders below are created) and returns the full path.
  std::string write(const std::string &name, const std::string &content) const;
  // Lets every user into the folder (mode 0755: not to write in it), so that a test can act as an
  // unprivileged user in a folder of that user's own below it.
  void letEveryoneIn() const;

 private:
  std::string path_;
};

// Sets (or with nullopt unsets) environment variables; the old values come back on destruction.
class EnvGuard {
 public:
  EnvGuard() = default;
  ~EnvGuard();
  EnvGuard(const EnvGuard &) = delete;
  EnvGuard &operator=(const EnvGuard &) = delete;
  void set(const std::string &name, const std::optional<std::string> &value);

 private:
  std::map<std::string, std::optional<std::string>> saved_;
};

std::string readFile(const std::string &path);

}  // namespace nvx::test
