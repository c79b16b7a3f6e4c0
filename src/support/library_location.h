// Where the shared library this program loaded lives, and where that library looks for its data
// (version files, bundle): for reports that name the files a user may have to fix.
#pragma once

#include <string>

namespace nvx::support {

// The shared library's file as the dynamic linker loaded it, symbolic links resolved; "?" when it
// cannot be told.
std::string loadedLibraryFile();

// The library's data folder: $MXRK7_SYSROOT, else <folder of `libraryFile`>/../share/mxrk7 (the rule
// the library itself follows).
std::string libraryDataRoot(const std::string &libraryFile);

}  // namespace nvx::support
