#include "store/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace nvx::store {

namespace {

ReadFailure failureOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return ReadFailure::Missing;
    case EACCES:
    case EPERM:
      return ReadFailure::Denied;
    case ELOOP:   // a link where none may be
    case ENXIO:   // a FIFO without a reader, a device without its driver
    case ENODEV:
    case EISDIR:
      return ReadFailure::NotRegular;
    default:
      return ReadFailure::Failed;
  }
}

}  // namespace

Fd openRegularFile(int folderFd, const std::string &name, bool followLinks, ReadFailure &failure) {
  const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (followLinks ? 0 : O_NOFOLLOW);
  Fd fd(::openat(folderFd, name.c_str(), flags));
  if (!fd.valid()) {
    failure = failureOf(errno);
    return fd;
  }
  struct stat info {};
  if (::fstat(fd.get(), &info) != 0) {
    failure = failureOf(errno);
    return Fd();
  }
  if (!S_ISREG(info.st_mode)) {
    failure = ReadFailure::NotRegular;
    return Fd();
  }
  failure = ReadFailure::None;
  return fd;
}

FileBytes readCapped(int fd, size_t maxBytes) {
  FileBytes result;
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0) {
    if (static_cast<uint64_t>(info.st_size) > maxBytes) {
      result.failure = ReadFailure::TooLarge;
      return result;
    }
    result.bytes.reserve(static_cast<size_t>(info.st_size) + 1);
  }
  // Read to the end, but never more than one byte past the cap (a file may grow meanwhile).
  char chunk[16384];
  while (result.bytes.size() <= maxBytes) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0) {
      if (errno == EINTR) continue;
      result.failure = failureOf(errno);
      result.bytes.clear();
      return result;
    }
    if (got == 0) break;
    result.bytes.append(chunk, static_cast<size_t>(got));
  }
  if (result.bytes.size() > maxBytes) {
    result.failure = ReadFailure::TooLarge;
    result.bytes.clear();
  }
  return result;
}

FileBytes readRegularFileAt(int folderFd, const std::string &name, size_t maxBytes, bool followLinks) {
  FileBytes result;
  const Fd fd = openRegularFile(folderFd, name, followLinks, result.failure);
  if (!fd.valid()) return result;
  return readCapped(fd.get(), maxBytes);
}

FileBytes readRegularFile(const std::string &path, size_t maxBytes) {
  return readRegularFileAt(AT_FDCWD, path, maxBytes, true);
}

Fd openForAppend(const std::string &path, unsigned mode) {
  Fd fd(::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode));
  struct stat info {};
  if (!fd.valid() || ::fstat(fd.get(), &info) != 0 || !S_ISREG(info.st_mode)) return Fd();
  return fd;
}

}  // namespace nvx::store
