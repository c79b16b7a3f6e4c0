#include "app_dialogs.h"

#include <NorvaneMXRK7Setup.h>
#include <adwaita.h>

#include <array>
#include <string>

#include "i18n.h"
#include "support/product.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

struct Shortcut {
  const char *accelerator;
  const char *title;
};
constexpr std::array<Shortcut, 5> kShortcuts = {{
    {"<Control>o", N_("Import settings")},
    {"<Control>s", N_("Export settings")},
    {"<Control>question", N_("Keyboard shortcuts")},
    {"<Control>w", N_("Close the window")},
    {"<Control>q", N_("Quit")},
}};

std::string escaped(const std::string &text) {
  char *escaped = g_markup_escape_text(text.c_str(), -1);
  std::string out = escaped;
  g_free(escaped);
  return out;
}

}  // namespace

void showShortcuts(GtkWindow *parent) {
  // GTK builds a shortcuts window only from a description; the titles go in translated.
  std::string ui =
      "<interface><object class='GtkShortcutsWindow' id='window'><property name='modal'>1</property>"
      "<child><object class='GtkShortcutsSection'><child><object class='GtkShortcutsGroup'>"
      "<property name='title'>" + escaped(_("General")) + "</property>";
  for (const auto &shortcut : kShortcuts)
    ui += "<child><object class='GtkShortcutsShortcut'><property name='accelerator'>" + escaped(shortcut.accelerator) +
          "</property><property name='title'>" + escaped(_(shortcut.title)) + "</property></object></child>";
  ui += "</object></child></object></child></object></interface>";
  GtkBuilder *builder = gtk_builder_new_from_string(ui.c_str(), -1);
  GtkWindow *window = GTK_WINDOW(gtk_builder_get_object(builder, "window"));
  gtk_window_set_transient_for(window, parent);
  gtk_window_present(window);
  g_object_unref(builder);
}

void showAbout(GtkWindow *parent) {
  const char *library = nullptr;
  NVX_GetLibraryVersionText(nvx::support::productId(), &library);
  const std::string debug = std::string("NorvaneMXRK7Setup ") + (library ? library : "?") + "\n" +
                            format(_("Settings file: {file}"), fmt::arg("file", nvx::support::StoredSettings::read().path())) +
                            "\n";
  GtkWidget *about = adw_about_window_new();
  adw_about_window_set_application_name(ADW_ABOUT_WINDOW(about), _("MXR-K7 Setup"));
  adw_about_window_set_application_icon(ADW_ABOUT_WINDOW(about), "com.norvane.MXRK7Setup");
  adw_about_window_set_version(ADW_ABOUT_WINDOW(about), MXRK7_SETUP_VERSION);
  adw_about_window_set_developer_name(ADW_ABOUT_WINDOW(about), "Norvane");
  adw_about_window_set_comments(ADW_ABOUT_WINDOW(about), _("Every setting of the MXR-K7 DJ mixer in one window."));
  // TRANSLATORS: your names, one per line; they are shown in the About window.
  adw_about_window_set_translator_credits(ADW_ABOUT_WINDOW(about), _("translator-credits"));
  adw_about_window_set_debug_info(ADW_ABOUT_WINDOW(about), debug.c_str());
  adw_about_window_set_debug_info_filename(ADW_ABOUT_WINDOW(about), "mxrk7-setup-details.txt");
  gtk_window_set_transient_for(GTK_WINDOW(about), parent);
  gtk_window_present(GTK_WINDOW(about));
}

}  // namespace mxrk7setup
