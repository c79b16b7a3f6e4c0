// The setup application's one window, built on libadwaita's idioms: a header bar with a view
// switcher (moving to a bar at the bottom when the window is narrow) and the primary menu, one
// preferences page per area (mixers, audio, FX banks, play), a banner for what stands in the way
// (a mixer that cannot be used, settings that cannot be saved), and a toast for every change, with
// Undo where there is a previous value to go back to.
//
// It stays live: routing and boost through the library's change callbacks, every other setting by
// watching the settings file, the mixers through udev (or the virtual mixers' file).
//
// Besides what the user sees, the window offers entry points for its tests: find a row by id, show
// a page, read the banners and the last toast, undo, import and export without the file choosers.
#pragma once

#include <adwaita.h>
#include <gtkmm.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "changes.h"
#include "support/file_watch.h"
#include "mixer_page.h"
#include "mixer_watch.h"
#include "setting_rows.h"

namespace mxrk7setup {

class SetupWindow : public Gtk::Window {
 public:
  SetupWindow();
  ~SetupWindow() override;
  SetupWindow(const SetupWindow &) = delete;
  SetupWindow &operator=(const SetupWindow &) = delete;

  // Pages by name: "mixers", "audio", "fx", "play"; a setting's name shows the page it is on.
  static std::vector<std::string> pageNames();
  void showPage(const std::string &name);
  std::string visiblePage() const;

  SettingRows &rows() { return rows_; }
  MixerPage &mixerPage() { return mixers_; }

  // The banner at the top, and the routing warning on the audio page.
  bool bannerShown() const;
  std::string bannerText() const;
  bool routingWarningShown() const;
  std::string routingWarningText() const;
  // The text of the last toast, and whether it offers Undo.
  const std::string &lastToast() const { return lastToast_; }
  bool canUndo() const { return undo_.has_value(); }

  // What the menu's entries do, without their dialogs.
  void undo();
  void reapply();
  void exportTo(const std::string &path);
  void importFrom(const std::string &path);  // checked, then applied at once (no question)

  // The library's change callbacks (routing and boost) land here.
  void routingChanged(int32_t channel, int32_t index);
  void boostChanged(int32_t index);
  // Reads the mixers again (udev or the virtual mixers' file said they changed).
  void refreshMixers();

 private:
  struct Undo {
    const nvx::support::Setting *setting;
    nvx::support::Args args;
    size_t field;
    nvx::support::Values values;
  };

  GtkWidget *makeHeader();
  GtkWidget *makeBanner();
  GtkWidget *makeRoutingWarning();
  void addActions();
  void addShortcuts();

  void rowChanged(SettingRow &row, const nvx::support::Values &values);
  void showValue(const std::string &id, const nvx::support::Values &values);
  void settingsFileChanged();
  void updateBanner();
  void toast(const std::string &text, std::optional<Undo> undo = std::nullopt);
  void showRoutingWarning(const std::optional<std::string> &text);

  void chooseImport();
  void chooseExport();
  void confirmImport(const std::string &path);
  void message(const std::string &heading, const std::string &body);
  void showShortcuts();
  void showAbout();
  void closeWindow();
  void quit();
  void startDemo();

  SettingRows rows_;
  MixerPage mixers_;
  nvx::support::BusReport bus_;
  GtkWidget *stack_ = nullptr;     // AdwViewStack of the pages
  GtkWidget *toasts_ = nullptr;    // AdwToastOverlay
  GtkWidget *banner_ = nullptr;    // GtkRevealer
  GtkWidget *bannerText_ = nullptr;
  GtkWidget *routingWarning_ = nullptr;  // GtkRevealer on the audio page
  GtkWidget *routingText_ = nullptr;
  AdwToast *currentToast_ = nullptr;
  std::optional<Undo> undo_;
  std::string lastToast_;
  std::unique_ptr<nvx::support::FileWatch> settingsWatch_;
  std::unique_ptr<MixerWatch> mixerWatch_;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;
};

}  // namespace mxrk7setup
