// The data root and the fixed paths of the version files and the bundle below it.
#include "store/data_root.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace nvx::store {

namespace {

// Any object of this code will do for dladdr: it names the shared library (or the program) that
// this code was linked into.
const char kLocationAnchor = 0;

struct FreeDeleter {
  void operator()(char *p) const { std::free(p); }
};

// The file of the loaded library, with symbolic links resolved so that the data root is found next
// to the real installation. Empty if it cannot be told.
std::string loadedObjectFile() {
  Dl_info info{};
  std::string file;
  if (::dladdr(&kLocationAnchor, &info) != 0 && info.dli_fname && info.dli_fname[0] == '/') {
    file = info.dli_fname;
  } else {
    // Linked into the program itself, dladdr may report only the name it was started under.
    file = "/proc/self/exe";
  }
  const std::unique_ptr<char, FreeDeleter> resolved(::realpath(file.c_str(), nullptr));
  if (resolved) return resolved.get();
  return file == "/proc/self/exe" ? std::string() : file;
}

}  // namespace

std::string dataRoot() { return dataRootFor(loadedObjectFile()); }

std::string dataRootFor(const std::string &file) {
  const char *sysroot = std::getenv("MXRK7_SYSROOT");
  if (sysroot && sysroot[0] != '\0') return sysroot;
  const size_t slash = file.find_last_of('/');
  if (slash == std::string::npos) return "../share/mxrk7";
  // Not normalised by text: ".." after a symbolically linked folder must go where the kernel goes.
  return file.substr(0, slash) + "/../share/mxrk7";
}

std::string driverInfoPlistPath() {
  return dataRoot() + "/System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist";
}

std::string utilityInfoPlistPath() {
  return dataRoot() + "/Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist";
}

std::string libraryBundlePath() { return dataRoot() + "/System/Library/Frameworks/NorvaneMXRK7Setup.framework"; }

std::string libraryResourcesPath() { return libraryBundlePath() + "/Versions/A/Resources"; }

std::string libraryInfoPlistPath() { return libraryResourcesPath() + "/info.plist"; }

}  // namespace nvx::store
