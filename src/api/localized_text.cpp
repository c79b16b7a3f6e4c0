#include "api/localized_text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "NorvaneMXRK7Setup.h"
#include "store/data_root.h"
#include "store/plist_file.h"
#include "tables/localizations.h"

namespace nvx::api {

namespace {

std::string stringsPath(std::string_view folder) {
  return store::libraryResourcesPath() + "/" + std::string(folder) + ".lproj/" + std::string(tables::kStringsTable);
}

// "zh_TW.UTF-8", "pt_BR", "de", "sr@latin" -> the localization folder, or empty when none fits.
std::string_view folderForLocale(std::string_view locale) {
  if (locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.")) return "English";
  const std::string_view language = locale.substr(0, locale.find_first_of("_.@-"));
  if (language == "zh") {
    const bool traditional = std::any_of(tables::kTraditionalChineseMarks.begin(), tables::kTraditionalChineseMarks.end(),
                                         [&](std::string_view mark) { return locale.find(mark) != std::string_view::npos; });
    return traditional ? "zh_TW" : "zh_CN";
  }
  for (const auto &[code, folder] : tables::kLocaleLanguages)
    if (code == language) return folder;
  return {};
}

}  // namespace

std::string_view localizationForUserLocale() {
  for (const char *name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char *value = std::getenv(name);
    if (!value || !*value) continue;
    std::string_view list = value;
    // LANGUAGE is a colon-separated list of preferences; the others hold one locale.
    while (!list.empty()) {
      const auto end = list.find(':');
      const std::string_view folder = folderForLocale(list.substr(0, end));
      if (!folder.empty()) return folder;
      if (end == std::string_view::npos) break;
      list.remove_prefix(end + 1);
    }
    return "English";
  }
  return "English";
}

int32_t warningText(int32_t language, std::string &slot, const char **text) {
  const bool listed = language >= 0 && static_cast<size_t>(language) < tables::kLocalizationFolders.size();
  if (!listed && language != tables::kFollowUserLocale) return NVX_ERROR;
  if (listed) {
    // Only the user's own localization hands out a text; a numbered one is read and put aside.
    (void)store::readPlistDictionary(stringsPath(tables::kLocalizationFolders[static_cast<size_t>(language)]));
    return NVX_OK;
  }
  std::error_code error;
  if (!std::filesystem::is_directory(store::libraryBundlePath(), error)) {
    *text = nullptr;
    return NVX_OK;
  }
  auto strings = store::readPlistDictionary(stringsPath(localizationForUserLocale()));
  if (!strings) strings = store::readPlistDictionary(stringsPath("English"));
  auto value = strings ? strings->string(tables::kWarningKey) : std::nullopt;
  slot = value ? std::move(*value) : std::string(tables::kWarningKey);
  *text = slot.c_str();
  return NVX_OK;
}

}  // namespace nvx::api
