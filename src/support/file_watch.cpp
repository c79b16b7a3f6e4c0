#include "support/file_watch.h"

#include <algorithm>
#include <filesystem>

namespace nvx::support {

namespace {

namespace fs = std::filesystem;

// Events closer together than this are one change.
constexpr guint kBurstMilliseconds = 50;

}  // namespace

FileWatch::FileWatch(std::string path, std::function<void()> changed) : path_(std::move(path)), changed_(std::move(changed)) {
  arm();
}

FileWatch::~FileWatch() {
  disarm();
  if (pending_) g_source_remove(pending_);
}

void FileWatch::arm() {
  std::error_code error;
  const fs::path given = fs::absolute(path_, error);
  const fs::path real = fs::weakly_canonical(given, error);
  std::vector<fs::path> folders = {given.parent_path()};
  names_ = {given.filename()};
  if (!error && real != given) {
    folders.push_back(real.parent_path());
    names_.push_back(real.filename());
  }
  for (fs::path folder : folders) {
    // A folder that is not there yet: its parent tells when it comes.
    while (!fs::is_directory(folder, error) && folder.has_parent_path() && folder != folder.parent_path()) {
      names_.push_back(folder.filename());
      folder = folder.parent_path();
    }
    GFile *dir = g_file_new_for_path(folder.c_str());
    GFileMonitor *monitor = g_file_monitor_directory(dir, G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr);
    g_object_unref(dir);
    if (!monitor) continue;
    g_signal_connect(monitor, "changed", G_CALLBACK(onEvent), this);
    monitors_.push_back(monitor);
  }
}

void FileWatch::disarm() {
  for (GFileMonitor *monitor : monitors_) {
    g_signal_handlers_disconnect_by_data(monitor, this);
    g_file_monitor_cancel(monitor);
    g_object_unref(monitor);
  }
  monitors_.clear();
}

void FileWatch::onEvent(GFileMonitor *, GFile *file, GFile *other, GFileMonitorEvent, gpointer data) {
  auto *self = static_cast<FileWatch *>(data);
  auto matters = [self](GFile *f) {
    if (!f) return false;
    char *name = g_file_get_basename(f);
    const bool found = name && std::find(self->names_.begin(), self->names_.end(), name) != self->names_.end();
    g_free(name);
    return found;
  };
  if (!matters(file) && !matters(other)) return;
  if (self->pending_) g_source_remove(self->pending_);
  self->pending_ = g_timeout_add(kBurstMilliseconds, onQuiet, self);
}

gboolean FileWatch::onQuiet(gpointer data) {
  auto *self = static_cast<FileWatch *>(data);
  self->pending_ = 0;
  // A link may now point elsewhere, or a missing folder exist: watch afresh.
  self->disarm();
  self->arm();
  self->changed_();
  return G_SOURCE_REMOVE;
}

}  // namespace nvx::support
