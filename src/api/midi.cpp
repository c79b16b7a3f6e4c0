// MIDI channel and key mode: reserved by the interface, not offered by this mixer. Every function
// refuses at once and touches nothing: no argument, device, file or callback slot.
#include "NorvaneMXRK7Setup.h"

extern "C" {

int32_t NVX_GetNumOfMidiChannelIndex(int32_t, uint32_t *) { return NVX_ERROR; }
int32_t NVX_GetMidiChannelText(int32_t, uint32_t, intptr_t, const char **) { return NVX_ERROR; }
int32_t NVX_SetMidiChannelIndex(int32_t, uint32_t) { return NVX_ERROR; }
int32_t NVX_GetCurrentMidiChannelIndex(int32_t, uint32_t *) { return NVX_ERROR; }
int32_t NVX_SetCurrentMidiChannelIndex(int32_t) { return NVX_ERROR; }
int32_t NVX_GetNumOfMidiKeyModeIndex(int32_t, uint32_t *) { return NVX_ERROR; }
int32_t NVX_GetMidiKeyModeText(int32_t, uint32_t, intptr_t, const char **) { return NVX_ERROR; }
int32_t NVX_SetMidiKeyModeIndex(int32_t, uint32_t) { return NVX_ERROR; }
int32_t NVX_GetCurrentMidiKeyModeIndex(int32_t, uint32_t *) { return NVX_ERROR; }
int32_t NVX_SetCurrentMidiKeyModeIndex(int32_t) { return NVX_ERROR; }
int32_t NVX_RegisterMidiChannelChangedCallback(int32_t, NVXIndexChangedProc, void *) { return NVX_ERROR; }
int32_t NVX_UnregisterMidiChannelChangedCallback(int32_t) { return NVX_ERROR; }
int32_t NVX_RegisterMidiKeyModeChangedCallback(int32_t, NVXIndexChangedProc, void *) { return NVX_ERROR; }
int32_t NVX_UnregisterMidiKeyModeChangedCallback(int32_t) { return NVX_ERROR; }

}  // extern "C"
