#include "setup_window.h"

#include <NorvaneMXRK7Setup.h>

#include <array>

#include "app_dialogs.h"
#include "i18n.h"
#include "labels.h"
#include "report_text.h"
#include "settings_pages.h"
#include "support/product.h"
#include "support/program_environment.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using nvx::support::Access;
using nvx::support::Source;
using nvx::support::StoredSettings;

void onInputAudioChanged(int32_t channel, int32_t index, void *context) {
  static_cast<SetupWindow *>(context)->routingChanged(channel, index);
}

void onBoostLevelChanged(int32_t index, void *context) { static_cast<SetupWindow *>(context)->boostChanged(index); }

constexpr std::array<const char *, 4> kPages = {"mixers", "audio", "fx", "play"};

std::string escaped(const std::string &text) {
  char *escaped = g_markup_escape_text(text.c_str(), -1);
  std::string out = escaped;
  g_free(escaped);
  return out;
}

// A revealer holding a message, for the banners (libadwaita 1.2 has no banner of its own).
GtkWidget *revealer(GtkWidget *box, const char *cssClass) {
  gtk_widget_add_css_class(box, cssClass);
  gtk_widget_add_css_class(box, "toolbar");
  GtkWidget *r = gtk_revealer_new();
  gtk_revealer_set_child(GTK_REVEALER(r), box);
  gtk_revealer_set_reveal_child(GTK_REVEALER(r), FALSE);
  return r;
}

GtkWidget *messageLabel() {
  GtkWidget *label = gtk_label_new(nullptr);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_xalign(GTK_LABEL(label), 0.0f);
  gtk_widget_set_hexpand(label, TRUE);
  return label;
}

void loadStyle() {
  static bool loaded = false;
  if (loaded) return;
  loaded = true;
  GtkCssProvider *css = gtk_css_provider_new();
  gtk_css_provider_load_from_data(css,
                                  ".setup-banner { background-color: alpha(@accent_bg_color, 0.15); padding: 6px 12px; }"
                                  ".setup-warning { background-color: alpha(@warning_bg_color, 0.3); border-radius: 12px;"
                                  " padding: 6px 12px; margin-bottom: 12px; }",
                                  -1);
  if (GdkDisplay *display = gdk_display_get_default())
    gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(css), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(css);
}

}  // namespace

std::vector<std::string> SetupWindow::pageNames() { return {kPages.begin(), kPages.end()}; }

