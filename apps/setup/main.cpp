// mxrk7-setup: the graphical setup application of the MXR-K7 mixer.
#include <gtkmm.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "app_options.h"
#include "support/program_environment.h"
#include "setup_window.h"
#include "snapshot.h"
#include "style.h"

namespace {

using mxrk7setup::SetupWindow;

// Shows every page in turn, saves it as <dir>/<page>.png, then quits. Each page gets a moment to
// lay itself out and draw before it is rendered.
void takeScreenshots(const Glib::RefPtr<Gtk::Application> &app, SetupWindow &window, const std::string &dir,
                     int &status) {
  std::filesystem::create_directories(dir);
  auto pages = std::make_shared<std::vector<std::string>>(SetupWindow::pageNames());
  auto next = std::make_shared<size_t>(0);
  auto shown = std::make_shared<bool>(false);
  Glib::signal_timeout().connect(
      [app, &window, dir, pages, next, shown, &status] {
        if (*next >= pages->size()) {
          app->quit();
          return false;
        }
        const std::string &page = (*pages)[*next];
        if (!*shown) {
          window.showPage(page);
          *shown = true;
          return true;
        }
        const std::string path = dir + "/" + page + ".png";
        if (mxrk7setup::savePng(window, path)) {
          std::printf("%s\n", path.c_str());
        } else {
          std::fprintf(stderr, "mxrk7-setup: could not save %s\n", path.c_str());
          status = 1;
        }
        std::fflush(stdout);
        *shown = false;
        ++*next;
        return true;
      },
      500);
}

}  // namespace

int main(int argc, char **argv) {
  mxrk7setup::AppOptions options;
  bool help = false;
  if (const auto problem = mxrk7setup::parseOptions(argc, argv, options, help)) {
    std::fprintf(help ? stdout : stderr, "%s%s", help ? "" : "mxrk7-setup: ", problem->c_str());
    return help ? 0 : 1;
  }
  if (const auto problem = nvx::support::pointLibraryAt(options.virtualMixers, options.configHome)) {
    std::fprintf(stderr, "mxrk7-setup: %s\n", problem->c_str());
    return 1;
  }

  // Several windows may run at once (real and demo mixers): every start is its own instance.
  auto app = Gtk::Application::create("com.norvane.MXRK7Setup", Gio::Application::Flags::NON_UNIQUE);
  std::unique_ptr<SetupWindow> window;
  int status = 0;
  app->signal_startup().connect([] { mxrk7setup::followDesktopStyle(); });
  app->signal_activate().connect([&] {
    if (window) {
      window->present();
      return;
    }
    window = std::make_unique<SetupWindow>();
    app->add_window(*window);
    window->signal_hide().connect([&] { app->remove_window(*window); });
    if (!options.page.empty()) window->showPage(options.page);
    window->present();
    if (!options.screenshots.empty()) takeScreenshots(app, *window, options.screenshots, status);
  });
  const int result = app->run(argc, argv);
  window.reset();
  return result != 0 ? result : status;
}
