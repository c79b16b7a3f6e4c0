// The localized warning text of the routing setters, from the bundle's Localizable.strings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace nvx::api {

// The localization folder the user's locale chooses: LANGUAGE (each of its entries), LC_ALL,
// LC_MESSAGES, LANG, the first that is set; English when its language has no localization.
std::string_view localizationForUserLocale();

// Language 99: *text = the "WARNING2" text of the user's localization (NULL when the bundle folder
// is missing, the key itself when the text is missing). Languages 0-11: the localization's table is
// read and *text left untouched. NVX_OK for those, NVX_ERROR for any other language.
int32_t warningText(int32_t language, std::string &slot, const char **text);

}  // namespace nvx::api
