#include "i18n.h"

#include <libintl.h>

#include "support/program_environment.h"

namespace mxrk7setup {

void initTranslations() {
  const std::string prefix = nvx::support::installPrefix();
  // MXRK7_SETUP_LOCALEDIR: the install folder of the catalogues, relative to the prefix.
  if (!prefix.empty()) bindtextdomain(GETTEXT_PACKAGE, (prefix + "/" MXRK7_SETUP_LOCALEDIR).c_str());
  bind_textdomain_codeset(GETTEXT_PACKAGE, "UTF-8");
}

std::string translated(const std::string &text) { return text.empty() ? text : _(text.c_str()); }

}  // namespace mxrk7setup
