// The exported callback slots and payload globals. One translation unit on purpose: the Register
// functions refer to it, which pulls every definition here (the reserved MIDI slots included) into
// the shared library, where the export list expects them.
#include "NorvaneMXRK7Setup.h"

extern "C" {

NVXInputAudioChangedProc InputAudioChangedCallbackFunc[1] = {nullptr};
void *InputAudioChangedContext[1] = {nullptr};
NVXIndexChangedProc BoostLevelChangedCallbackFunc[1] = {nullptr};
void *BoostLevelChangedContext[1] = {nullptr};

// Reserved: the MIDI registrations refuse, so nothing ever fills these.
NVXIndexChangedProc MidiChannelChangedCallbackFunc[1] = {nullptr};
void *MidiChannelChangedContext[1] = {nullptr};
NVXIndexChangedProc MidiKeyModeChangedCallbackFunc[1] = {nullptr};
void *MidiKeyModeChangedContext[1] = {nullptr};

void *inputAudioInfo = nullptr;
void *boostLevelInfo = nullptr;
void *midiChannelInfo = nullptr;
void *midiKeyModeInfo = nullptr;

}  // extern "C"
