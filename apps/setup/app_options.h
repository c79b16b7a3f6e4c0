// Command-line options of mxrk7-setup, and the environment they give the library.
#pragma once

#include <optional>
#include <string>

namespace mxrk7setup {

struct AppOptions {
  bool virtualMixers = false;  // --virtual: the demo mixers and a demo settings folder
  std::string configHome;      // --config-home DIR: the folder of the settings file
  std::string screenshots;     // --screenshots DIR: save every page as a PNG there, then quit
  std::string page;            // --page NAME: the page shown first
};

// What the options ask besides running: print the help or the version and stop.
enum class Stop { No, Help, Version };

// Reads the options of this program from argv and removes them, leaving GTK's own. On a usage
// error returns the message to print; nullopt when the options are fine. `stop` tells whether the
// returned text is the help or the version rather than an error.
std::optional<std::string> parseOptions(int &argc, char **argv, AppOptions &options, Stop &stop);

}  // namespace mxrk7setup
