// Replacing a file so that it is never seen half-written and survives a crash: a temporary file in
// the same folder, written, flushed to disk, renamed over the file, and the folder flushed. The
// store's update and the tool's export both write this way.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/fd.h"

namespace nvx::store {

struct Owner {
  uid_t uid;
  gid_t gid;
};

struct Replacement {
  int folderFd;            // the folder of the file
  std::string name;        // the file's name in it
  std::string_view bytes;  // its new content
  mode_t mode;             // the new file's mode
  std::optional<Owner> owner;  // given to the new file when set (a privileged writer)
};

enum class WriteStep : uint8_t { Create, Owner, Write, Rename };

struct WriteFailure {
  WriteStep step;
  int error;  // errno of the failed step
};

// The owner a replacement of the file `existing` must get: its own, when the writer is root and
// another user's file is replaced (an ordinary user replaces only files of its own).
std::optional<Owner> ownerToKeep(const struct stat &existing);

// Nothing on success. On failure the file is as it was and no temporary file is left.
std::optional<WriteFailure> replaceDurably(const Replacement &replacement);

// A new empty file ".<name>.XXXXXX" (six letters or digits) in the folder, mode 0600, never
// through a symbolic link; its name goes to `tempName`.
Fd makeTemporaryFile(int folderFd, std::string_view name, std::string &tempName);

// Whether `entry` is a temporary file of `name` as makeTemporaryFile names them.
bool isTemporaryOf(std::string_view entry, std::string_view name);

bool writeAll(int fd, std::string_view bytes);
bool fsyncRetrying(int fd);

}  // namespace nvx::store
