#include "support/settings_watch.h"

#include "store/auto_setup_file.h"
#include "store/file_paths.h"

namespace nvx::support {

namespace {

// How long the folder must stay quiet before a change is reported.
constexpr guint kQuietMillis = 50;

}  // namespace

SettingsFileWatch::SettingsFileWatch(std::function<void()> changed) : changed_(std::move(changed)) {
  const std::string path = store::GetAutoSetupFilePath();
  if (path.empty()) return;
  const std::string real = store::realFileOf(path).value_or(path);
  folder_ = store::parentOf(real);
  fileName_ = real.substr(folder_.size() + 1);
  GFile *folder = g_file_new_for_path(folder_.c_str());
  monitor_ = g_file_monitor_directory(folder, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr);
  g_object_unref(folder);
  if (!monitor_) {
    folder_.clear();
    return;
  }
  g_signal_connect(monitor_, "changed", G_CALLBACK(onEvent), this);
}

SettingsFileWatch::~SettingsFileWatch() {
  if (pending_) g_source_remove(pending_);
  if (monitor_) {
    g_signal_handlers_disconnect_by_data(monitor_, this);
    g_file_monitor_cancel(monitor_);
    g_object_unref(monitor_);
  }
}

void SettingsFileWatch::onEvent(GFileMonitor *, GFile *file, GFile *other, GFileMonitorEvent, gpointer data) {
  auto *self = static_cast<SettingsFileWatch *>(data);
  // Only the settings file itself (a rename over it names it as the other file).
  auto names = [&](GFile *f) {
    if (!f) return false;
    gchar *name = g_file_get_basename(f);
    const bool same = name && self->fileName_ == name;
    g_free(name);
    return same;
  };
  if (!names(file) && !names(other)) return;
  if (self->pending_) g_source_remove(self->pending_);
  self->pending_ = g_timeout_add(kQuietMillis, onQuiet, self);
}

gboolean SettingsFileWatch::onQuiet(gpointer data) {
  auto *self = static_cast<SettingsFileWatch *>(data);
  self->pending_ = 0;
  self->changed_();
  return G_SOURCE_REMOVE;
}

}  // namespace nvx::support
