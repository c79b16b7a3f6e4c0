// The window's dialogs: choosing a file to import or export, confirming an import, telling what
// went wrong, and the standard windows of the primary menu.
#include <adwaita.h>

#include "app_dialogs.h"
#include "i18n.h"
#include "labels.h"
#include "setup_window.h"

namespace mxrk7setup {

namespace {

// Settings documents are JSON files: the choosers show those.
Glib::RefPtr<Gtk::FileFilter> jsonFilter() {
  auto filter = Gtk::FileFilter::create();
  filter->set_name(_("Settings files (JSON)"));
  filter->add_pattern("*.json");
  filter->add_mime_type("application/json");
  return filter;
}

// "Bank B: BTFX_3 Deprh: 200", one line per value an import changes.
std::string changeLines(const std::vector<nvx::support::Change> &changes) {
  std::string lines;
  for (const auto &change : changes) {
    if (change.kind == nvx::support::ChangeKind::Unchanged) continue;
    const auto &a = change.assignment;
    for (size_t field = 0; field < a.values.size(); ++field)
      lines += changeLabel(*a.setting, a.args, field) + ": " + valueText(*a.setting, a.args, field, a.values[field]) + "\n";
  }
  return lines;
}

}  // namespace

// The open question "Import these settings?": the window and the file it is about.
struct ImportQuestion {
  SetupWindow *window;
  std::string path;

  static void answered(AdwMessageDialog *, const char *response, gpointer data) {
    auto *question = static_cast<ImportQuestion *>(data);
    if (std::string_view(response) == "import") question->window->importFrom(question->path);
  }
  static void free(gpointer data, GClosure *) { delete static_cast<ImportQuestion *>(data); }
};

void SetupWindow::chooseImport() {
  chooser_ = Gtk::FileChooserNative::create(_("Import Settings"), *this, Gtk::FileChooser::Action::OPEN, _("_Import"),
                                            _("_Cancel"));
  chooser_->add_filter(jsonFilter());
  chooser_->signal_response().connect([this](int response) {
    if (response == static_cast<int>(Gtk::ResponseType::ACCEPT)) confirmImport(chooser_->get_file()->get_path());
    chooser_.reset();
  });
  chooser_->show();
}

void SetupWindow::chooseExport() {
  chooser_ = Gtk::FileChooserNative::create(_("Export Settings"), *this, Gtk::FileChooser::Action::SAVE, _("_Export"),
                                            _("_Cancel"));
  chooser_->add_filter(jsonFilter());
  // TRANSLATORS: the suggested name of an exported settings file; keep ".json".
  chooser_->set_current_name(_("mxr-k7-settings.json"));
  chooser_->signal_response().connect([this](int response) {
    if (response == static_cast<int>(Gtk::ResponseType::ACCEPT)) exportTo(chooser_->get_file()->get_path());
    chooser_.reset();
  });
  chooser_->show();
}

void SetupWindow::confirmImport(const std::string &path) {
  const ImportCheck check = checkImport(path);
  switch (check.problem) {
    case ImportCheck::Problem::None:
      break;
    case ImportCheck::Problem::Unreadable:
      message(_("Cannot Import"), format(_("{file} cannot be read."), fmt::arg("file", path)));
      return;
    case ImportCheck::Problem::NotJson:
      message(_("Cannot Import"), format(_("{file} is not a settings file."), fmt::arg("file", path)));
      return;
    case ImportCheck::Problem::Invalid:
      message(_("Cannot Import"), format(_("{file} has mistakes, so nothing was changed:\n{problems}"),
                                         fmt::arg("file", path), fmt::arg("problems", check.details)));
      return;
  }
  std::string body = changeLines(check.changes);
  body = body.empty() ? std::string(_("The file holds the settings you have now. They are sent to the mixers again."))
                      : format(_("These settings change, and every setting of the file is sent to the mixers:\n{changes}"),
                               fmt::arg("changes", body));
  GtkWidget *dialog = adw_message_dialog_new(gobj(), _("Import Settings?"), body.c_str());
  adw_message_dialog_add_responses(ADW_MESSAGE_DIALOG(dialog), "cancel", _("_Cancel"), "import", _("_Import"), nullptr);
  adw_message_dialog_set_response_appearance(ADW_MESSAGE_DIALOG(dialog), "import", ADW_RESPONSE_SUGGESTED);
  adw_message_dialog_set_default_response(ADW_MESSAGE_DIALOG(dialog), "cancel");
  adw_message_dialog_set_close_response(ADW_MESSAGE_DIALOG(dialog), "cancel");
  auto *context = new ImportQuestion{this, path};
  g_signal_connect_data(dialog, "response", G_CALLBACK(ImportQuestion::answered), context, ImportQuestion::free,
                        G_CONNECT_DEFAULT);
  gtk_window_present(GTK_WINDOW(dialog));
}

void SetupWindow::message(const std::string &heading, const std::string &body) {
  GtkWidget *dialog = adw_message_dialog_new(gobj(), heading.c_str(), body.c_str());
  adw_message_dialog_add_response(ADW_MESSAGE_DIALOG(dialog), "close", _("_Close"));
  gtk_window_present(GTK_WINDOW(dialog));
}

void SetupWindow::showShortcuts() { mxrk7setup::showShortcuts(gobj()); }
void SetupWindow::showAbout() { mxrk7setup::showAbout(gobj()); }
void SetupWindow::closeWindow() { close(); }

void SetupWindow::quit() {
  if (auto app = get_application()) app->quit();
  else close();
}

}  // namespace mxrk7setup
