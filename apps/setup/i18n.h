// The application's words in the user's language: every text of its own goes through _() (or N_()
// where it is written before it is shown). Texts that the mixer's library hands out (menu texts,
// item and position names) are the mixer's panel words and are shown as they are.
#pragma once

#include <fmt/format.h>

#include <string>

#define GETTEXT_PACKAGE "mxrk7-setup"
#include <glib/gi18n-lib.h>

namespace mxrk7setup {

// Binds the application's text domain to its catalogues below the install prefix
// (<prefix>/share/locale as installed), so the build tree and every install find them alike.
void initTranslations();

// A translated text with named fields: format(_("{setting} set to {value}"), fmt::arg(...)).
template <typename... Args>
std::string format(const char *translated, Args &&...args) {
  return fmt::format(fmt::runtime(translated), std::forward<Args>(args)...);
}

// The translation of a text marked with N_() elsewhere; empty stays empty (gettext would return
// the catalogue's header).
std::string translated(const std::string &text);

}  // namespace mxrk7setup
