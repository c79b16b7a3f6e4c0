// Where a program of this project lives and which mixers and settings it points the library at:
// the options --virtual and --config-home of both `mxrk7` and `mxrk7-setup`. They work by setting
// the library's environment variables before its first call.
#pragma once

#include <optional>
#include <string>

namespace nvx::support {

// The prefix the running program is installed in (or the build tree, laid out alike), found from
// the program's own path. Empty when /proc/self/exe cannot be read.
std::string installPrefix();

// The demo mixers' config in the data folder installed with the program (MXRK7_SYSROOT aside):
// <prefix>/share/mxrk7/virtual-demo.json.
std::string demoMixersPath();

// The settings folder of --virtual: $XDG_STATE_HOME/mxrk7/demo, with ~/.local/state for an unset
// or relative XDG_STATE_HOME. Empty when the home folder cannot be told.
std::string demoConfigHome();

// Sets MXRK7_VIRTUAL_MIXERS to the demo mixers (for `virtualMixers`, unless it is already set) and
// XDG_CONFIG_HOME to `configHome` made absolute, or to the demo folder for `virtualMixers` (the
// library takes XDG_CONFIG_HOME only as an absolute path). Returns what stops it, or nullopt.
std::optional<std::string> pointLibraryAt(bool virtualMixers, const std::string &configHome);

// Whether the library is looking at virtual mixers (MXRK7_VIRTUAL_MIXERS is set).
bool usingVirtualMixers();

}  // namespace nvx::support
