#include "environment.h"

#include "exit_status.h"
#include "support/program_environment.h"

namespace mxrk7 {

std::string installPrefix() {
  std::string prefix = nvx::support::installPrefix();
  if (prefix.empty()) throw Failure(Exit::Failure, "cannot tell where this program is installed (/proc/self/exe)");
  return prefix;
}

void applyEnvironment(const GlobalOptions &options) {
  if (const auto problem = nvx::support::pointLibraryAt(options.virtualMixers, options.configHome))
    throw Failure(Exit::Failure, *problem);
}

}  // namespace mxrk7
