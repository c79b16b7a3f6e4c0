// watch: prints each routing and boost change that any process makes, as it happens. The library
// delivers changes through callbacks on this thread's GLib main loop.
#include <NorvaneMXRK7Setup.h>
#include <fmt/format.h>
#include <glib-unix.h>
#include <glib.h>

#include <csignal>
#include <memory>

#include "setting_values.h"
#include "support/product.h"
#include "support/session_bus.h"
#include "verbs.h"

namespace mxrk7 {

namespace {

using nvx::support::productId;

struct Watcher {
  const Output &out;
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
  return fmt::format("{} {} = {}", time, targetText(change), valueText(change.at("fields")));
}

void report(const Watcher &watcher, const Setting &setting, const Args &args, uint32_t index) {
  const nlohmann::json change = {{"time", now()},
                                 {"setting", setting.name},
                                 {"args", argsJson(setting, args)},
                                 {"fields", fieldsJson(setting, args, {index})}};
  watcher.out.event(change, changeText);
}

void onRoutingChanged(int32_t channel, int32_t index, void *context) {
  report(*static_cast<Watcher *>(context), settingNamed("routing"), {static_cast<uint32_t>(channel)},
         static_cast<uint32_t>(index));
}

void onBoostChanged(int32_t index, void *context) {
  report(*static_cast<Watcher *>(context), settingNamed("boost"), {}, static_cast<uint32_t>(index));
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
  Watcher watcher{context.out};
  const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(g_main_loop_new(nullptr, FALSE),
                                                                       g_main_loop_unref);
  const guint interrupt = g_unix_signal_add(SIGINT, quit, loop.get());
  const guint terminate = g_unix_signal_add(SIGTERM, quit, loop.get());
  if (NVX_RegisterInputAudioChangedCallback(productId(), onRoutingChanged, &watcher) != NVX_OK ||
      NVX_RegisterBoostLevelChangedCallback(productId(), onBoostChanged, &watcher) != NVX_OK)
    throw Failure(Exit::Refused, "the library refused to register the change callbacks");
  context.out.note("watching routing and boost changes; Ctrl-C ends");
  g_main_loop_run(loop.get());
  NVX_UnregisterInputAudioChangedCallback(productId());
  NVX_UnregisterBoostLevelChangedCallback(productId());
  g_source_remove(interrupt);
  g_source_remove(terminate);
  return Exit::Ok;
}

}  // namespace

void addWatchVerb(VerbRegistry &verbs) {
  verbs.add("watch",
            "Print each routing and boost change made by any program as it happens, until Ctrl-C. With --json, "
            "one JSON object per line.",
            {"mxrk7 watch", "mxrk7 watch --json", "mxrk7 set routing 1 \"Cross Fader A\"   (in another terminal)"},
            watch);
}

}  // namespace mxrk7
