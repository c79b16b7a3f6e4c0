#include "mixer_page.h"

#include "i18n.h"
#include "labels.h"
#include "support/program_environment.h"

namespace mxrk7setup {

namespace {

using nvx::support::Access;
using nvx::support::MixerStatus;

// The commands that give the person at the computer access to the mixer.
constexpr const char *kAccessCommands =
    "mxrk7 udev-rule | sudo tee /etc/udev/rules.d/70-mxrk7.rules\nsudo udevadm control --reload-rules";

GtkWidget *valueRow(const std::string &title, const std::string &value) {
  GtkWidget *row = adw_action_row_new();
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
  GtkWidget *label = gtk_label_new(value.c_str());
  gtk_label_set_selectable(GTK_LABEL(label), TRUE);
  adw_action_row_add_suffix(ADW_ACTION_ROW(row), label);
  return row;
}

// What the mixer said about itself, one (title, value) pair a line; a question it did not answer
// says so instead of showing a stale or made-up value.
std::vector<std::pair<std::string, std::string>> details(const MixerStatus &mixer) {
  std::vector<std::pair<std::string, std::string>> lines;
  const std::string noAnswer = _("No answer");
  if (mixer.access != Access::Ok) {
    if (mixer.holder && !mixer.holder->program.empty())
      lines.emplace_back(_("Used by"), mixer.holder->program);
    return lines;
  }
  lines.emplace_back(_("Firmware"), mixer.firmware ? nvx::support::firmwareText(*mixer.firmware) : noAnswer);
  std::string selectors;
  for (const auto &position : mixer.inputSelectors)
    selectors += (selectors.empty() ? "" : " · ") + (position ? std::to_string(*position) : std::string("–"));
  lines.emplace_back(_("Input selectors 1–4"), selectors);
  lines.emplace_back(_("Serato software"),
                     mixer.serato ? (*mixer.serato == 1 ? _("Active") : _("Not active")) : noAnswer);
  return lines;
}

}  // namespace

MixerPage::MixerPage(std::function<void()> startDemo) : startDemo_(std::move(startDemo)) {
  stack_ = gtk_stack_new();
  gtk_widget_set_name(stack_, "mixers");

  GtkWidget *none = adw_status_page_new();
  adw_status_page_set_icon_name(ADW_STATUS_PAGE(none), "audio-card-symbolic");
  adw_status_page_set_title(ADW_STATUS_PAGE(none), _("No Mixer Connected"));
  adw_status_page_set_description(
      ADW_STATUS_PAGE(none),
      _("Connect the MXR-K7 with its USB cable and switch it on. Changes you make meanwhile are saved; once the "
        "mixer is back, choose “Re-apply Saved Settings” in the menu."));
  demo_ = gtk_button_new_with_mnemonic(_("Try the _Demo"));
  gtk_widget_set_name(demo_, "start-demo");
  gtk_widget_set_halign(demo_, GTK_ALIGN_CENTER);
  gtk_widget_add_css_class(demo_, "pill");
  gtk_widget_set_tooltip_text(demo_, _("Open a second window with two virtual mixers"));
  g_signal_connect_swapped(demo_, "clicked", G_CALLBACK(+[](MixerPage *page) {
                             if (page->startDemo_) page->startDemo_();
                           }),
                           this);
  adw_status_page_set_child(ADW_STATUS_PAGE(none), demo_);
  gtk_stack_add_named(GTK_STACK(stack_), none, "none");

  list_ = adw_preferences_page_new();
  mixers_ = adw_preferences_group_new();
  adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(mixers_), _("Connected Mixers"));
  adw_preferences_page_add(ADW_PREFERENCES_PAGE(list_), ADW_PREFERENCES_GROUP(mixers_));

