// The built program itself: it starts on the virtual mixers, draws every page and ends cleanly.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/scratch_dir.h"

namespace nvx::test {
namespace {

bool isPng(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  char magic[8] = {};
  in.read(magic, sizeof magic);
  return in && std::string(magic, 8) == std::string("\x89PNG\r\n\x1a\n", 8);
}

int runApp(const std::vector<std::string> &args, std::string &output) {
  std::vector<std::string> argv = {MXRK7_SETUP_APP};
  argv.insert(argv.end(), args.begin(), args.end());
  const auto run = nvx::test::run(argv);
  output = run.out + run.err;
  return run.exitCode;
}

TEST(SetupApplication, StartsOnTheDemoMixersAndDrawsEveryPage) {
  ScratchDir shots;
  ScratchDir state;
  EnvGuard env;
  env.set("MXRK7_VIRTUAL_MIXERS", std::nullopt);  // --virtual picks the demo mixers it installs
  env.set("XDG_STATE_HOME", state.path());
  std::string output;
  ASSERT_EQ(runApp({"--virtual", "--screenshots", shots.path()}, output), 0) << output;
  for (const std::string page : {"mixers", "audio", "fx", "play"}) {
    for (const std::string size : {"wide", "narrow"}) {
      const std::string path = shots.file(page + "-" + size + ".png");
      EXPECT_TRUE(isPng(path)) << path << "\n" << output;
    }
  }
  // The demo keeps its settings apart: nothing was written to the real config folder.
  EXPECT_FALSE(std::filesystem::exists(state.path() + "/mxrk7/demo/com.norvane.MXR-K7autosetup.plist"));
}

TEST(SetupApplication, AnswersVersionAndRefusesAnUnknownOption) {
  std::string output;
  EXPECT_EQ(runApp({"--version"}, output), 0);
  EXPECT_EQ(output, "mxrk7-setup " MXRK7_VERSION "\n");
  EXPECT_EQ(runApp({"--no-such-option"}, output), 1);
  EXPECT_NE(output.find("unknown option --no-such-option"), std::string::npos) << output;
}

}  // namespace
}  // namespace nvx::test
