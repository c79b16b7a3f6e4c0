// The global options that choose which mixers and which settings the library sees. They work by
// setting the library's environment variables before its first call.
#pragma once

#include <string>

namespace mxrk7 {

struct GlobalOptions {
  bool json = false;
  bool virtualMixers = false;  // --virtual: the demo mixers and a demo settings folder
  std::string configHome;      // --config-home DIR: the folder of the settings file
};

// Sets MXRK7_VIRTUAL_MIXERS (for --virtual, unless already set) and XDG_CONFIG_HOME (for
// --config-home, or the demo folder for --virtual). Throws a Failure when the demo config of
// --virtual is not installed or the demo folder cannot be told.
void applyEnvironment(const GlobalOptions &options);

// The prefix this program is installed in (or the build tree, laid out alike): the folder above
// the program's own folder. Throws a Failure when it cannot be told.
std::string installPrefix();

}  // namespace mxrk7
