// What every test that calls the library or runs the tool starts from: no session bus, English
// messages, no data folder or USB identity of the machine's, an empty settings folder of its own
// and virtual mixers (none until the test plugs some in).
#pragma once

#include "support/settings_file.h"
#include "support/virtual_bus.h"

namespace nvx::test {

struct Sandbox {
  Sandbox() {
    for (const char *name : {"DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "LANGUAGE", "LC_ALL", "LC_MESSAGES",
                             "MXRK7_SYSROOT", "MXRK7_USB_ID"})
      env.set(name, std::nullopt);
    env.set("LANG", "C");
  }

  EnvGuard env;
  SettingsHome settings;
  VirtualBus bus;
};

}  // namespace nvx::test
