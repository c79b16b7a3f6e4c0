// Pictures of the window, rendered by GTK itself (no screen grab, no pixel coordinates).
#pragma once

#include <gtkmm.h>

#include <string>

namespace mxrk7setup {

// Renders `widget` as it is now and saves it as a PNG file. False when it has no size yet or the
// file cannot be written.
bool savePng(Gtk::Widget &widget, const std::string &path);

}  // namespace mxrk7setup
