#include "support/library_location.h"

#include <NorvaneMXRK7Setup.h>
#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "store/data_root.h"

namespace fs = std::filesystem;

namespace nvx::support {

std::string loadedLibraryFile() {
  Dl_info info{};
  // Any exported function names the shared library (this code itself is linked into the program).
  if (::dladdr(reinterpret_cast<void *>(&NVX_GetProductId), &info) == 0 || !info.dli_fname) return "?";
  std::error_code error;
  const fs::path real = fs::canonical(info.dli_fname, error);
  return error ? std::string(info.dli_fname) : real.string();
}

std::string libraryDataRoot(const std::string &libraryFile) {
  // The file's links are resolved, so ".." can be taken away by text for a shorter path.
  return fs::path(store::dataRootFor(libraryFile)).lexically_normal().string();
}

}  // namespace nvx::support
