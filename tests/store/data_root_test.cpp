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

TEST(DataRoot, WithoutSysrootItIsFoundFromTheProgramThatCarriesTheCode) {
  // This test program has the store linked in: the root is found from the program's own path, in
  // the build tree laid out like the install prefix, where the build stages the library's data.
  for (const std::optional<std::string> &value : {std::optional<std::string>(), std::optional<std::string>("")}) {
    nvx::test::EnvGuard env;
    env.set("MXRK7_SYSROOT", value);
    const std::string root = dataRoot();
    EXPECT_EQ(root, installedDataRoot());
    EXPECT_EQ(root, fs::path(root).lexically_normal().string());
    EXPECT_TRUE(fs::is_regular_file(libraryInfoPlistPath())) << root;
  }
  EXPECT_TRUE(fs::is_directory(fs::path(programPrefix()) / "share/mxrk7")) << programPrefix();
}

}  // namespace
