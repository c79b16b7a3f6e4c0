/*
 * NorvaneMXRK7Setup: settings library of the MXR-K7 USB DJ mixer.
 *
 * A plain C interface, usable from C and C++. Every function returns a result code and writes its
 * outputs through pointer arguments; an output is written only on the paths its documentation names,
 * otherwise it keeps the value the caller put there.
 *
 * Texts handed out by the library are owned by it and must never be freed. Table texts live for the
 * life of the process; a text read from a file stays valid until the same function is called again on
 * the same thread.
 *
 * Change callbacks (routing and boost level) run on the thread that registered them, from its
 * thread-default GLib main context: they need a running GLib main loop there (GTK and Qt applications
 * run one); a program without one calls g_main_context_iteration() itself.
 */
#ifndef NORVANE_MXRK7_SETUP_H
#define NORVANE_MXRK7_SETUP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define NVX_API __attribute__((visibility("default")))
#else
#define NVX_API
#endif

/* Result codes. */
#define NVX_OK 100            /* done */
#define NVX_WARNING 101       /* done, but the user should be warned (routing setters only) */
#define NVX_ERROR 102         /* bad argument, unknown product, missing file or key, answer out of range */
#define NVX_CONNECTED 103     /* NVX_IsUSBConnection: at least one mixer is connected */
#define NVX_NOT_CONNECTED 104 /* NVX_IsUSBConnection: no mixer is connected */

typedef void (*NVXInputAudioChangedProc)(int32_t channel, int32_t index, void *context);
typedef void (*NVXIndexChangedProc)(int32_t index, void *context); /* boost, MIDI channel, key mode */

/* ---- Product identity, version texts, connection ---------------------------------------------- */

NVX_API int32_t NVX_GetProductId(const char *name, int32_t *productId);
NVX_API int32_t NVX_GetDriverVersionText(int32_t productId, const char **text);
NVX_API int32_t NVX_GetUtilityVersionText(int32_t productId, const char **text);
NVX_API int32_t NVX_GetLibraryVersionText(int32_t productId, const char **text);
NVX_API int32_t NVX_IsUSBConnection(int32_t productId);

/* ---- Live mixer status ------------------------------------------------------------------------ */

NVX_API int32_t NVX_GetFirmwareVersionIndex(int32_t productId, int32_t *version);
NVX_API int32_t NVX_GetMixerInputSelectorStatus(int32_t productId, int32_t channel, int32_t *status);
NVX_API int32_t NVX_GetMixerSeratoActiveStatus(int32_t productId, int32_t *status);

/* ---- USB input audio routing ------------------------------------------------------------------ */

NVX_API int32_t NVX_GetNumOfInputAudioIndex(int32_t productId, int32_t channel, uint32_t *count);
NVX_API int32_t NVX_GetUSBInputAudioText(int32_t productId, int32_t channel, uint32_t index, intptr_t unused,
                                         const char **text);
NVX_API int32_t NVX_SetUSBInputAudio(int32_t productId, int32_t channel, uint32_t index);
NVX_API int32_t NVX_SetUSBInputAudioDirect(int32_t productId, int32_t channel, int32_t group, uint32_t source);
NVX_API int32_t NVX_GetWarningTextForSetUSBAudioInput(int32_t productId, int32_t channel, int32_t resultCode,
                                                      int32_t language, const char **text);
NVX_API int32_t NVX_GetCurrentUSBInputAudioIndex(int32_t productId, int32_t channel, uint32_t *index);
NVX_API int32_t NVX_SetCurrentUSBInputAudio(int32_t productId, int32_t channel);

/* ---- Boost level ------------------------------------------------------------------------------ */

NVX_API int32_t NVX_GetNumOfBoostLevelIndex(int32_t productId, uint32_t *count);
NVX_API int32_t NVX_GetBoostLevelText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
NVX_API int32_t NVX_SetBoostLevelIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetCurrentBoostLevelIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetCurrentBoostLevelIndex(int32_t productId);

/* ---- MIDI channel and key mode: reserved, every function returns NVX_ERROR -------------------- */

NVX_API int32_t NVX_GetNumOfMidiChannelIndex(int32_t productId, uint32_t *count);
NVX_API int32_t NVX_GetMidiChannelText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
NVX_API int32_t NVX_SetMidiChannelIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetCurrentMidiChannelIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetCurrentMidiChannelIndex(int32_t productId);
NVX_API int32_t NVX_GetNumOfMidiKeyModeIndex(int32_t productId, uint32_t *count);
NVX_API int32_t NVX_GetMidiKeyModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
NVX_API int32_t NVX_SetMidiKeyModeIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetCurrentMidiKeyModeIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetCurrentMidiKeyModeIndex(int32_t productId);
NVX_API int32_t NVX_RegisterMidiChannelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);
NVX_API int32_t NVX_UnregisterMidiChannelChangedCallback(int32_t productId);
NVX_API int32_t NVX_RegisterMidiKeyModeChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);
NVX_API int32_t NVX_UnregisterMidiKeyModeChangedCallback(int32_t productId);

/* ---- Change callbacks ------------------------------------------------------------------------- */

