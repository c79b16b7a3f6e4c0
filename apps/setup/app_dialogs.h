// The application's standard windows: the keyboard shortcuts and About.
#pragma once

#include <gtk/gtk.h>

namespace mxrk7setup {

// The shortcuts the window answers to, as GTK's shortcuts window (Ctrl+?).
void showShortcuts(GtkWindow *parent);
// Name, version, credits, and what a bug report needs (versions, where the settings are).
void showAbout(GtkWindow *parent);

}  // namespace mxrk7setup
