// The data root and the fixed paths of the version files and the bundle below it.
#include "store/data_root.h"

#include <dlfcn.h>
#include <link.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace nvx::store {

namespace {

// Any object of this code will do for dladdr: it names the shared library, or the program, that
// this code was linked into.
const char kLocationAnchor = 0;

// The file this code was linked into, with symbolic links resolved so that the data is found next
// to the real installation; `program` when that is the running program itself.
struct CodeFile {
  fs::path path;  // empty if it cannot be told
  bool program;
};

// `folder`/`relative`, without "." and ".." and without a trailing slash. Only for a canonical
// folder: ".." after a symbolically linked folder must go where the kernel goes.
std::string below(const fs::path &folder, const char *relative) {
  fs::path path = (folder / relative).lexically_normal();
  if (!path.has_filename() && path.has_parent_path()) path = path.parent_path();
  return path.string();
}

fs::path resolved(const char *file) {
  std::error_code error;
  fs::path path = fs::canonical(file, error);
  return error ? fs::path() : path;
}

CodeFile thisCodeFile() {
  Dl_info info{};
  link_map *map = nullptr;
  // The dynamic linker names the main program's link map with an empty string; a shared library's
  // map carries the file it was loaded from.
  if (::dladdr1(&kLocationAnchor, &info, reinterpret_cast<void **>(&map), RTLD_DL_LINKMAP) != 0 && map &&
      map->l_name && map->l_name[0] != '\0')
    return {resolved(map->l_name), false};
  return {resolved("/proc/self/exe"), true};
}

}  // namespace

std::string installedDataRoot() {
  const CodeFile code = thisCodeFile();
  if (code.path.empty()) return {};
  return below(code.path.parent_path(), code.program ? NVX_PROGRAM_TO_DATA : NVX_LIBRARY_TO_DATA);
}

std::string dataRoot() {
  const char *sysroot = std::getenv("MXRK7_SYSROOT");
  if (sysroot && sysroot[0] != '\0') return sysroot;
  const std::string root = installedDataRoot();
  // Without a file to start from, a relative path that names nothing rather than some other folder.
  return root.empty() ? NVX_LIBRARY_TO_DATA : root;
}

std::string programPrefix() {
  const fs::path program = resolved("/proc/self/exe");
  if (program.empty()) return {};
  return below(program.parent_path(), NVX_PROGRAM_TO_PREFIX);
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
