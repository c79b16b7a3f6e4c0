// The data folder that the library's code in this program uses (version files, the bundle's texts,
// the demo mixers), and what it holds: for reports that name the files a user may have to fix.
#pragma once

#include <optional>
#include <string>

namespace nvx::support {

// The version of the library's code this program carries (it is linked in, not loaded).
inline constexpr const char *kCoreVersion = MXRK7_PROJECT_VERSION;

struct DataFolder {
  std::string path;                     // $MXRK7_SYSROOT, else found from this program's own path
  bool exists = false;                  // a folder is there
  std::optional<std::string> version;   // the library's version file there (NVX_GetLibraryVersionText)
};

DataFolder inspectDataFolder();

}  // namespace nvx::support