NVX_API int32_t NVX_RegisterInputAudioChangedCallback(int32_t productId, NVXInputAudioChangedProc callback,
                                                      void *context);
NVX_API int32_t NVX_UnregisterInputAudioChangedCallback(int32_t productId);
NVX_API int32_t NVX_RegisterBoostLevelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);
NVX_API int32_t NVX_UnregisterBoostLevelChangedCallback(int32_t productId);

/* ---- FX banks: filter mode -------------------------------------------------------------------- */

NVX_API int32_t NVX_SetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t mode, uint32_t param);
NVX_API int32_t NVX_SendFXBANKFILTERModeIndex(int32_t productId);
NVX_API int32_t NVX_GetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t *mode, uint32_t *param);
NVX_API int32_t NVX_GetFXBANKFILTERModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
NVX_API int32_t NVX_GetNumOfFXBANKFILTERModeIndex(int32_t productId, uint32_t *count);
NVX_API int32_t NVX_GetCurrentFXBANKFILTERModeIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetCurrentFXBANKFILTERModeIndex(int32_t productId);

/* ---- FX banks: beat FX ------------------------------------------------------------------------ */

NVX_API int32_t NVX_SetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                          uint32_t value);
NVX_API int32_t NVX_GetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                          uint32_t *value);
NVX_API int32_t NVX_GetFXBANKBEATEFFECTModeText(int32_t productId, uint32_t slot, uint32_t index, intptr_t unused,
                                                const char **text);
NVX_API int32_t NVX_GetNumOfFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *count);
NVX_API int32_t NVX_GetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *index);
NVX_API int32_t NVX_SetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot);

/* ---- FX banks: channel fader mode and beat FX tail -------------------------------------------- */

NVX_API int32_t NVX_SetFXBANKCHFADERModeIndex(int32_t productId, uint32_t bank, uint32_t mode);
NVX_API int32_t NVX_SetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t tail);
NVX_API int32_t NVX_GetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t *tail);

/* ---- Play settings ---------------------------------------------------------------------------- */

NVX_API int32_t NVX_SetCROSSFADERCUTLAGIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetCROSSFADERCUTLAGIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_Set4BEATLOOPBUTTONTypeIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_Get4BEATLOOPBUTTONTypeIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetFADERSTARTIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetFADERSTARTIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetPADModeIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetPADModeIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_SetCROSSFADERCUTLAGModeIndex(int32_t productId, uint32_t index);
NVX_API int32_t NVX_GetCROSSFADERCUTLAGModeIndex(int32_t productId, uint32_t *index);
NVX_API int32_t NVX_GetNumOfCROSSFADERModeIndex(int32_t productId, uint32_t *count);
NVX_API int32_t NVX_GetCROSSFADERModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
NVX_API int32_t NVX_GetCurrentCROSSFADERModeIndex(int32_t productId, uint32_t *index);

/* ---- Text tables for menus (null end entries included where a table has one) ------------------ */

NVX_API extern const char *const InputAudioText[48];
NVX_API extern const int32_t MXRK7_TEXT[5][10];
NVX_API extern const char *const BoostLevelText[4];
NVX_API extern const char *const MidiChannelText[16];
NVX_API extern const char *const MidiKeyModeText[2];
NVX_API extern const char *const FXBANKKeyText[4];
NVX_API extern const char *const FXBANKFilterModeText[6];
NVX_API extern const char *const FXBANKBFXPositionText[6];
NVX_API extern const char *const FXBANKBFXtypeText[4];
NVX_API extern const char *const BFXTypeText[16];
NVX_API extern const char *const FXBANKBFXItemText[4];
NVX_API extern const char *const FXBANKChFaderModeText[4];
NVX_API extern const char *const CHFADERModeText[2];
NVX_API extern const char *const BFXTailText[4];
NVX_API extern const char *const CrossFaderModeText[4];

/* ---- Callback slots and payloads (index = productId; one product, one slot) ------------------- */

NVX_API extern NVXInputAudioChangedProc InputAudioChangedCallbackFunc[1];
NVX_API extern void *InputAudioChangedContext[1];
NVX_API extern NVXIndexChangedProc BoostLevelChangedCallbackFunc[1];
NVX_API extern void *BoostLevelChangedContext[1];
NVX_API extern NVXIndexChangedProc MidiChannelChangedCallbackFunc[1];
NVX_API extern void *MidiChannelChangedContext[1];
NVX_API extern NVXIndexChangedProc MidiKeyModeChangedCallbackFunc[1];
NVX_API extern void *MidiKeyModeChangedContext[1];

/* Opaque, library-owned references to the last payload this process posted (NULL until then). */
NVX_API extern void *inputAudioInfo;
NVX_API extern void *boostLevelInfo;
NVX_API extern void *midiChannelInfo;
NVX_API extern void *midiKeyModeInfo;

/* ---- Device globals: part of the interface, never read or written (always zero) --------------- */

NVX_API extern int32_t numOfDevices;
NVX_API extern int32_t newNumOfDevices;
NVX_API extern void *usbDeviceRef[128];

#ifdef __cplusplus
}
#endif

#endif /* NORVANE_MXRK7_SETUP_H */
