/* SPDX-License-Identifier: MIT
 * Copyright (c) 2024-2026 Norvane */
/* Tells whether an MXR-K7 is connected and shows its firmware, input selectors and Serato state.
 *
 * Build: cc mixer_status.c $(pkg-config --cflags --libs NorvaneMXRK7Setup) -o mixer_status
 *
 * With several mixers the firmware is the first one's and the other values the last one's that
 * opened; `mxrk7 devices` lists every mixer on its own.
 */
#include <stdio.h>

#include <NorvaneMXRK7Setup.h>

int main(void) {
  int32_t product = 0;
  if (NVX_GetProductId("MXR-K7", &product) != NVX_OK) return 1;

  const char *version = NULL;
  if (NVX_GetLibraryVersionText(product, &version) == NVX_OK) printf("NorvaneMXRK7Setup %s\n", version);

  if (NVX_IsUSBConnection(product) != NVX_CONNECTED) {
    printf("No mixer connected.\n");
    return 0;
  }
  printf("A mixer is connected.\n");

  /* A status query leaves its output as it was when no mixer opens (another program holds it, or
   * this user may not open it): preset each output to tell that case apart. */
  int32_t firmware = -1;
  if (NVX_GetFirmwareVersionIndex(product, &firmware) == NVX_OK && firmware >= 0)
    printf("firmware      0x%04X\n", (unsigned)firmware);
  else
    printf("firmware      (the mixer did not open)\n");

  for (int32_t deck = 1; deck <= 4; ++deck) {
    int32_t position = -1;
    if (NVX_GetMixerInputSelectorStatus(product, deck, &position) == NVX_OK && position >= 0)
      printf("deck %d input  position %d\n", (int)deck, (int)position);
  }

  int32_t serato = -1;
  if (NVX_GetMixerSeratoActiveStatus(product, &serato) == NVX_OK && serato >= 0)
    printf("Serato        %s\n", serato ? "active" : "not active");
  return 0;
}
