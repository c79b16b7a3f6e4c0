// The backups of unreadable settings files: before an update replaces a file it cannot read, the
// file's bytes are kept as "<name>.bak"; earlier backups move to ".bak.1", ".bak.2" (the oldest is
// dropped), so ".bak" is always the newest and no backup is ever overwritten.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace nvx::store {

inline constexpr int kBackupsKept = 3;  // .bak, .bak.1, .bak.2

// Keeps `name` (whose stat is `file` and whose first bytes are `bytes`, all of them unless it was
// too large to read) as the newest backup in the folder. 0 on success, else errno; on failure the
// file itself is untouched and every earlier backup still exists.
int keepBackup(int folderFd, const std::string &name, const struct stat &file, std::string_view bytes, bool complete);

// The name of the newest backup of `name`.
std::string newestBackupName(const std::string &name);

}  // namespace nvx::store
