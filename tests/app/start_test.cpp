// The built program itself: it starts on the virtual mixers, draws every page and ends cleanly.
#include <gtest/gtest.h>

#include <string>

#include "support/process.h"
#include "support/scratch_dir.h"

namespace nvx::test {
namespace {

TEST(SetupApplication, StartsOnTheDemoMixersAndDrawsEveryPage) {
  ScratchDir shots, state;
  EnvGuard env;
  env.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);  // --virtual picks the demo mixers it installs
  env.set("XDG_STATE_HOME", state.path());
  const auto app = run({MXRK7_SETUP_APP, "--virtual", "--screenshots", shots.path()});
  ASSERT_EQ(app.exitCode, 0) << app.transcript();
  for (const std::string page : {"mixers", "audio", "fx", "play"})
    for (const std::string size : {"wide", "narrow"})
      EXPECT_TRUE(readFile(shots.file(page + "-" + size + ".png")).starts_with("\x89PNG\r\n\x1a\n")) << page << size;
}

}  // namespace
}  // namespace nvx::test
