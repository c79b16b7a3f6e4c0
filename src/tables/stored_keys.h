// Every key of the auto-setup file, and what each reader answers when the file is unreadable or the
// key is absent. Readers of the same key may differ (the filter words: the getter leaves its outputs
// untouched, the replay sends 0), so the rules belong to the reader, not to the key.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace nvx::keys {

// --- Key names and templates ("%d" = a decimal number) ---------------------------------------
inline constexpr std::string_view kOutputTemplate = "Output%d";  // USB audio channel 0-4
inline constexpr std::string_view kMaxLevel = "MaxLevel";
inline constexpr std::array<std::string_view, 3> kFilterKeys = {"BANKA_FILTER", "BANKB_FILTER", "TEMPORARY_FILTER"};
inline constexpr std::string_view kPopUp = "PopUp";  // also the first entry of FXBANKBFXItemText
// Beat FX: one template per bank and position; "%d" = item 0-2.
inline constexpr std::array<std::array<std::string_view, 6>, 3> kBeatFxTemplates = {{
    {"BFX_BANKA0_%d", "BFX_BANKA1_%d", "BFX_BANKA2_%d", "BFX_BANKA3_%d", "BFX_BANKA4_%d", "BFX_BANKA5_%d"},
    {"BFX_BANKB0_%d", "BFX_BANKB1_%d", "BFX_BANKB2_%d", "BFX_BANKB3_%d", "BFX_BANKB4_%d", "BFX_BANKB5_%d"},
    {"BFX_TEMP0_%d", "BFX_TEMP1_%d", "BFX_TEMP2_%d", "BFX_TEMP3_%d", "BFX_TEMP4_%d", "BFX_TEMP5_%d"},
}};
// Channel fader: bank 0 writes the first key, banks 1-3 all write the second.
inline constexpr std::array<std::string_view, 2> kChannelFaderKeys = {"CHFADERBANK_A", "CHFADERBANK_B"};
inline constexpr std::array<std::string_view, 3> kTailKeys = {"TAIL_BANK_A", "TAIL_BANK_B", "TAIL_TEMP"};
inline constexpr std::string_view kCrossfaderCutLag = "CRFaderCutLag";
inline constexpr std::string_view kLoopButtonType = "4BeatLpBtType";
inline constexpr std::string_view kFaderStart = "FaderStartMode";
inline constexpr std::string_view kPadMode = "PADMode";
inline constexpr std::string_view kCutLagMode = "CRFaderCutLagMode";

// The one key builder: the template with "%d" replaced by `number` in decimal (as a signed 32-bit
// number, the way the templates have always been filled).
std::string makeKey(std::string_view keyTemplate, int64_t number);

// --- What a reader answers for a missing value -----------------------------------------------
enum class Missing : uint8_t {
  Fallback,   // NVX_OK with the rule's fallback value
  Untouched,  // NVX_OK, output not written
  Error,      // NVX_ERROR
};

struct ReadRule {
  Missing unreadable;  // the file is missing or unreadable
  Missing absent;      // the key is absent (or holds no integer)
  int32_t fallback;
};

namespace rules {
inline constexpr ReadRule kRouting{Missing::Fallback, Missing::Fallback, 0};
inline constexpr ReadRule kBoost{Missing::Fallback, Missing::Fallback, 3};
inline constexpr ReadRule kFilterGet{Missing::Error, Missing::Untouched, 0};
inline constexpr ReadRule kFilterReplay{Missing::Error, Missing::Fallback, 0};
inline constexpr ReadRule kPopUp{Missing::Fallback, Missing::Fallback, 0};
inline constexpr ReadRule kBeatFx{Missing::Error, Missing::Untouched, 0};
inline constexpr ReadRule kTail{Missing::Error, Missing::Fallback, 0};
inline constexpr ReadRule kPlayUntouched{Missing::Untouched, Missing::Untouched, 0};  // cut lag, loop button
inline constexpr ReadRule kPlayZero{Missing::Fallback, Missing::Fallback, 0};        // the other play settings
}  // namespace rules

}  // namespace nvx::keys
