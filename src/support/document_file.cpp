#include "support/document_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "store/durable_file.h"
#include "store/file_paths.h"
#include "store/safe_file.h"

namespace nvx::support {

DocumentRead readDocumentFile(const std::string &path) {
  DocumentRead read;
  store::Fd opened;
  if (path != "-") {
    opened = store::Fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!opened.valid()) {
      read.error = errno;
      return read;
    }
  }
  auto bytes = store::readCapped(path == "-" ? STDIN_FILENO : opened.get(), kMaxDocumentBytes);
  read.tooLarge = bytes.failure == store::ReadFailure::TooLarge;
  if (!bytes.ok() && !read.tooLarge) read.error = errno != 0 ? errno : EIO;
  read.text = std::move(bytes.bytes);
  return read;
}

std::optional<int> writeDocumentFile(const std::string &path, std::string_view text) {
  struct stat info {};
  const bool exists = ::stat(path.c_str(), &info) == 0;
  const bool missing = !exists && errno == ENOENT;
  const bool device = path.starts_with("/dev/") || path.starts_with("/proc/");
  if (!device && (missing || (exists && S_ISREG(info.st_mode)))) {
    const auto target = store::realFileOf(path);
    if (!target) return ELOOP;
    const store::Fd folder(::open(store::parentOf(*target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.valid()) return errno;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    const store::Replacement replacement{folder.get(), store::baseNameOf(*target), text,
                                         exists ? info.st_mode : (0666 & ~mask),
                                         exists ? store::ownerToKeep(info) : std::nullopt};
    if (const auto failure = store::replaceDurably(replacement)) return failure->error;
    return std::nullopt;
  }
  store::Fd out(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666));
  if (!out.valid() || !store::writeAll(out.get(), text) || !out.close()) return errno;
  return std::nullopt;
}

}  // namespace nvx::support
