#include "support/scratch_dir.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace nvx::test {

ScratchDir::ScratchDir() {
  const char *tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/nvx-test-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (!mkdtemp(buffer.data())) throw std::runtime_error("mkdtemp failed");
  path_ = buffer.data();
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  // Give back write access that a test took away before removing.
  for (auto it = fs::recursive_directory_iterator(path_, ignored); it != fs::recursive_directory_iterator();
       it.increment(ignored)) {
    if (it->is_directory(ignored) && !it->is_symlink(ignored)) chmod(it->path().c_str(), 0700);
  }
  chmod(path_.c_str(), 0700);
  fs::remove_all(path_, ignored);
}

std::string ScratchDir::write(const std::string &name, const std::string &content) const {
  const std::string full = file(name);
  fs::create_directories(fs::path(full).parent_path());
  std::ofstream out(full, std::ios::binary | std::ios::trunc);
  out << content;
  if (!out) throw std::runtime_error("cannot write " + full);
  return full;
}

void ScratchDir::letEveryoneIn() const { chmod(path_.c_str(), 0755); }

EnvGuard::~EnvGuard() {
  for (const auto &[name, value] : saved_) {
    if (value) setenv(name.c_str(), value->c_str(), 1);
    else unsetenv(name.c_str());
  }
}

void EnvGuard::set(const std::string &name, const std::optional<std::string> &value) {
  if (!saved_.contains(name)) {
    const char *old = std::getenv(name.c_str());
    saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
  }
  if (value) setenv(name.c_str(), value->c_str(), 1);
  else unsetenv(name.c_str());
}

std::string readFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

}  // namespace nvx::test
