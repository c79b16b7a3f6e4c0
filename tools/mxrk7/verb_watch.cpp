// watch: prints each change of any setting, by any program, as it happens. Routing and boost changes
// arrive as the library's change callbacks on this thread's GLib main loop; every other change is
// seen in the settings file. The shown value of each setting instance is kept, so a change that
// arrives both ways is printed once.
#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>
#include <glib-unix.h>
#include <glib.h>

#include <csignal>
#include <map>
#include <memory>
#include <utility>

#include "setting_values.h"
#include "support/session_bus.h"
#include "store/auto_setup_file.h"
#include "support/file_watch.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using Instance = std::pair<const Setting *, Args>;

struct Watcher {
  const Output &out;
  GMainLoop *loop;
  std::map<Instance, nlohmann::json> shown;  // the value last shown (or found at the start) per instance
  bool busGone = false;
};

std::string now() {
  const std::unique_ptr<GDateTime, decltype(&g_date_time_unref)> time(g_date_time_new_now_local(), g_date_time_unref);
  const std::unique_ptr<gchar, decltype(&g_free)> text(g_date_time_format_iso8601(time.get()), g_free);
  return text ? text.get() : "";
}

std::string changeText(const nlohmann::json &change) {
  std::string time = change.at("time").get<std::string>();
  // The clock time of the ISO 8601 form: 2024-05-01T21:14:03.123456+02:00 -> 21:14:03
  if (const auto t = time.find('T'); t != std::string::npos) time = time.substr(t + 1, 8);
  const std::string value = change.at("fields").is_array() ? valueText(change.at("fields")) : "not set";
  return fmt::format("{} {} = {}", time, targetText(change), value);
}

// Prints the instance's value unless it is the one shown last.
void report(Watcher &watcher, const Setting &setting, const Args &args, const nlohmann::json &fields) {
  auto &last = watcher.shown[{&setting, args}];
  if (last == fields) return;
  last = fields;
  const nlohmann::json change = {
      {"time", now()}, {"setting", setting.name}, {"args", argsJson(setting, args)}, {"fields", fields}};
  watcher.out.event(change, changeText);
}

// Every instance's value as the settings file holds it now: the change (if any) of each is reported.
// Only values the file holds count: a default the library would report instead is no change.
void readFile(Watcher &watcher, bool quietly) {
  const auto file = StoredSettings::read();
  for (const auto &setting : settingTable()) {
    for (const auto &args : instances(setting)) {
      const auto entry = evaluate(setting, args, file);
      const nlohmann::json fields =
          entry.source == Source::File ? fieldsJson(setting, args, *entry.values) : nlohmann::json(nullptr);
      if (quietly) watcher.shown[{&setting, args}] = fields;
      else report(watcher, setting, args, fields);
    }
  }
}

void onRoutingChanged(int32_t channel, int32_t index, void *context) {
  const Setting &routing = nvx::support::settingOf(nvx::tables::setting(nvx::tables::SettingId::Routing));
  const Args args{static_cast<uint32_t>(channel)};
  report(*static_cast<Watcher *>(context), routing, args, fieldsJson(routing, args, {static_cast<uint32_t>(index)}));
}

void onBoostChanged(int32_t index, void *context) {
  const Setting &boost = nvx::support::settingOf(nvx::tables::setting(nvx::tables::SettingId::Boost));
  report(*static_cast<Watcher *>(context), boost, {}, fieldsJson(boost, {}, {static_cast<uint32_t>(index)}));
}

gboolean quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop *>(loop));
  return G_SOURCE_CONTINUE;
}

Exit watch(Context &context) {
  if (!nvx::support::sessionBusAddress())
    throw Failure(Exit::Failure,
                  "no session bus: changes travel on the D-Bus session bus, and neither DBUS_SESSION_BUS_ADDRESS "
                  "nor $XDG_RUNTIME_DIR/bus names one");
  const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(g_main_loop_new(nullptr, FALSE),
                                                                       g_main_loop_unref);
  Watcher watcher{context.out, loop.get(), {}, false};
  const nvx::support::BusWatchdog watchdog([&watcher] {
    watcher.busGone = true;
    g_main_loop_quit(watcher.loop);
  });
  if (!watchdog.connected()) throw Failure(Exit::Failure, "the session bus does not answer");
  readFile(watcher, true);
  const std::string settingsFile = nvx::store::GetAutoSetupFilePath();
  const nvx::support::FileWatch files(settingsFile, [&watcher] { readFile(watcher, false); });
  const guint interrupt = g_unix_signal_add(SIGINT, quit, loop.get());
  const guint terminate = g_unix_signal_add(SIGTERM, quit, loop.get());
  if (NVX_RegisterInputAudioChangedCallback(0, onRoutingChanged, &watcher) != NVX_OK ||
      NVX_RegisterBoostLevelChangedCallback(0, onBoostChanged, &watcher) != NVX_OK)
    throw Failure(Exit::Refused, "the library refused to register the change callbacks");
  context.out.note(fmt::format("watching every setting (the settings file {}, and the session bus); Ctrl-C ends",
                               settingsFile));
  g_main_loop_run(loop.get());
  NVX_UnregisterInputAudioChangedCallback(0);
  NVX_UnregisterBoostLevelChangedCallback(0);
  g_source_remove(interrupt);
  g_source_remove(terminate);
  if (watcher.busGone) throw Failure(Exit::Failure, "the session bus went away; no more changes can be seen");
  return Exit::Ok;
}

}  // namespace

void addWatchVerb(VerbRegistry &verbs) {
  verbs.add("watch",
            "Print each change of any setting, made by any program, as it happens, until Ctrl-C. With --json, one "
            "JSON object per line. Ends with exit status 5 when the session bus goes away.",
            {"mxrk7 watch", "mxrk7 watch --json", "mxrk7 set routing 1 \"Cross Fader A\"   (in another terminal)"},
            watch);
}

}  // namespace mxrk7