SetupWindow::SetupWindow()
    : rows_([this](SettingRow &row, const nvx::support::Values &values) { rowChanged(row, values); }),
      mixers_([this] { startDemo(); }) {
  loadStyle();
  set_title(_("MXR-K7 Setup"));
  set_icon_name("com.norvane.MXRK7Setup");
  set_default_size(960, 720);
  set_size_request(360, 300);

  stack_ = adw_view_stack_new();
  gtk_widget_set_vexpand(stack_, TRUE);
  auto addPage = [this](GtkWidget *page, const char *name, const char *title, const char *icon) {
    AdwViewStackPage *p = adw_view_stack_add_titled(ADW_VIEW_STACK(stack_), page, name, title);
    adw_view_stack_page_set_icon_name(p, icon);
  };
  addPage(mixers_.widget(), "mixers", _("Mixers"), "audio-card-symbolic");
  addPage(makeAudioPage(rows_, makeRoutingWarning()), "audio", _("Audio"), "audio-speakers-symbolic");
  addPage(makeFxPage(rows_), "fx", _("FX Banks"), "media-playlist-shuffle-symbolic");
  addPage(makePlayPage(rows_), "play", _("Play"), "media-playback-start-symbolic");
  // The mixers' live status is read again whenever their page is shown.
  g_signal_connect_swapped(stack_, "notify::visible-child", G_CALLBACK(+[](SetupWindow *self) {
                             if (self->visiblePage() == "mixers") self->refreshMixers();
                           }),
                           this);

  GtkWidget *header = makeHeader();
  set_titlebar(*Glib::wrap(header));

  GtkWidget *content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(content), makeBanner());
  gtk_box_append(GTK_BOX(content), stack_);
  GtkWidget *bar = adw_view_switcher_bar_new();
  adw_view_switcher_bar_set_stack(ADW_VIEW_SWITCHER_BAR(bar), ADW_VIEW_STACK(stack_));
  // The switcher moves from the header to the bottom when the header has no room for it.
  GtkWidget *title = adw_header_bar_get_title_widget(ADW_HEADER_BAR(header));
  g_object_bind_property(title, "title-visible", bar, "reveal", G_BINDING_SYNC_CREATE);
  gtk_box_append(GTK_BOX(content), bar);
  toasts_ = adw_toast_overlay_new();
  adw_toast_overlay_set_child(ADW_TOAST_OVERLAY(toasts_), content);
  gtk_window_set_child(GTK_WINDOW(gobj()), toasts_);

  addActions();
  addShortcuts();

  rows_.refresh();
  refreshMixers();
  const std::string path = StoredSettings::read().path();
  settingsWatch_ = std::make_unique<nvx::support::FileWatch>(path, [this] { settingsFileChanged(); });
  mixerWatch_ = std::make_unique<MixerWatch>([this] { refreshMixers(); });
  NVX_RegisterInputAudioChangedCallback(nvx::support::productId(), onInputAudioChanged, this);
  NVX_RegisterBoostLevelChangedCallback(nvx::support::productId(), onBoostLevelChanged, this);
  showPage(bus_.accessible() > 0 ? "audio" : "mixers");
}

SetupWindow::~SetupWindow() {
  NVX_UnregisterInputAudioChangedCallback(nvx::support::productId());
  NVX_UnregisterBoostLevelChangedCallback(nvx::support::productId());
  g_signal_handlers_disconnect_by_data(stack_, this);
  if (currentToast_) {
    g_signal_handlers_disconnect_by_data(currentToast_, this);
    g_object_unref(currentToast_);
  }
}

GtkWidget *SetupWindow::makeHeader() {
  GtkWidget *header = adw_header_bar_new();
  GtkWidget *title = adw_view_switcher_title_new();
  adw_view_switcher_title_set_stack(ADW_VIEW_SWITCHER_TITLE(title), ADW_VIEW_STACK(stack_));
  adw_view_switcher_title_set_title(ADW_VIEW_SWITCHER_TITLE(title), _("MXR-K7 Setup"));
  adw_header_bar_set_title_widget(ADW_HEADER_BAR(header), title);

  GMenu *menu = g_menu_new();
  GMenu *files = g_menu_new();
  auto item = [](GMenu *section, const char *label, const char *action, const char *accel) {
    GMenuItem *entry = g_menu_item_new(label, action);
    if (accel) g_menu_item_set_attribute(entry, "accel", "s", accel);
    g_menu_append_item(section, entry);
    g_object_unref(entry);
  };
  item(files, _("_Import…"), "win.import", "<Control>o");
  item(files, _("_Export…"), "win.export", "<Control>s");
  item(files, _("_Re-apply Saved Settings"), "win.reapply", nullptr);
  GMenu *help = g_menu_new();
  item(help, _("_Keyboard Shortcuts"), "win.shortcuts", "<Control>question");
  item(help, _("_About MXR-K7 Setup"), "win.about", nullptr);
  g_menu_append_section(menu, nullptr, G_MENU_MODEL(files));
  g_menu_append_section(menu, nullptr, G_MENU_MODEL(help));
  GtkWidget *button = gtk_menu_button_new();
  gtk_menu_button_set_icon_name(GTK_MENU_BUTTON(button), "open-menu-symbolic");
  gtk_menu_button_set_menu_model(GTK_MENU_BUTTON(button), G_MENU_MODEL(menu));
  gtk_menu_button_set_primary(GTK_MENU_BUTTON(button), TRUE);
  gtk_widget_set_tooltip_text(button, _("Main Menu"));
  gtk_widget_set_name(button, "primary-menu");
  adw_header_bar_pack_end(ADW_HEADER_BAR(header), button);
  g_object_unref(files);
  g_object_unref(help);
  g_object_unref(menu);
  return header;
}

