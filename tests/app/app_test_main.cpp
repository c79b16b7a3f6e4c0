// GTK is set up once for the whole test binary, as the application does at start-up.
#include <cstdio>
#include <gtest/gtest.h>
#include <gtkmm.h>
#include <gtkmm/init.h>

#include "i18n.h"
#include "style.h"

int main(int argc, char **argv) {
  ::testing::InitGoogleTest(&argc, argv);
  // Listing the tests needs no display.
  if (::testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  if (!gtk_init_check()) {
    std::fprintf(stderr, "no display: run the setup application's tests under xvfb-run\n");
    return 1;
  }
  Gtk::init_gtkmm_internals();
  mxrk7setup::initTranslations();
  mxrk7setup::followDesktopStyle();
  return RUN_ALL_TESTS();
}
