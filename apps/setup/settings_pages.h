// The setting pages: USB audio routing, output boost, FX banks, play settings. Each page's
// controls are made through the window's Controls, bound to the library's getters and setters.
#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <functional>
#include <string>

#include "controls.h"

namespace mxrk7setup {

// What the pages report back to the window.
struct PageEvents {
  std::function<void(int32_t channel, int32_t result)> routingResult;  // the routing setter's result
  std::function<void(const std::string &what, int32_t result)> written;  // any other setter's result
};

Gtk::Widget *makeRoutingPage(Controls &controls, const PageEvents &events);
Gtk::Widget *makeBoostPage(Controls &controls, const PageEvents &events);
Gtk::Widget *makeFxPage(Controls &controls, const PageEvents &events);
Gtk::Widget *makePlayPage(Controls &controls, const PageEvents &events);

// Control ids, shared with the window (callbacks) and the tests.
std::string routingId(int32_t channel);                                // "routing-<channel>"
inline const std::string kBoostId = "boost";
std::string filterModeId(uint32_t bank);                               // "fx-<bank>-filter-mode"
std::string filterParamId(uint32_t bank);                              // "fx-<bank>-filter-param"
std::string beatFxId(uint32_t bank, uint32_t position, uint32_t item);  // "fx-<bank>-beat-<pos>-type|depth|beat"
std::string channelFaderId(uint32_t bank);                             // "fx-<bank>-channel-fader"
std::string tailId(uint32_t bank);                                     // "fx-<bank>-tail"

}  // namespace mxrk7setup
