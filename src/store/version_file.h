// The version property lists of the driver, the setup application and the library's own bundle.
#pragma once

#include <optional>
#include <string>

#include "store/plist_file.h"

namespace nvx::store {

// Reads the file at `path`; when it is missing, a file of the same folder whose name matches the
// last path component without regard to case ("Info.plist" for "info.plist") is read instead.
std::optional<PlistDict> readVersionFile(const std::string &path);

}  // namespace nvx::store
