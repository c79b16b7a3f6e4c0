// Watches one file for changes made by any program: the settings file (so a change from the tool,
// another application or an import shows at once in the setup application and in `mxrk7 watch`)
// and the virtual mixers' description (so a demo or a test can plug and unplug). Files are replaced by renaming a new file over them, so the
// folder is watched, not the file: the folder of the real file when the path is a symbolic link,
// and the link's own folder too. A folder that does not exist yet is waited for in its parent.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>
#include <vector>

namespace nvx::support {

class FileWatch {
 public:
  // `changed` runs on the main loop once per burst of events (a write is several events).
  FileWatch(std::string path, std::function<void()> changed);
  ~FileWatch();
  FileWatch(const FileWatch &) = delete;
  FileWatch &operator=(const FileWatch &) = delete;

 private:
  void arm();
  void disarm();
  static void onEvent(GFileMonitor *, GFile *file, GFile *other, GFileMonitorEvent, gpointer self);
  static gboolean onQuiet(gpointer self);

  std::string path_;
  std::function<void()> changed_;
  std::vector<std::string> names_;  // the file names that matter in the watched folders
  std::vector<GFileMonitor *> monitors_;
  guint pending_ = 0;  // the burst timer
};

}  // namespace nvx::support
