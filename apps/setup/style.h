// The application's look: libadwaita's style, following the desktop's light or dark preference.
#pragma once

namespace mxrk7setup {

// Sets up libadwaita (after GTK is initialised) and lets its style manager follow the desktop.
void followDesktopStyle();

}  // namespace mxrk7setup
