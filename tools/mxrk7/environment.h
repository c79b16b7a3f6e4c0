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
// --virtual is not installed.
void applyEnvironment(const GlobalOptions &options);

// The demo mixers' config file next to this program: <program folder>/../share/mxrk7/virtual-demo.json.
std::string demoMixersPath();

// The settings folder of --virtual: $XDG_STATE_HOME/mxrk7/demo, with ~/.local/state for an unset
// or relative XDG_STATE_HOME.
std::string demoConfigHome();

}  // namespace mxrk7
