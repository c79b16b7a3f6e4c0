// Where the library finds its own data (version files, bundle resources): $MXRK7_SYSROOT when set and
// non-empty, else <folder of the loaded library>/../share/mxrk7. The build tree has the same layout.
#pragma once

#include <string>

namespace nvx::store {

std::string dataRoot();

// The same rule for a library at `objectFile`: $MXRK7_SYSROOT, else <its folder>/../share/mxrk7.
std::string dataRootFor(const std::string &objectFile);

// Fixed paths below the data root.
std::string driverInfoPlistPath();
std::string utilityInfoPlistPath();
std::string libraryInfoPlistPath();
std::string libraryBundlePath();      // .../NorvaneMXRK7Setup.framework
std::string libraryResourcesPath();   // .../NorvaneMXRK7Setup.framework/Versions/A/Resources

}  // namespace nvx::store
