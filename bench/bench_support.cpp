#include "bench_support.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace nvx::bench {

Scratch::Scratch(const char *tag) {
  const char *tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/" + tag + "-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (!mkdtemp(buffer.data())) throw std::runtime_error("mkdtemp failed for " + pattern);
  path_ = buffer.data();
}

Scratch::~Scratch() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void setEnv(const char *name, const char *value) {
  if (value) ::setenv(name, value, 1);
  else ::unsetenv(name);
}

std::string settingsXml(uint32_t keys) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n<dict>\n";
  if (keys > 0) xml += "\t<key>PADMode</key>\n\t<integer>1</integer>\n";
  for (uint32_t n = 1; n < keys; ++n) {
    char entry[96];
    std::snprintf(entry, sizeof entry, "\t<key>Bench.Filler.%04u</key>\n\t<integer>%u</integer>\n", n, n);
    xml += entry;
  }
  return xml + "</dict>\n</plist>\n";
}

std::string settingsPath(const std::string &configHome) {
  return configHome + "/com.norvane.MXR-K7autosetup.plist";
}

void writeFile(const std::string &path, const std::string &bytes) {
  FILE *out = std::fopen(path.c_str(), "wb");
  if (!out) throw std::runtime_error("cannot write " + path);
  const bool ok = std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  if (std::fclose(out) != 0 || !ok) throw std::runtime_error("cannot write " + path);
}

std::string virtualConfig(uint32_t mixers) {
  std::string text = "{\"mixers\": [";
  for (uint32_t n = 0; n < mixers; ++n) {
    if (n > 0) text += ", ";
    text += "{\"firmware\": [5, 1], \"input_selectors\": [4, 4, 4, 4]}";
  }
  return text + "]}\n";
}

bool bareDurableWrite(const std::string &path, const std::string &bytes) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash);
  std::string temp = folder + "/.bare-write-XXXXXX";
  const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
  if (fd < 0) return false;
  bool ok = ::write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  ok = ::fsync(fd) == 0 && ok;
  ok = ::close(fd) == 0 && ok;
  if (!ok || ::rename(temp.c_str(), path.c_str()) != 0) {
    ::unlink(temp.c_str());
    return false;
  }
  const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir < 0) return false;
  ok = ::fsync(dir) == 0;
  ::close(dir);
  return ok;
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void PairTimer::report(benchmark::State &state) const {
  const double bare = median(bare_);
  const double library = median(library_);
  state.counters["bare_us"] = bare;
  state.counters["library_us"] = library;
  state.counters["overhead_us"] = library - bare;
  state.counters["ratio"] = bare > 0 ? library / bare : 0;
}

}  // namespace nvx::bench
