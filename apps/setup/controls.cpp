#include "controls.h"

#include <stdexcept>

namespace mxrk7setup {

void setAccessibleLabel(Gtk::Widget &widget, const std::string &label) {
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
}

Controls::Binding &Controls::add(const std::string &id, const std::string &label, Gtk::Widget *widget) {
  if (bindings_.count(id)) throw std::logic_error("two controls with the id " + id);
  widget->set_name(id);
  setAccessibleLabel(*widget, label);
  widget->set_tooltip_text(label);
  Binding &binding = bindings_[id];
  binding.widget = widget;
  return binding;
}

void Controls::write(const std::string &id, const Writer &writer, uint32_t value) {
  if (loading_ > 0) return;
  writer(value);
  if (written_) written_(id);
}

Gtk::DropDown *Controls::menu(const std::string &id, const std::string &label, const std::vector<std::string> &texts,
                              Reader read, Writer write) {
  std::vector<Glib::ustring> items(texts.begin(), texts.end());
  auto *dropDown = Gtk::make_managed<Gtk::DropDown>(items);
  Binding &binding = add(id, label, dropDown);
  const auto count = static_cast<uint32_t>(texts.size());
  binding.show = [this, dropDown, count](uint32_t value) {
    ++loading_;
    dropDown->set_selected(value < count ? value : GTK_INVALID_LIST_POSITION);
    --loading_;
  };
  binding.load = [show = binding.show, read = std::move(read)] { show(read().value_or(UINT32_MAX)); };
  dropDown->property_selected().signal_changed().connect([this, id, dropDown, write = std::move(write)] {
    const guint selected = dropDown->get_selected();
    if (selected != GTK_INVALID_LIST_POSITION) this->write(id, write, selected);
  });
  binding.load();
  return dropDown;
}

Gtk::SpinButton *Controls::number(const std::string &id, const std::string &label, uint32_t max, Reader read,
                                  Writer write) {
  auto adjustment = Gtk::Adjustment::create(0, 0, max, 1, max > 20 ? 10 : 1, 0);
  auto *spin = Gtk::make_managed<Gtk::SpinButton>(adjustment, 1, 0);
  spin->set_numeric(true);
  spin->set_width_chars(4);
  Binding &binding = add(id, label, spin);
  binding.show = [this, spin, max](uint32_t value) {
    ++loading_;
    spin->set_value(value <= max ? value : 0);
    --loading_;
  };
  binding.load = [show = binding.show, read = std::move(read)] { show(read().value_or(0)); };
  spin->signal_value_changed().connect([this, id, spin, write = std::move(write)] {
    this->write(id, write, static_cast<uint32_t>(spin->get_value_as_int()));
  });
  binding.load();
  return spin;
}

Gtk::Switch *Controls::toggle(const std::string &id, const std::string &label, Reader read, Writer write) {
  auto *toggle = Gtk::make_managed<Gtk::Switch>();
  toggle->set_halign(Gtk::Align::START);
  toggle->set_valign(Gtk::Align::CENTER);
  Binding &binding = add(id, label, toggle);
  binding.show = [this, toggle](uint32_t value) {
    ++loading_;
    toggle->set_active(value == 1);
    --loading_;
  };
  binding.load = [show = binding.show, read = std::move(read)] { show(read().value_or(0)); };
  toggle->property_active().signal_changed().connect(
      [this, id, toggle, write = std::move(write)] { this->write(id, write, toggle->get_active() ? 1 : 0); });
  binding.load();
  return toggle;
}

Gtk::Label *Controls::text(const std::string &id, const std::string &label, std::function<std::string()> describe) {
  auto *text = Gtk::make_managed<Gtk::Label>();
  text->set_halign(Gtk::Align::START);
  text->set_selectable(true);
  Binding &binding = add(id, label, text);
  binding.load = [text, describe = std::move(describe)] { text->set_text(describe()); };
  binding.show = [load = binding.load](uint32_t) { load(); };
  binding.load();
  return text;
}

void Controls::show(const std::string &id, uint32_t value) {
  if (auto found = bindings_.find(id); found != bindings_.end()) found->second.show(value);
}

void Controls::reloadAll() {
  for (auto &[id, binding] : bindings_) binding.load();
}

Gtk::Widget *Controls::find(const std::string &id) const {
  const auto found = bindings_.find(id);
  return found == bindings_.end() ? nullptr : found->second.widget;
}

std::vector<std::string> Controls::ids() const {
  std::vector<std::string> all;
  for (const auto &[id, binding] : bindings_) all.push_back(id);
  return all;
}

}  // namespace mxrk7setup
