// The window's setting controls. Each one is bound to a reader (the library's getter, or the
// settings file where the library has none) and a writer (the library's setter). A control shows
// what the reader says; a change the user makes goes to the writer. Showing a value never writes
// it back.
//
// Every control has a stable id ("boost", "routing-1", "fx-0-beat-2-depth", ...): the window's
// tests find controls by it, and the widget carries it as its name.
#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mxrk7setup {

class Controls {
 public:
  using Reader = std::function<std::optional<uint32_t>()>;  // nullopt: nothing to show
  using Writer = std::function<void(uint32_t)>;

  // A drop-down of `texts`; an index the menu does not hold shows as no choice.
  Gtk::DropDown *menu(const std::string &id, const std::string &label, const std::vector<std::string> &texts,
                      Reader read, Writer write);
  // A number from 0 to `max`; nothing to show reads as 0.
  Gtk::SpinButton *number(const std::string &id, const std::string &label, uint32_t max, Reader read, Writer write);
  // Off (0) or on (1).
  Gtk::Switch *toggle(const std::string &id, const std::string &label, Reader read, Writer write);
  // A read-only text computed by `describe`.
  Gtk::Label *text(const std::string &id, const std::string &label, std::function<std::string()> describe);

  // Shows `value` in a control without writing it (a change another program made).
  void show(const std::string &id, uint32_t value);
  // Reads every control's value again.
  void reloadAll();

  Gtk::Widget *find(const std::string &id) const;
  std::vector<std::string> ids() const;

  // Called after every write the user made (the window re-reads what depends on it).
  void onWritten(std::function<void(const std::string &id)> handler) { written_ = std::move(handler); }

 private:
  struct Binding {
    Gtk::Widget *widget = nullptr;
    std::function<void()> load;
    std::function<void(uint32_t)> show;
  };
  Binding &add(const std::string &id, const std::string &label, Gtk::Widget *widget);
  void write(const std::string &id, const Writer &writer, uint32_t value);

  std::map<std::string, Binding> bindings_;
  int loading_ = 0;  // > 0 while a control is being filled from a reader: its signals write nothing
  std::function<void(const std::string &)> written_;
};

// Gives a widget its accessible label (what a screen reader says for it).
void setAccessibleLabel(Gtk::Widget &widget, const std::string &label);

}  // namespace mxrk7setup
