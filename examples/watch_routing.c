/* SPDX-License-Identifier: MIT
 * Copyright (c) 2024-2026 Norvane */
/* Prints every routing and boost level change that a program using the library makes (this one
 * included), until Ctrl-C.
 *
 * Build: cc watch_routing.c $(pkg-config --cflags --libs NorvaneMXRK7Setup glib-2.0) -o watch_routing
 *
 * Changes travel over the user's D-Bus session bus; without one, nothing arrives.
 */
#include <glib-unix.h>
#include <glib.h>
#include <signal.h>
#include <stdio.h>

#include <NorvaneMXRK7Setup.h>

/* What the callbacks get as their context. */
struct watch {
  int32_t product;
  unsigned changes;
};

static void on_routing(int32_t channel, int32_t index, void *context) {
  struct watch *watch = context;
  const char *text = "(not a menu choice)";
  NVX_GetUSBInputAudioText(watch->product, channel, (uint32_t)index, 0, &text);
  printf("USB audio channel %d: %s\n", (int)channel, text);
  ++watch->changes;
}

/* Note the order: the boost level callback has no channel, and its context comes second. */
static void on_boost(int32_t index, void *context) {
  struct watch *watch = context;
  const char *text = "(not a menu choice)";
  NVX_GetBoostLevelText(watch->product, (uint32_t)index, 0, &text);
  printf("boost level: %s\n", text);
  ++watch->changes;
}

static gboolean on_interrupt(gpointer loop) {
  g_main_loop_quit(loop);
  return G_SOURCE_REMOVE;
}

int main(void) {
  struct watch watch = {0, 0};
  if (NVX_GetProductId("MXR-K7", &watch.product) != NVX_OK) return 1;
  setvbuf(stdout, NULL, _IOLBF, 0); /* a line at a time, also into a pipe */

  /* The callbacks run from this thread's GLib main context while the loop below runs. */
  if (NVX_RegisterInputAudioChangedCallback(watch.product, on_routing, &watch) != NVX_OK ||
      NVX_RegisterBoostLevelChangedCallback(watch.product, on_boost, &watch) != NVX_OK)
    return 1;

  GMainLoop *loop = g_main_loop_new(NULL, FALSE);
  g_unix_signal_add(SIGINT, on_interrupt, loop);
  printf("Watching routing and boost level changes; Ctrl-C to stop.\n");
  g_main_loop_run(loop);
  g_main_loop_unref(loop);

  NVX_UnregisterInputAudioChangedCallback(watch.product);
  NVX_UnregisterBoostLevelChangedCallback(watch.product);
  printf("Changes seen: %u\n", watch.changes);
  return 0;
}
