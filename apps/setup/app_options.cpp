#include "app_options.h"

#include "i18n.h"

namespace mxrk7setup {

namespace {

std::string usage() {
  return std::string(_("Usage: mxrk7-setup [OPTION…]\n"
                       "\n"
                       "Every setting of the MXR-K7 mixer in one window.\n"
                       "\n"
                       "  --virtual          use two virtual demo mixers and a separate demo settings folder\n"
                       "                     ($XDG_STATE_HOME/mxrk7/demo), so a demo never touches your real settings\n"
                       "  --config-home DIR  keep the settings file in DIR instead of $XDG_CONFIG_HOME (~/.config)\n"
                       "  --page NAME        open on a page: mixers, audio, fx, play\n"
                       "  --screenshots DIR  save a picture of every page to DIR as PNG files, then quit\n"
                       "  --version          show the version\n"
                       "  --help             show this help\n"));
}

}  // namespace

std::optional<std::string> parseOptions(int &argc, char **argv, AppOptions &options, Stop &stop) {
  stop = Stop::No;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&](const std::string &name) -> std::optional<std::string> {
      const std::string prefix = name + "=";
      if (arg.rfind(prefix, 0) == 0) return arg.substr(prefix.size());
      if (i + 1 < argc) return std::string(argv[++i]);
      return std::nullopt;
    };
    auto is = [&](const char *name) { return arg == name || arg.rfind(std::string(name) + "=", 0) == 0; };
    if (arg == "--virtual") {
      options.virtualMixers = true;
    } else if (is("--config-home") || is("--screenshots") || is("--page")) {
      const std::string name = arg.substr(0, arg.find('='));
      const auto given = value(name);
      if (!given || given->empty())
        return format(_("{option} needs a value"), fmt::arg("option", name)) + "\n\n" + usage();
      if (name == "--config-home") options.configHome = *given;
      else if (name == "--screenshots") options.screenshots = *given;
      else options.page = *given;
    } else if (arg == "--help" || arg == "-h") {
      stop = Stop::Help;
      return usage();
    } else if (arg == "--version") {
      stop = Stop::Version;
      return std::string("mxrk7-setup " MXRK7_SETUP_VERSION "\n");
    } else if (arg.rfind("--", 0) == 0 && arg.rfind("--gtk", 0) != 0 && arg != "--display") {
      return format(_("unknown option {option}"), fmt::arg("option", arg)) + "\n\n" + usage();
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  argv[argc] = nullptr;
  return std::nullopt;
}

}  // namespace mxrk7setup
