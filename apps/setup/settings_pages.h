// The setting pages, one per area: audio to the computer (routing and output boost), the FX banks,
// and the play settings. Each is a libadwaita preferences page whose groups and rows come from the
// setting table: one group per setting (or per bank), one row per setting instance and field, with
// the setting's sentence saying what it does.
#pragma once

#include <adwaita.h>

#include "setting_rows.h"

namespace mxrk7setup {

// `routingBanner` is placed above the routing rows (the routing warning belongs to them).
GtkWidget *makeAudioPage(SettingRows &rows, GtkWidget *routingBanner);
GtkWidget *makeFxPage(SettingRows &rows);
GtkWidget *makePlayPage(SettingRows &rows);

}  // namespace mxrk7setup
