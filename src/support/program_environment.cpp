#include "support/program_environment.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "store/accounts.h"
#include "store/data_root.h"

namespace fs = std::filesystem;

namespace nvx::support {

namespace {

bool isSet(const char *name) {
  const char *value = std::getenv(name);
  return value && *value;
}

}  // namespace

std::string installPrefix() { return store::programPrefix(); }

std::string demoMixersPath() {
  const std::string root = store::installedDataRoot();
  if (root.empty()) return {};
  return root + "/virtual-demo.json";
}

std::string demoConfigHome() {
  const char *state = std::getenv("XDG_STATE_HOME");
  fs::path base;
  if (state && state[0] == '/') {
    base = state;
  } else {
    const std::string home = store::homeFolder();
    if (home.empty()) return {};
    base = fs::path(home) / ".local" / "state";
  }
  return (base / "mxrk7" / "demo").lexically_normal();
}

std::optional<std::string> pointLibraryAt(bool virtualMixers, const std::string &configHome) {
  if (virtualMixers && !isSet("MXRK7_VIRTUAL_MIXERS")) {
    const std::string demo = demoMixersPath();
    std::error_code error;
    if (demo.empty()) return "cannot tell where this program is installed, so not where its demo mixers are";
    if (!fs::exists(demo, error)) return "the demo mixers of --virtual are not installed: " + demo + " is missing";
    ::setenv("MXRK7_VIRTUAL_MIXERS", demo.c_str(), 1);
  }
  std::string folder;
  if (!configHome.empty()) {
    folder = fs::absolute(configHome).lexically_normal();
  } else if (virtualMixers) {
    folder = demoConfigHome();
    if (folder.empty())
      return "cannot tell the home folder for the demo settings: HOME is not set and the user has no home entry";
  }
  if (!folder.empty()) ::setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
  return std::nullopt;
}

bool usingVirtualMixers() { return isSet("MXRK7_VIRTUAL_MIXERS"); }

}  // namespace nvx::support
