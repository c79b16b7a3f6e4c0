/* SPDX-License-Identifier: MIT
 * Copyright (c) 2024-2026 Norvane */
/* Chooses the mixer signal that feeds one USB audio channel, and shows the warning in the user's
 * language when a deck's input selector does not fit the choice.
 *
 *   set_routing CHANNEL          lists the choices of a channel, the stored one marked with *
 *   set_routing CHANNEL INDEX    routes choice INDEX to CHANNEL (0-3) on every connected mixer
 *
 * Build: cc set_routing.c $(pkg-config --cflags --libs NorvaneMXRK7Setup) -o set_routing
 */
#include <stdio.h>
#include <stdlib.h>

#include <NorvaneMXRK7Setup.h>

/* The user's language, as LANGUAGE, LC_ALL, LC_MESSAGES or LANG name it. */
#define USER_LANGUAGE 99

static int parse_number(const char *text, long *number) {
  char *end = NULL;
  *number = strtol(text, &end, 10);
  return end != text && *end == '\0';
}

static int list_choices(int32_t product, int32_t channel) {
  uint32_t count = 0;
  if (NVX_GetNumOfInputAudioIndex(product, channel, &count) != NVX_OK) {
    fprintf(stderr, "There is no USB audio channel %d.\n", (int)channel);
    return 1;
  }
  uint32_t current = 0; /* 0 when nothing is stored */
  NVX_GetCurrentUSBInputAudioIndex(product, channel, &current);
  for (uint32_t index = 0; index < count; ++index) {
    const char *text = NULL;
    NVX_GetUSBInputAudioText(product, channel, index, 0, &text);
    printf("%c %u %s\n", index == current ? '*' : ' ', (unsigned)index, text);
  }
  return 0;
}

int main(int argc, char **argv) {
  long channel = 0, index = 0;
  if (argc < 2 || argc > 3 || !parse_number(argv[1], &channel) || (argc == 3 && !parse_number(argv[2], &index))) {
    fprintf(stderr, "usage: %s CHANNEL [INDEX]\n", argv[0]);
    return 2;
  }
  int32_t product = 0;
  if (NVX_GetProductId("MXR-K7", &product) != NVX_OK) return 1;
  if (argc == 2) return list_choices(product, (int32_t)channel);

  /* Sent to every mixer that opens, stored, and announced to every program that listens. */
  const int32_t result = NVX_SetUSBInputAudio(product, (int32_t)channel, (uint32_t)index);
  if (result == NVX_ERROR) {
    fprintf(stderr, "Channel %ld has no choice %ld (channels 0-3, choices 0-7).\n", channel, index);
    return 1;
  }
  const char *text = NULL;
  NVX_GetUSBInputAudioText(product, (int32_t)channel, (uint32_t)index, 0, &text);
  printf("USB audio channel %ld: %s\n", channel, text);

  /* NVX_WARNING: the change was made all the same, but the user should look at the mixer. */
  const char *warning = NULL;
  if (result == NVX_WARNING &&
      NVX_GetWarningTextForSetUSBAudioInput(product, (int32_t)channel, result, USER_LANGUAGE, &warning) == NVX_OK &&
      warning != NULL)
    printf("%s\n", warning);
  return 0;
}
