// Reading files the library opens on its own (the settings file, the virtual mixers' config, version
// and bundle files, the user unit that doctor looks at): whatever stands in a file's place, a read
// neither blocks nor grows without bound. One helper for all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "store/fd.h"

namespace nvx::store {

enum class ReadFailure : uint8_t {
  None,
  Missing,     // nothing at the path
  NotRegular,  // a folder, FIFO, device or socket in the file's place
  TooLarge,    // more than the cap
  Denied,      // no permission
  Failed,      // any other error
};

struct FileBytes {
  std::string bytes;
  ReadFailure failure = ReadFailure::None;
  bool ok() const { return failure == ReadFailure::None; }
};

// Opens a regular file for reading without blocking: O_NONBLOCK, so a FIFO in its place cannot
// stall the open, and anything but a regular file is refused after it. `folderFd` is AT_FDCWD or
// the folder `name` is relative to; with `followLinks` false a symbolic link is refused too.
Fd openRegularFile(int folderFd, const std::string &name, bool followLinks, ReadFailure &failure);

// The whole regular file at `path` (links followed), at most `maxBytes` of it.
FileBytes readRegularFile(const std::string &path, size_t maxBytes);
FileBytes readRegularFileAt(int folderFd, const std::string &name, size_t maxBytes, bool followLinks);

// Everything an open descriptor still delivers, up to `maxBytes` (standard input, a pipe).
FileBytes readCapped(int fd, size_t maxBytes);

// Opens `path` to append to it, only if it is a regular file or missing (then made with `mode`);
// never blocks on a FIFO. -1 otherwise.
Fd openForAppend(const std::string &path, unsigned mode);

}  // namespace nvx::store
