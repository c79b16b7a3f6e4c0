// The data root and the fixed paths below it.
#include <gtest/gtest.h>

#include <filesystem>

#include "store/data_root.h"
#include "support/scratch_dir.h"

namespace {

namespace fs = std::filesystem;
using namespace nvx::store;

TEST(DataRoot, SysrootVariableWinsAndFixesEveryPath) {
  nvx::test::EnvGuard env;
  env.set("MXRK7_SYSROOT", "/opt/mixer root");
  EXPECT_EQ(dataRoot(), "/opt/mixer root");
  EXPECT_EQ(driverInfoPlistPath(), "/opt/mixer root/System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist");
  EXPECT_EQ(utilityInfoPlistPath(), "/opt/mixer root/Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist");
  EXPECT_EQ(libraryBundlePath(), "/opt/mixer root/System/Library/Frameworks/NorvaneMXRK7Setup.framework");
  EXPECT_EQ(libraryResourcesPath(),
            "/opt/mixer root/System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources");
  EXPECT_EQ(libraryInfoPlistPath(),
            "/opt/mixer root/System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist");
}

TEST(DataRoot, WithoutSysrootItIsFoundNextToTheLoadedCode) {
  // This test program has the store linked in, so the root is <program folder>/../share/mxrk7.
  const fs::path expected = fs::canonical("/proc/self/exe").parent_path().parent_path() / "share/mxrk7";
  for (const std::optional<std::string> &value : {std::optional<std::string>(), std::optional<std::string>("")}) {
    nvx::test::EnvGuard env;
    env.set("MXRK7_SYSROOT", value);
    const std::string root = dataRoot();
    ASSERT_TRUE(root.starts_with("/")) << root;
    EXPECT_EQ(fs::weakly_canonical(root), fs::weakly_canonical(expected)) << root;
    EXPECT_EQ(libraryInfoPlistPath(), root + "/System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist");
  }
}

}  // namespace
