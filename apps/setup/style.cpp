#include "style.h"

#include <adwaita.h>

namespace mxrk7setup {

void followDesktopStyle() {
  adw_init();
  // The default scheme follows the desktop's preference (light, or dark when the user asked for it)
  // and changes with it while the window is open.
  adw_style_manager_set_color_scheme(adw_style_manager_get_default(), ADW_COLOR_SCHEME_DEFAULT);
}

}  // namespace mxrk7setup
