// Where the library finds its own data (version files, bundle resources, demo mixers): $MXRK7_SYSROOT
// when set and non-empty, else found from the file the library's code was linked into. The shared
// library starts from its own folder, a program that carries the code statically from its own path;
// the relative path from there to <prefix>/share/mxrk7 is fixed by the configured install folders.
// The build tree has the same layout.
#pragma once

#include <string>

namespace nvx::store {

std::string dataRoot();

// The data folder found from this code's own file, $MXRK7_SYSROOT aside; empty when that file
// cannot be told.
std::string installedDataRoot();

// The install prefix of the running program (or the build tree, laid out alike), from its own path;
// empty when /proc/self/exe cannot be read.
std::string programPrefix();

// Fixed paths below the data root.
std::string driverInfoPlistPath();
std::string utilityInfoPlistPath();
std::string libraryInfoPlistPath();
std::string libraryBundlePath();      // .../NorvaneMXRK7Setup.framework
std::string libraryResourcesPath();   // .../NorvaneMXRK7Setup.framework/Versions/A/Resources

}  // namespace nvx::store
