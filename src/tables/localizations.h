// The twelve localizations of the library's bundle, by the language numbers of the warning text
// function, and how a POSIX locale's language picks one of them.
#pragma once

#include <array>
#include <string_view>

namespace nvx::tables {

inline constexpr std::array<std::string_view, 12> kLocalizationFolders = {
    "English", "Japanese", "French", "German", "Italian", "Dutch", "Spanish", "ru", "pt", "zh_CN", "zh_TW", "ko"};

inline constexpr int kFollowUserLocale = 99;
inline constexpr std::string_view kWarningKey = "WARNING2";
inline constexpr std::string_view kStringsTable = "Localizable.strings";

// ISO 639-1 language -> localization folder. Chinese is chosen by region or script separately.
struct LocaleLanguage {
  std::string_view language;
  std::string_view folder;
};
inline constexpr std::array<LocaleLanguage, 11> kLocaleLanguages = {{
    {"en", "English"},
    {"ja", "Japanese"},
    {"fr", "French"},
    {"de", "German"},
    {"it", "Italian"},
    {"nl", "Dutch"},
    {"es", "Spanish"},
    {"ru", "ru"},
    {"pt", "pt"},
    {"ko", "ko"},
    {"zh", "zh_CN"},
}};
// Regions and scripts that read traditional Chinese.
inline constexpr std::array<std::string_view, 4> kTraditionalChineseMarks = {"TW", "HK", "MO", "Hant"};

}  // namespace nvx::tables