GtkWidget *SetupWindow::makeBanner() {
  GtkWidget *box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  bannerText_ = messageLabel();
  gtk_box_append(GTK_BOX(box), bannerText_);
  GtkWidget *details = gtk_button_new_with_mnemonic(_("_Details"));
  gtk_widget_set_valign(details, GTK_ALIGN_CENTER);
  g_signal_connect_swapped(details, "clicked", G_CALLBACK(+[](SetupWindow *self) { self->showPage("mixers"); }), this);
  gtk_box_append(GTK_BOX(box), details);
  banner_ = revealer(box, "setup-banner");
  gtk_widget_set_name(banner_, "banner");
  return banner_;
}

GtkWidget *SetupWindow::makeRoutingWarning() {
  GtkWidget *box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 12);
  routingText_ = messageLabel();
  gtk_box_append(GTK_BOX(box), routingText_);
  GtkWidget *close = gtk_button_new_from_icon_name("window-close-symbolic");
  gtk_widget_add_css_class(close, "flat");
  gtk_widget_set_valign(close, GTK_ALIGN_CENTER);
  gtk_accessible_update_property(GTK_ACCESSIBLE(close), GTK_ACCESSIBLE_PROPERTY_LABEL, _("Dismiss"), -1);
  g_signal_connect_swapped(close, "clicked", G_CALLBACK(+[](SetupWindow *self) { self->showRoutingWarning({}); }), this);
  gtk_box_append(GTK_BOX(box), close);
  routingWarning_ = revealer(box, "setup-warning");
  gtk_widget_set_name(routingWarning_, "routing-warning");
  return routingWarning_;
}

void SetupWindow::addActions() {
  using Handler = void (*)(GSimpleAction *, GVariant *, gpointer);
  struct Entry {
    const char *name;
    void (SetupWindow::*method)();
  };
  static const std::array<Entry, 8> kActions = {{
      {"import", &SetupWindow::chooseImport},
      {"export", &SetupWindow::chooseExport},
      {"reapply", &SetupWindow::reapply},
      {"shortcuts", &SetupWindow::showShortcuts},
      {"about", &SetupWindow::showAbout},
      {"undo", &SetupWindow::undo},
      {"close", &SetupWindow::closeWindow},
      {"quit", &SetupWindow::quit},
  }};
  GSimpleActionGroup *group = g_simple_action_group_new();
  for (const auto &entry : kActions) {
    GSimpleAction *action = g_simple_action_new(entry.name, nullptr);
    g_signal_connect(action, "activate", G_CALLBACK(static_cast<Handler>([](GSimpleAction *a, GVariant *, gpointer self) {
                       const char *name = g_action_get_name(G_ACTION(a));
                       for (const auto &e : kActions)
                         if (std::string_view(e.name) == name) (static_cast<SetupWindow *>(self)->*e.method)();
                     })),
                     this);
    g_action_map_add_action(G_ACTION_MAP(group), G_ACTION(action));
    g_object_unref(action);
  }
  gtk_widget_insert_action_group(GTK_WIDGET(gobj()), "win", G_ACTION_GROUP(group));
  g_object_unref(group);
}

