#include "setting_rows.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

#include "i18n.h"
#include "labels.h"
#include "support/stored_settings.h"

namespace mxrk7setup {

namespace {

using nvx::support::Entry;
using nvx::support::Setting;
using nvx::support::Source;
using nvx::support::Values;

SettingRow::Kind kindOf(const Setting &setting, size_t field, const nvx::support::Domain &domain) {
  if (setting.readOnly()) return SettingRow::Kind::ReadOnly;
  if (!domain.choices.empty()) return SettingRow::Kind::Choice;
  if (setting.fields[field].onOff) return SettingRow::Kind::Toggle;
  return SettingRow::Kind::Number;
}


}  // namespace

std::string rowId(const Setting &setting, const nvx::support::Args &args, size_t field) {
  std::string id = setting.name;
  for (const uint32_t arg : args) id += "-" + std::to_string(arg);
  if (setting.fields.size() > 1) id += "-" + setting.fields[field].name;
  return id;
}

std::string rowId(nvx::tables::SettingId id, const nvx::support::Args &args) {
  return rowId(nvx::support::settingOf(nvx::tables::setting(id)), args, 0);
}

// The controls' signal handlers, with the row as their data.
struct RowSignals {
  static void selected(GObject *, GParamSpec *, gpointer data) {
    auto *row = static_cast<SettingRow *>(data);
    const guint position = adw_combo_row_get_selected(ADW_COMBO_ROW(row->control_));
    if (position < row->menu_.size()) row->userChanged(row->menu_[position]);
  }
  static void valueChanged(GtkSpinButton *spin, gpointer data) {
    static_cast<SettingRow *>(data)->userChanged(static_cast<uint32_t>(gtk_spin_button_get_value_as_int(spin)));
  }
  static void active(GObject *toggle, GParamSpec *, gpointer data) {
    static_cast<SettingRow *>(data)->userChanged(gtk_switch_get_active(GTK_SWITCH(toggle)) ? 1 : 0);
  }
  // A spin button of a row that holds no value shows no number.
  static gboolean output(GtkSpinButton *spin, gpointer data) {
    if (static_cast<SettingRow *>(data)->shownValue()) return FALSE;
    gtk_editable_set_text(GTK_EDITABLE(spin), "");
    return TRUE;
  }
};

SettingRow::SettingRow(const Setting &setting, nvx::support::Args args, size_t field, Changed changed)
    : setting_(&setting),
      args_(std::move(args)),
      field_(field),
      id_(rowId(setting, args_, field)),
      changed_(std::move(changed)),
      domain_(setting.fields[field].domain(args_)),
      entry_{&setting, args_, Source::Unset, std::nullopt, std::nullopt} {
  kind_ = kindOf(setting, field, domain_);
  build();
}

SettingRow::~SettingRow() { g_signal_handlers_disconnect_by_data(control_, this); }

void SettingRow::build() {
  const std::string title = rowTitle(*setting_, args_, field_);
  state_ = gtk_label_new(nullptr);
  gtk_widget_add_css_class(state_, "dim-label");
  gtk_widget_set_visible(state_, FALSE);
  switch (kind_) {
    case Kind::Choice: {
      row_ = control_ = adw_combo_row_new();
      GtkStringList *texts = gtk_string_list_new(nullptr);
      for (const auto &choice : domain_.choices) {
        gtk_string_list_append(texts, choice.text.c_str());
        menu_.push_back(choice.index);
      }
      adw_combo_row_set_model(ADW_COMBO_ROW(row_), G_LIST_MODEL(texts));
      g_object_unref(texts);
      adw_combo_row_set_selected(ADW_COMBO_ROW(row_), GTK_INVALID_LIST_POSITION);
      g_signal_connect(row_, "notify::selected", G_CALLBACK(RowSignals::selected), this);
      break;
    }
    case Kind::Number: {
      row_ = adw_action_row_new();
      const auto range = domain_.indices.value_or(nvx::support::IndexRange{0, 0});
      control_ = gtk_spin_button_new_with_range(range.first, range.last, 1);
      gtk_spin_button_set_numeric(GTK_SPIN_BUTTON(control_), TRUE);
      gtk_widget_set_valign(control_, GTK_ALIGN_CENTER);
      g_signal_connect(control_, "value-changed", G_CALLBACK(RowSignals::valueChanged), this);
      g_signal_connect(control_, "output", G_CALLBACK(RowSignals::output), this);
      adw_action_row_add_suffix(ADW_ACTION_ROW(row_), control_);
      break;
    }
    case Kind::Toggle:
      row_ = adw_action_row_new();
      control_ = gtk_switch_new();
      gtk_widget_set_valign(control_, GTK_ALIGN_CENTER);
      g_signal_connect(control_, "notify::active", G_CALLBACK(RowSignals::active), this);
      adw_action_row_add_suffix(ADW_ACTION_ROW(row_), control_);
      adw_action_row_set_activatable_widget(ADW_ACTION_ROW(row_), control_);
      break;
    case Kind::ReadOnly:
      row_ = adw_action_row_new();
      control_ = gtk_label_new(nullptr);
      gtk_label_set_selectable(GTK_LABEL(control_), TRUE);
      adw_action_row_add_suffix(ADW_ACTION_ROW(row_), control_);
      break;
  }
  adw_action_row_add_suffix(ADW_ACTION_ROW(row_), state_);
  // The state goes before the control (a combo row's own value and arrow come first otherwise).
  if (GtkWidget *suffixes = gtk_widget_get_parent(state_); GTK_IS_BOX(suffixes))
    gtk_box_reorder_child_after(GTK_BOX(suffixes), state_, nullptr);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row_), title.c_str());
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row_), FALSE);
  gtk_widget_set_name(row_, id_.c_str());
  if (control_ != row_) {
    const std::string label = changeLabel(*setting_, args_, field_);
    gtk_accessible_update_property(GTK_ACCESSIBLE(control_), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
  }
  if (setting_->refuseSet(args_)) {
    gtk_widget_set_sensitive(row_, FALSE);
    adw_action_row_set_subtitle(ADW_ACTION_ROW(row_), _("This channel cannot be changed."));
  }
}

