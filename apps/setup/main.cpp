// mxrk7-setup: the graphical setup application of the MXR-K7 mixer.
#include <gtkmm.h>

#include <clocale>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "app_options.h"
#include "i18n.h"
#include "setup_window.h"
#include "snapshot.h"
#include "style.h"
#include "support/program_environment.h"

namespace {

using mxrk7setup::SetupWindow;

// The window sizes of the pictures: a desktop window, and a phone's width (or half of a small
// laptop screen beside the DJ software).
struct Size {
  const char *name;
  int width;
  int height;
};
constexpr Size kSizes[] = {{"wide", 1280, 800}, {"narrow", 360, 800}};

// Shows every page at each size in turn and saves it as <dir>/<page>-<size>.png, then quits. Each
// page gets a moment to lay itself out and draw before it is rendered.
void takeScreenshots(const Glib::RefPtr<Gtk::Application> &app, SetupWindow &window, const std::string &dir,
                     int &status) {
  std::filesystem::create_directories(dir);
  struct Shot {
    Size size;
    std::string page;
  };
  auto shots = std::make_shared<std::vector<Shot>>();
  for (const auto &size : kSizes)
    for (const auto &page : SetupWindow::pageNames()) shots->push_back({size, page});
  auto next = std::make_shared<size_t>(0);
  auto shown = std::make_shared<bool>(false);
  auto tries = std::make_shared<int>(0);
  Glib::signal_timeout().connect(
      [app, &window, dir, shots, next, shown, tries, &status] {
        if (*next >= shots->size()) {
          app->quit();
          return false;
        }
        const Shot &shot = (*shots)[*next];
        if (!*shown) {
          window.set_default_size(shot.size.width, shot.size.height);
          window.showPage(shot.page);
          *shown = true;
          return true;
        }
        const std::string path = dir + "/" + shot.page + "-" + shot.size.name + ".png";
        // A busy machine may not have drawn the window yet: a few more moments before giving up.
        constexpr int kTries = 10;
        if (mxrk7setup::savePng(window, path)) {
          std::printf("%s\n", path.c_str());
        } else if (++*tries < kTries) {
          return true;
        } else {
          std::fprintf(stderr, "mxrk7-setup: could not save %s\n", path.c_str());
          status = 1;
        }
        std::fflush(stdout);
        *shown = false;
        *tries = 0;
        ++*next;
        return true;
      },
      500);
}

}  // namespace

int main(int argc, char **argv) {
  std::setlocale(LC_ALL, "");
  mxrk7setup::initTranslations();
  mxrk7setup::AppOptions options;
  mxrk7setup::Stop stop = mxrk7setup::Stop::No;
  if (const auto text = mxrk7setup::parseOptions(argc, argv, options, stop)) {
    const bool error = stop == mxrk7setup::Stop::No;
    std::fprintf(error ? stderr : stdout, "%s%s", error ? "mxrk7-setup: " : "", text->c_str());
    return error ? 1 : 0;
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