void SetupWindow::addShortcuts() {
  struct Key {
    const char *trigger;
    const char *action;
  };
  constexpr std::array<Key, 5> kKeys = {{{"<Control>o", "win.import"},
                                         {"<Control>s", "win.export"},
                                         {"<Control>question", "win.shortcuts"},
                                         {"<Control>w", "win.close"},
                                         {"<Control>q", "win.quit"}}};
  GtkEventController *controller = gtk_shortcut_controller_new();
  gtk_shortcut_controller_set_scope(GTK_SHORTCUT_CONTROLLER(controller), GTK_SHORTCUT_SCOPE_GLOBAL);
  for (const auto &key : kKeys)
    gtk_shortcut_controller_add_shortcut(GTK_SHORTCUT_CONTROLLER(controller),
                                         gtk_shortcut_new(gtk_shortcut_trigger_parse_string(key.trigger),
                                                          gtk_named_action_new(key.action)));
  gtk_widget_add_controller(GTK_WIDGET(gobj()), controller);
}

void SetupWindow::showPage(const std::string &name) {
  // A setting's name opens the page it is on.
  std::string page = name == "mixer" ? "mixers" : name;
  if (const auto *setting = nvx::tables::findSetting(name)) {
    switch (setting->area) {
      case nvx::tables::Area::Audio:
        page = "audio";
        break;
      case nvx::tables::Area::FxBank:
        page = "fx";
        break;
      case nvx::tables::Area::Play:
        page = "play";
        break;
    }
  }
  if (adw_view_stack_get_child_by_name(ADW_VIEW_STACK(stack_), page.c_str()))
    adw_view_stack_set_visible_child_name(ADW_VIEW_STACK(stack_), page.c_str());
}

std::string SetupWindow::visiblePage() const {
  const char *name = adw_view_stack_get_visible_child_name(ADW_VIEW_STACK(stack_));
  return name ? name : "";
}

bool SetupWindow::bannerShown() const { return gtk_revealer_get_reveal_child(GTK_REVEALER(banner_)); }
std::string SetupWindow::bannerText() const { return gtk_label_get_text(GTK_LABEL(bannerText_)); }
bool SetupWindow::routingWarningShown() const { return gtk_revealer_get_reveal_child(GTK_REVEALER(routingWarning_)); }
std::string SetupWindow::routingWarningText() const { return gtk_label_get_text(GTK_LABEL(routingText_)); }

void SetupWindow::rowChanged(SettingRow &row, const nvx::support::Values &values) {
  const auto &setting = row.setting();
  const nvx::support::Entry before = row.entry();
  const ChangeReport report = setValue(setting, row.args(), values);
  if (setting.descriptor->warnsOn) showRoutingWarning(report.routingWarning);
  rows_.refresh();
  std::optional<Undo> undo;
  if (before.source == Source::File && before.values && *before.values != values)
    undo = Undo{&setting, row.args(), row.field(), *before.values};
  toast(settingReport(report, changeLabel(setting, row.args(), row.field()),
                      valueText(setting, row.args(), row.field(), values[row.field()])),
        std::move(undo));
}

void SetupWindow::undo() {
  if (!undo_) return;
  const Undo previous = *undo_;
  undo_.reset();
  const ChangeReport report = setValue(*previous.setting, previous.args, previous.values);
  rows_.refresh();
  toast(undoReport(report, changeLabel(*previous.setting, previous.args, previous.field),
                   valueText(*previous.setting, previous.args, previous.field, previous.values[previous.field])));
}

void SetupWindow::toast(const std::string &text, std::optional<Undo> undo) {
  undo_ = std::move(undo);
  lastToast_ = text;
  // A toast still on screen says the latest change instead of queueing behind it (and Undo then
  // undoes that change): dismissing toasts in quick succession is not safe in libadwaita 1.2.
  const bool shown = currentToast_ != nullptr;
  if (!shown) {
    currentToast_ = adw_toast_new("");
    g_signal_connect_swapped(currentToast_, "dismissed", G_CALLBACK(+[](SetupWindow *self) {
                               g_object_unref(self->currentToast_);
                               self->currentToast_ = nullptr;
                               self->undo_.reset();
                             }),
                             this);
  }
  adw_toast_set_title(currentToast_, escaped(text).c_str());
  adw_toast_set_button_label(currentToast_, undo_ ? _("_Undo") : nullptr);
  adw_toast_set_action_name(currentToast_, undo_ ? "win.undo" : nullptr);
  if (!shown) adw_toast_overlay_add_toast(ADW_TOAST_OVERLAY(toasts_), ADW_TOAST(g_object_ref(currentToast_)));
}