void SettingRow::userChanged(uint32_t value) {
  if (loading_ > 0 || !changed_) return;
  Values values;
  for (size_t field = 0; field < setting_->fields.size(); ++field) {
    if (field == field_) values.push_back(value);
    else if (entry_.values && field < entry_.values->size()) values.push_back((*entry_.values)[field]);
    else values.push_back(setting_->fields[field].domain(args_).members().front());
  }
  changed_(*this, values);
}

void SettingRow::show(const Entry &entry) {
  entry_ = entry;
  ++loading_;
  const auto value = shownValue();
  switch (kind_) {
    case Kind::Choice: {
      guint position = GTK_INVALID_LIST_POSITION;
      if (value)
        if (const auto at = std::find(menu_.begin(), menu_.end(), *value); at != menu_.end())
          position = static_cast<guint>(at - menu_.begin());
      adw_combo_row_set_selected(ADW_COMBO_ROW(control_), position);
      break;
    }
    case Kind::Number:
      gtk_spin_button_set_value(GTK_SPIN_BUTTON(control_), value.value_or(0));
      // Written out as well: the number does not change between "Not set" and 0.
      gtk_editable_set_text(GTK_EDITABLE(control_), value ? std::to_string(*value).c_str() : "");
      break;
    case Kind::Toggle:
      gtk_switch_set_active(GTK_SWITCH(control_), value.value_or(0) == 1);
      break;
    case Kind::ReadOnly:
      gtk_label_set_text(GTK_LABEL(control_), value ? valueText(*setting_, args_, field_, *value).c_str() : "");
      break;
  }
  const std::string state = stateText();
  gtk_label_set_text(GTK_LABEL(state_), state.c_str());
  gtk_widget_set_visible(state_, !state.empty());
  // A field after the first can only be sent with the others: it waits until they hold a value.
  if (field_ > 0 && !(setting_->refuseSet(args_))) gtk_widget_set_sensitive(row_, entry_.values.has_value());
  --loading_;
}

std::optional<uint32_t> SettingRow::shownValue() const {
  if (entry_.source == Source::Unset || entry_.source == Source::Invalid || !entry_.values) return std::nullopt;
  if (field_ >= entry_.values->size()) return std::nullopt;
  return (*entry_.values)[field_];
}

std::string SettingRow::stateText() const {
  switch (entry_.source) {
    case Source::File:
      return {};
    case Source::Default:
      // TRANSLATORS: a setting that was never changed; the mixer's default value is shown.
      return _("Default");
    case Source::Invalid:
      return _("Unknown value");
    case Source::Unset:
      break;
  }
  return _("Not set");
}

bool SettingRow::changeable() const { return kind_ != Kind::ReadOnly && gtk_widget_get_sensitive(row_); }

void SettingRow::choose(uint32_t value) {
  switch (kind_) {
    case Kind::Choice:
      if (const auto at = std::find(menu_.begin(), menu_.end(), value); at != menu_.end())
        adw_combo_row_set_selected(ADW_COMBO_ROW(control_), static_cast<guint>(at - menu_.begin()));
      break;
    case Kind::Number:
      gtk_spin_button_set_value(GTK_SPIN_BUTTON(control_), value);
      break;
    case Kind::Toggle:
      gtk_switch_set_active(GTK_SWITCH(control_), value == 1);
      break;
    case Kind::ReadOnly:
      break;
  }
}

SettingRow &SettingRows::add(const Setting &setting, const nvx::support::Args &args, size_t field) {
  auto row = std::make_unique<SettingRow>(setting, args, field, changed_);
  if (!byId_.emplace(row->id(), row.get()).second) throw std::logic_error("two rows with the id " + row->id());
  rows_.push_back(std::move(row));
  return *rows_.back();
}

void SettingRows::refresh() {
  const auto file = nvx::support::StoredSettings::read();
  for (const auto &row : rows_) row->show(nvx::support::evaluate(row->setting(), row->args(), file));
  for (const auto &listener : listeners_) listener();
}

SettingRow *SettingRows::find(const std::string &id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : found->second;
}

std::vector<SettingRow *> SettingRows::all() const {
  std::vector<SettingRow *> rows;
  for (const auto &row : rows_) rows.push_back(row.get());
  return rows;
}

}  // namespace mxrk7setup
