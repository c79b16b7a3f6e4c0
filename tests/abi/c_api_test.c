/* The public header compiled as C, and the exported functions and tables called from C. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "NorvaneMXRK7Setup.h"

static int failures = 0;
static int checks = 0;

#define CHECK(condition)                                               \
  do {                                                                 \
    ++checks;                                                          \
    if (!(condition)) {                                                \
      ++failures;                                                      \
      fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition); \
    }                                                                  \
  } while (0)

static void on_boost(int32_t index, void *context) {
  (void)index;
  (void)context;
}

int main(void) {
  int32_t product = -1;
  const char *text = NULL;
  uint32_t count = 0;

  CHECK(NVX_GetProductId("Norvane MXR-K7 Setup", &product) == NVX_OK && product == 0);
  CHECK(NVX_GetProductId("MXRK7", &product) == NVX_ERROR);

  CHECK(NVX_GetNumOfBoostLevelIndex(0, &count) == NVX_OK && count == 4);
  CHECK(NVX_GetBoostLevelText(0, 1, 0, &text) == NVX_OK && strcmp(text, "-10 dB") == 0);
  CHECK(NVX_GetUSBInputAudioText(0, 2, 0, 0, &text) == NVX_OK && strcmp(text, "MIX(REC OUT)") == 0);
  CHECK(NVX_GetCROSSFADERModeText(0, 2, 0, &text) == NVX_OK && strcmp(text, "LARGE") == 0);
  CHECK(NVX_GetFXBANKFILTERModeText(0, 5, 0, &text) == NVX_OK && text == NULL);
  CHECK(NVX_GetMidiChannelText(0, 0, 0, &text) == NVX_ERROR);

  CHECK(strcmp(InputAudioText[MXRK7_TEXT[1][3]], "Cross Fader A") == 0);
  CHECK(BFXTypeText[15] == NULL && FXBANKBFXItemText[0] != NULL && strcmp(FXBANKBFXItemText[0], "PopUp") == 0);
  CHECK(CrossFaderModeText[3] == NULL && strcmp(MidiKeyModeText[1], "Trigger") == 0);
  CHECK(numOfDevices == 0 && newNumOfDevices == 0 && usbDeviceRef[127] == NULL);

  /* No bus, no mixers, a scratch config home: set by the test's environment. */
  CHECK(NVX_IsUSBConnection(0) == NVX_NOT_CONNECTED);
  CHECK(NVX_SetPADModeIndex(0, 2) == NVX_OK);
  count = 77;
  CHECK(NVX_GetPADModeIndex(0, &count) == NVX_OK && count == 2);

  CHECK(NVX_RegisterBoostLevelChangedCallback(1, on_boost, NULL) == NVX_ERROR);
  CHECK(NVX_RegisterMidiKeyModeChangedCallback(0, on_boost, NULL) == NVX_ERROR);
  CHECK(BoostLevelChangedCallbackFunc[0] == NULL && inputAudioInfo == NULL);

  printf("%d passed, %d failed\n", checks - failures, failures);
  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
