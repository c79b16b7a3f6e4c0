#include "environment.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "exit_status.h"

namespace fs = std::filesystem;

namespace mxrk7 {

namespace {

bool isSet(const char *name) {
  const char *value = std::getenv(name);
  return value && *value;
}

std::string homeFolder() {
  if (const char *home = std::getenv("HOME"); home && home[0] == '/') return home;
  if (const passwd *entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
  throw Failure(Exit::Failure, "cannot tell the home folder: HOME is not set and the user has no home entry");
}

}  // namespace

std::string demoMixersPath() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) throw Failure(Exit::Failure, "cannot tell where this program is installed: " + error.message());
  return (program.parent_path().parent_path() / "share" / "mxrk7" / "virtual-demo.json").lexically_normal();
}

std::string demoConfigHome() {
  const char *state = std::getenv("XDG_STATE_HOME");
  const fs::path base = state && state[0] == '/' ? fs::path(state) : fs::path(homeFolder()) / ".local" / "state";
  return (base / "mxrk7" / "demo").lexically_normal();
}

void applyEnvironment(const GlobalOptions &options) {
  if (options.virtualMixers && !isSet("MXRK7_VIRTUAL_MIXERS")) {
    const std::string demo = demoMixersPath();
    if (!fs::exists(demo))
      throw Failure(Exit::Failure, "the demo mixers of --virtual are not installed: " + demo + " is missing");
    ::setenv("MXRK7_VIRTUAL_MIXERS", demo.c_str(), 1);
  }
  // The library takes XDG_CONFIG_HOME only as an absolute path.
  std::string configHome;
  if (!options.configHome.empty()) configHome = fs::absolute(options.configHome).lexically_normal();
  else if (options.virtualMixers) configHome = demoConfigHome();
  if (!configHome.empty()) ::setenv("XDG_CONFIG_HOME", configHome.c_str(), 1);
}

}  // namespace mxrk7