  access_ = adw_preferences_group_new();
  adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(access_), _("Allow Access"));
  adw_preferences_group_set_description(
      ADW_PREFERENCES_GROUP(access_),
      _("This user may not use the mixer. Run these commands in a terminal to give the person at the computer "
        "access, then unplug the mixer and plug it in again."));
  GtkWidget *commands = gtk_label_new(kAccessCommands);
  gtk_label_set_selectable(GTK_LABEL(commands), TRUE);
  gtk_label_set_wrap(GTK_LABEL(commands), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(commands), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_xalign(GTK_LABEL(commands), 0.0f);
  gtk_widget_add_css_class(commands, "monospace");
  gtk_widget_add_css_class(commands, "card");
  gtk_widget_set_margin_top(commands, 6);
  gtk_accessible_update_property(GTK_ACCESSIBLE(commands), GTK_ACCESSIBLE_PROPERTY_LABEL, _("Commands to run"), -1);
  adw_preferences_group_add(ADW_PREFERENCES_GROUP(access_), commands);
  adw_preferences_page_add(ADW_PREFERENCES_PAGE(list_), ADW_PREFERENCES_GROUP(access_));

  GtkWidget *saved = adw_preferences_group_new();
  adw_preferences_group_set_title(ADW_PREFERENCES_GROUP(saved), _("Saved Settings"));
  fileRow_ = adw_action_row_new();
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(fileRow_), _("Settings file"));
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(fileRow_), FALSE);
  fileState_ = gtk_label_new(nullptr);
  gtk_label_set_wrap(GTK_LABEL(fileState_), TRUE);
  gtk_label_set_max_width_chars(GTK_LABEL(fileState_), 40);
  gtk_label_set_xalign(GTK_LABEL(fileState_), 1.0f);
  adw_action_row_add_suffix(ADW_ACTION_ROW(fileRow_), fileState_);
  adw_preferences_group_add(ADW_PREFERENCES_GROUP(saved), fileRow_);
  adw_preferences_page_add(ADW_PREFERENCES_PAGE(list_), ADW_PREFERENCES_GROUP(saved));
  gtk_stack_add_named(GTK_STACK(stack_), list_, "list");
}

void MixerPage::show(const nvx::support::BusReport &bus, const nvx::support::StoredSettings &file) {
  for (GtkWidget *row : rows_) adw_preferences_group_remove(ADW_PREFERENCES_GROUP(mixers_), row);
  rows_.clear();
  lines_.clear();
  details_.clear();
  bool denied = false;
  for (const auto &mixer : bus.mixers) {
    GtkWidget *row = adw_expander_row_new();
    const std::string title = mixerTitle(mixer.number);
    const std::string subtitle = accessText(mixer.access) + " · " + placeText(mixer);
    adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
    adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title.c_str());
    adw_expander_row_set_subtitle(ADW_EXPANDER_ROW(row), subtitle.c_str());
    gtk_widget_set_name(row, ("mixer-" + std::to_string(mixer.number)).c_str());
    std::vector<std::string> shown;
    for (const auto &[name, value] : details(mixer)) {
      adw_expander_row_add_row(ADW_EXPANDER_ROW(row), valueRow(name, value));
      shown.push_back(name + ": " + value);
    }
    adw_expander_row_set_enable_expansion(ADW_EXPANDER_ROW(row), !shown.empty());
    adw_expander_row_set_expanded(ADW_EXPANDER_ROW(row), !shown.empty());
    adw_preferences_group_add(ADW_PREFERENCES_GROUP(mixers_), row);
    rows_.push_back(row);
    lines_.push_back(title + ": " + subtitle);
    details_.push_back(std::move(shown));
    denied = denied || mixer.access == Access::Denied;
  }
  gtk_widget_set_visible(access_, denied);

  std::string state;
  switch (file.state()) {
    case nvx::support::StoredSettings::State::Missing:
      state = _("Nothing saved yet");
      break;
    case nvx::support::StoredSettings::State::Unreadable:
      state = format(_("Cannot be read: {reason}"), fmt::arg("reason", file.unreadableReason()));
      break;
    case nvx::support::StoredSettings::State::Readable:
      state = file.writeProblem() ? format(_("Cannot be saved: {reason}"), fmt::arg("reason", *file.writeProblem()))
                                  : std::string(_("Saved"));
      break;
  }
  gtk_label_set_text(GTK_LABEL(fileState_), state.c_str());
  adw_action_row_set_subtitle(ADW_ACTION_ROW(fileRow_), file.path().c_str());

  gtk_widget_set_visible(demo_, startDemo_ && !nvx::support::usingVirtualMixers());
  gtk_stack_set_visible_child_name(GTK_STACK(stack_), bus.mixers.empty() ? "none" : "list");
}

std::vector<std::string> MixerPage::detailLines(size_t mixer) const {
  return mixer < details_.size() ? details_[mixer] : std::vector<std::string>{};
}

bool MixerPage::showsNoMixer() const { return std::string(gtk_stack_get_visible_child_name(GTK_STACK(stack_))) == "none"; }

}  // namespace mxrk7setup
