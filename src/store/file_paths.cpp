#include "store/file_paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace nvx::store {

namespace {

// Symbolic links followed before giving up, as the kernel does (ELOOP).
constexpr int kMaxSymlinkHops = 40;

}  // namespace

std::string parentOf(const std::string &path) {
  const size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

std::string baseNameOf(const std::string &path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::optional<std::string> realFileOf(const std::string &path) {
  std::string current = path;
  for (int hop = 0; hop <= kMaxSymlinkHops; ++hop) {
    struct stat info {};
    if (::lstat(current.c_str(), &info) != 0) {
      if (errno == ENOENT) return current;
      return std::nullopt;
    }
    if (!S_ISLNK(info.st_mode)) return current;
    std::vector<char> target(static_cast<size_t>(info.st_size > 0 ? info.st_size : 255) + 1);
    ssize_t length;
    for (;;) {
      length = ::readlink(current.c_str(), target.data(), target.size());
      if (length < 0) return std::nullopt;
      if (static_cast<size_t>(length) < target.size()) break;
      target.resize(target.size() * 2);
    }
    std::string next(target.data(), static_cast<size_t>(length));
    current = next.starts_with('/') ? next : parentOf(current) + "/" + next;
  }
  return std::nullopt;
}

}  // namespace nvx::store
