// One row per field of each setting instance, as libadwaita rows: a combo row for a choice among
// the mixer's texts, an action row with a spin button for a number or a switch for on and off,
// and a plain row for a value that cannot be set. Each row shows the value the settings file
// holds, or says "Not set" (or "Default", where the mixer's library reports its default); a
// change the user makes is handed to the window, which makes it and reports it. Showing a value
// never sends it.
//
// Every row has a stable id (see rowId): the window's tests find rows by it.
#pragma once

#include <adwaita.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/setting_entries.h"

namespace mxrk7setup {

// The name of a row: the setting's name, its arguments, and (for a value of several fields) the field:
// "<name>-1-mode". Tests and the window find rows by it.
std::string rowId(const nvx::support::Setting &setting, const nvx::support::Args &args, size_t field);
std::string rowId(nvx::tables::SettingId id, const nvx::support::Args &args);  // its first field

class SettingRow {
 public:
  enum class Kind : uint8_t { Choice, Number, Toggle, ReadOnly };
  // The user changed the row: the setting's new values (every field, this one changed).
  using Changed = std::function<void(SettingRow &, const nvx::support::Values &)>;

  SettingRow(const nvx::support::Setting &setting, nvx::support::Args args, size_t field, Changed changed);
  ~SettingRow();
  SettingRow(const SettingRow &) = delete;
  SettingRow &operator=(const SettingRow &) = delete;

  GtkWidget *widget() const { return row_; }
  const std::string &id() const { return id_; }
  Kind kind() const { return kind_; }
  const nvx::support::Setting &setting() const { return *setting_; }
  const nvx::support::Args &args() const { return args_; }
  size_t field() const { return field_; }
  // What the row shows now, as last read.
  const nvx::support::Entry &entry() const { return entry_; }

  void show(const nvx::support::Entry &entry);

  // As the user does it: choose a value (a menu position's value, a number, 0 or 1).
  void choose(uint32_t value);
  // The value shown; nullopt when the row says "Not set".
  std::optional<uint32_t> shownValue() const;
  // "Not set", "Default", "Unknown value", or empty for a stored value.
  std::string stateText() const;
  bool changeable() const;

 private:
  void build();
  void userChanged(uint32_t value);

  const nvx::support::Setting *setting_;
  nvx::support::Args args_;
  size_t field_;
  std::string id_;
  Kind kind_;
  Changed changed_;
  nvx::support::Domain domain_;
  std::vector<uint32_t> menu_;  // Choice: the value of each menu position
  nvx::support::Entry entry_;
  GtkWidget *row_ = nullptr;
  GtkWidget *control_ = nullptr;  // the combo row itself, the spin button, the switch or the value label
  GtkWidget *state_ = nullptr;    // "Not set" and the like
  int loading_ = 0;               // > 0 while a value is being shown: the control's signals send nothing

  friend struct RowSignals;
};

// Every setting row of the window, by id.
class SettingRows {
 public:
  explicit SettingRows(SettingRow::Changed changed) : changed_(std::move(changed)) {}

  // A row for one field of one instance.
  SettingRow &add(const nvx::support::Setting &setting, const nvx::support::Args &args, size_t field);
  // Reads the settings file once and shows every row's value, then tells the listeners.
  void refresh();
  // Called after every refresh (summaries of several rows follow their rows so).
  void onRefreshed(std::function<void()> listener) { listeners_.push_back(std::move(listener)); }

  SettingRow *find(const std::string &id) const;
  std::vector<SettingRow *> all() const;

 private:
  SettingRow::Changed changed_;
  std::vector<std::unique_ptr<SettingRow>> rows_;
  std::map<std::string, SettingRow *> byId_;
  std::vector<std::function<void()>> listeners_;
};

}  // namespace mxrk7setup