void SetupWindow::showRoutingWarning(const std::optional<std::string> &text) {
  gtk_label_set_text(GTK_LABEL(routingText_), text.value_or("").c_str());
  gtk_revealer_set_reveal_child(GTK_REVEALER(routingWarning_), text.has_value());
}

void SetupWindow::showValue(const std::string &id, const nvx::support::Values &values) {
  SettingRow *row = rows_.find(id);
  if (!row || !nvx::support::valuesValid(row->setting(), row->args(), values)) return;
  row->show({&row->setting(), row->args(), Source::File, static_cast<int32_t>(values.front()), values});
}

void SetupWindow::routingChanged(int32_t channel, int32_t index) {
  if (channel >= 0 && index >= 0)
    showValue(rowId(nvx::tables::SettingId::Routing, {static_cast<uint32_t>(channel)}), {static_cast<uint32_t>(index)});
}

void SetupWindow::boostChanged(int32_t index) {
  if (index >= 0) showValue(rowId(nvx::tables::SettingId::Boost, {}), {static_cast<uint32_t>(index)});
}

void SetupWindow::settingsFileChanged() {
  rows_.refresh();
  updateBanner();
}

void SetupWindow::refreshMixers() {
  bus_ = nvx::support::probeMixers(nvx::support::Probe::WithStatus);
  // What the routing warning said about the mixers' input selectors may no longer hold.
  showRoutingWarning({});
  updateBanner();
}

void SetupWindow::updateBanner() {
  const auto file = StoredSettings::read();
  mixers_.show(bus_, file);
  std::string text;
  if (file.state() == StoredSettings::State::Unreadable) {
    text = format(_("Your saved settings cannot be read: {reason}."), fmt::arg("reason", file.unreadableReason()));
  } else if (const auto problem = file.writeProblem()) {
    text = format(_("Changes cannot be saved: {reason}."), fmt::arg("reason", *problem));
  } else {
    for (const auto &mixer : bus_.mixers) {
      if (mixer.access == Access::Ok) continue;
      // TRANSLATORS: a mixer that cannot be used and why, e.g. "Mixer 2 cannot be used: No permission."
      text = format(_("{mixer} cannot be used: {why}."), fmt::arg("mixer", mixerTitle(mixer.number)),
                    fmt::arg("why", accessText(mixer.access)));
      break;
    }
  }
  gtk_label_set_text(GTK_LABEL(bannerText_), text.c_str());
  gtk_revealer_set_reveal_child(GTK_REVEALER(banner_), !text.empty());
}

void SetupWindow::reapply() {
  const ChangeReport report = reapplyStored();
  toast(reapplyReport(report));
}

void SetupWindow::exportTo(const std::string &path) { toast(exportReport(mxrk7setup::exportTo(path), path)); }

void SetupWindow::importFrom(const std::string &path) {
  const ImportCheck check = checkImport(path);
  if (!check.plan) {
    confirmImport(path);  // says what is wrong
    return;
  }
  const ChangeReport report = importPlan(*check.plan);
  rows_.refresh();
  showRoutingWarning(report.routingWarning);
  toast(importReport(report));
}

void SetupWindow::startDemo() {
  std::vector<std::string> argv = {"/proc/self/exe", "--virtual"};
  try {
    Glib::spawn_async("", argv);
  } catch (const Glib::Error &error) {
    message(_("The Demo Could Not Be Started"), error.what());
  }
}

}  // namespace mxrk7setup
