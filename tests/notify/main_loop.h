// Small helpers for the notification tests: running the default GLib main context for a while,
// and counting this process's threads.
#pragma once

#include <dirent.h>
#include <glib.h>

#include <chrono>
#include <functional>

namespace nvx::test {

// Iterates the default main context until done() holds or `limit` has passed; returns done().
// Counts the iterations into *iterations when given. With a `tick`, the context also wakes up
// that often, for conditions that no event of the context signals.
inline bool iterateUntil(const std::function<bool()> &done, std::chrono::milliseconds limit,
                         int *iterations = nullptr, std::chrono::milliseconds tick = std::chrono::milliseconds(0)) {
  GSource *ticker = nullptr;
  if (tick.count() > 0) {
    ticker = g_timeout_source_new(static_cast<guint>(tick.count()));
    g_source_set_callback(ticker, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(ticker, nullptr);
  }
  bool expired = false;
  GSource *timer = g_timeout_source_new(static_cast<guint>(limit.count()));
  g_source_set_callback(
      timer,
      [](gpointer flag) -> gboolean {
        *static_cast<bool *>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &expired, nullptr);
  g_source_attach(timer, nullptr);
  while (!done() && !expired) {
    g_main_context_iteration(nullptr, TRUE);
    if (iterations != nullptr) {
      ++*iterations;
    }
  }
  g_source_destroy(timer);
  g_source_unref(timer);
  if (ticker != nullptr) {
    g_source_destroy(ticker);
    g_source_unref(ticker);
  }
  return done();
}

// Entries of /proc/self/task: one per thread of this process.
inline int threadCount() {
  int count = 0;
  if (DIR *dir = opendir("/proc/self/task")) {
    while (const dirent *entry = readdir(dir)) {
      if (entry->d_name[0] != '.') {
        ++count;
      }
    }
    closedir(dir);
  }
  return count;
}

}  // namespace nvx::test
