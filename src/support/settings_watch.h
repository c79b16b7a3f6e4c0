// Noticing changes of the settings file made by any program: the tool's `watch` and the setup
// application keep what they show current with it. The folder of the real file (where a symbolic
// link leads) is watched, since an update replaces the file by renaming a new one over it.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

namespace nvx::support {

class SettingsFileWatch {
 public:
  // Calls `changed` on the thread-default GLib main context of the calling thread, at most once per
  // burst of changes (an update touches the folder several times within a few milliseconds).
  explicit SettingsFileWatch(std::function<void()> changed);
  ~SettingsFileWatch();
  SettingsFileWatch(const SettingsFileWatch &) = delete;
  SettingsFileWatch &operator=(const SettingsFileWatch &) = delete;

  // The folder watched; empty when none could be watched (no config home).
  const std::string &folder() const { return folder_; }

 private:
  static void onEvent(GFileMonitor *, GFile *file, GFile *, GFileMonitorEvent, gpointer self);
  static gboolean onQuiet(gpointer self);

  std::function<void()> changed_;
  std::string folder_;
  std::string fileName_;
  GFileMonitor *monitor_ = nullptr;
  guint pending_ = 0;
};

}  // namespace nvx::support
