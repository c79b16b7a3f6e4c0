// The exported menu text tables. Sizes are fixed by the public header; every table that has a null
// end entry keeps it, because several text functions admit the index one past the last name.
#include "NorvaneMXRK7Setup.h"

extern "C" {

const char *const InputAudioText[48] = {
    "CH1 Timecode PHONO",       "CH1 Timecode CD/LINE",     "CH1 Timecode DIGITAL",
    "CH1 Timecode LINE",        "Post CH1 Fader",           "CH2 Timecode PHONO",
    "CH2 Timecode CD/LINE",     "CH2 Timecode DIGITAL",     "CH2 Timecode LINE",
    "Post CH2 Fader",           "CH3 Timecode PHONO",       "CH3 Timecode CD/LINE",
    "CH3 Timecode DIGITAL",     "CH3 Timecode LINE",        "Post CH3 Fader",
    "CH4 Timecode PHONO",       "CH4 Timecode CD/LINE",     "CH4 Timecode DIGITAL",
    "CH4 Timecode LINE",        "Post CH4 Fader",           "Cross Fader A",
    "Cross Fader B",            "MIC",                      "REC OUT",
    "CH1 Timecode CD",          "CH2 Timecode CD",          "MIC / AUX Post EQ",
    "CH1 Control Tone PHONO",   "CH1 Control Tone CD/LINE", "CH1 Control Tone DIGITAL",
    "CH2 Control Tone PHONO",   "CH2 Control Tone CD/LINE", "CH2 Control Tone DIGITAL",
    "CH3 Control Tone PHONO",   "CH3 Control Tone CD/LINE", "CH3 Control Tone DIGITAL",
    "CH4 Control Tone PHONO",   "CH4 Control Tone CD/LINE", "CH4 Control Tone DIGITAL",
    "MIX(REC OUT)",             "Master",                   "CH1 Control Tone CD",
    "CH2 Control Tone CD",      "CH3 Control Tone LINE",    "CH4 Control Tone LINE",
    "AUX",                      "FX SEND",                  "None",
};

// Menu of each USB audio channel: indices into InputAudioText. Columns 8 and 9 cannot be reached.
const int32_t MXRK7_TEXT[5][10] = {
    {27, 28, 4, 20, 21, 22, 45, 47, 47, 47},
    {30, 31, 9, 20, 21, 22, 45, 47, 47, 47},
    {39, 20, 21, 22, 45, 4, 9, 47, 47, 47},
    {46, 47, 47, 47, 47, 47, 47, 47, 47, 47},
    {47, 47, 47, 47, 47, 47, 47, 47, 47, 47},
};

const char *const BoostLevelText[4] = {"-5 dB", "-10 dB", "-15 dB", "-19 dB"};

const char *const MidiChannelText[16] = {"CH 1",  "CH 2",  "CH 3",  "CH 4",  "CH 5",  "CH 6",  "CH 7",  "CH 8",
                                         "CH 9",  "CH 10", "CH 11", "CH 12", "CH 13", "CH 14", "CH 15", "CH 16"};

const char *const MidiKeyModeText[2] = {"Toggle", "Trigger"};

const char *const FXBANKKeyText[4] = {"BANKA", "BANKB", "Temporary", nullptr};

const char *const FXBANKFilterModeText[6] = {"DUB ECHO", "FILTER", "NOISE", "PITCH", "WIDE FILTER", nullptr};

const char *const FXBANKBFXPositionText[6] = {"BTFX_1", "BTFX_2", "BTFX_3", "BTFX_4", "BTFX_5", "BTFX_6"};

// "Deprh" is the interface's own spelling.
const char *const FXBANKBFXtypeText[4] = {"FXType", "Deprh", "BEAT", nullptr};

const char *const BFXTypeText[16] = {"BACK SPIN",    "VINYL BRAKE",  "DELAY",        "ECHO",    "FLANGER", "HP FILTER",
                                     "LP FILTER",    "PHASER",       "REVERB",       "ROLL",    "SPIRAL",  "TRANS",
                                     "FADER SYNTH1", "FADER SYNTH2", "FADER SYNTH3", nullptr};

// The first entry is also the key of the shared "current index" setting.
const char *const FXBANKBFXItemText[4] = {"PopUp", "Slider_L", "Slider_H", nullptr};

const char *const FXBANKChFaderModeText[4] = {"VOLUME", "FADER FILTER", "FADER PITCH SHIFTER", "FADER ROLL"};

const char *const CHFADERModeText[2] = {"CHFaderMode_A", "CHFaderMode_B"};

const char *const BFXTailText[4] = {"BFXTail_A", "BFXTail_B", "BFXTail_T", nullptr};

const char *const CrossFaderModeText[4] = {"NONE", "SMALL", "LARGE", nullptr};

}  // extern "C"
