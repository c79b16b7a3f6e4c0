// The setup application's one window: a sidebar of pages (mixer, USB audio routing, output boost,
// FX banks, play settings), a banner for the library's warnings, and the actions that concern all
// settings (send them all to the mixer, export, import).
//
// Besides what the user sees, the window offers entry points for its tests: find a control by id,
// show a page, read the banner and the status line, poll the mixers.
#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "controls.h"
#include "mixer_page.h"

namespace mxrk7setup {

class SetupWindow : public Gtk::Window {
 public:
  SetupWindow();
  ~SetupWindow() override;
  SetupWindow(const SetupWindow &) = delete;
  SetupWindow &operator=(const SetupWindow &) = delete;

  // Pages by name: "mixer", "routing", "boost", "fx", "play".
  static std::vector<std::string> pageNames();
  void showPage(const std::string &name);
  std::string visiblePage() const;

  Controls &controls() { return controls_; }
  MixerPage &mixerPage() { return *mixer_; }

  bool bannerShown() const { return banner_.get_reveal_child(); }
  std::string bannerText() const { return bannerText_.get_text(); }
  std::string statusText() const { return status_.get_text(); }

  // "Send all settings to the mixer".
  void sendAll();
  // Export to / import from a settings file. Return false with a message on failure.
  bool exportTo(const std::string &path, std::string &message);
  bool importFrom(const std::string &path, std::string &message);

  // The library's change callbacks (routing and boost) land here.
  void routingChanged(int32_t channel, int32_t index);
  void boostChanged(int32_t index);

 private:
  void showBanner(const std::string &text, bool warning);
  void setStatus(const std::string &text);
  void written(const std::string &what, int32_t result);
  void chooseExport();
  void chooseImport();
  // Shows what importing `path` changes and imports it when the user agrees.
  void confirmImport(const std::string &path);
  void startDemo();

  Controls controls_;
  Gtk::HeaderBar header_;
  Gtk::Button sendAll_{"_Send all settings to the mixer", true};
  Gtk::Button export_{"_Export…", true};
  Gtk::Button import_{"_Import…", true};
  Gtk::Box body_{Gtk::Orientation::HORIZONTAL};
  Gtk::StackSidebar sidebar_;
  Gtk::Separator separator_{Gtk::Orientation::VERTICAL};
  Gtk::Box content_{Gtk::Orientation::VERTICAL};
  Gtk::Revealer banner_;
  Gtk::Box bannerBox_{Gtk::Orientation::HORIZONTAL, 12};
  Gtk::Label bannerText_;
  Gtk::Button bannerClose_;
  Gtk::Stack stack_;
  Gtk::Label status_;
  MixerPage *mixer_ = nullptr;
  sigc::connection poll_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;
  std::unique_ptr<Gtk::MessageDialog> confirm_;
};

}  // namespace mxrk7setup
