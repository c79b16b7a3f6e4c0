// Product identification, the version texts and their files, and the connection test.
#include <string>

#include "api_fixture.h"

namespace nvx::test {
namespace {

struct NameCase {
  const char *name;
  int32_t result;
};

// Printed by name: GoogleTest's fallback prints the raw bytes, padding included, which valgrind
// rightly reports as a read of uninitialised memory.
void PrintTo(const NameCase &c, std::ostream *os) { *os << '"' << c.name << "\" -> " << c.result; }

class ApiProductId : public ::testing::TestWithParam<NameCase> {};

TEST_P(ApiProductId, FindsTheModelAnywhereInAnyCase) {
  int32_t product = 42;
  EXPECT_EQ(NVX_GetProductId(GetParam().name, &product), GetParam().result) << GetParam().name;
  EXPECT_EQ(product, GetParam().result == NVX_OK ? 0 : 42) << "the output is written only on success";
}

INSTANTIATE_TEST_SUITE_P(
    , ApiProductId,
    ::testing::Values(NameCase{"MXR-K7", NVX_OK}, NameCase{"mxr-k7", NVX_OK}, NameCase{"MXR-K7 Setup", NVX_OK},
                      NameCase{"Norvane mXr-K7 mixer", NVX_OK}, NameCase{"MXRK7", NVX_ERROR},
                      NameCase{"MXR K7", NVX_ERROR}, NameCase{"", NVX_ERROR},
                      // Full-width letters stay full-width when upper-cased.
                      NameCase{"ｍｘｒ-ｋ７", NVX_ERROR},
                      // "ﬀ" upper-cases to "FF"; the model still has to stand there as such.
                      NameCase{"\xEF\xAC\x80 mxr-k7", NVX_OK},
                      // Not UTF-8.
                      NameCase{"MXR-K7 \xFF\xFE", NVX_ERROR}));

TEST(ApiProductIdText, ThatGrowsWhenUpperCasedStillMatches) {
  // "ß" upper-cases to "SS" (special casing): the text grows, the model is still found after it.
  int32_t product = 42;
  EXPECT_EQ(NVX_GetProductId("stra\xC3\x9F" "e mxr-k7", &product), NVX_OK);
  EXPECT_EQ(product, 0);
}

// Version files below a scratch data root.
class ApiVersionText : public ApiTest {
 protected:
  ApiVersionText() { env.set("MXRK7_SYSROOT", root.path()); }

  static std::string plist(const std::string &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "\n</plist>\n";
  }
  void writeDriver(const std::string &content) {
    root.write("System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist", content);
  }
  void writeUtility(const std::string &content) {
    root.write("Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist", content);
  }
  void writeLibrary(const std::string &content) {
    root.write("System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist", content);
  }

  ScratchDir root;
};

TEST_F(ApiVersionText, EachFunctionReadsItsOwnFileAndKey) {
  writeDriver(plist("<dict><key>CFBundleShortVersionString</key><string>2.1</string>"
                    "<key>CFBundleVersion</key><string>2.1.7</string></dict>"));
  writeUtility(plist("<dict><key>CFBundleShortVersionString</key><string>3.0</string>"
                     "<key>CFBundleVersion</key><string>3.0.4</string></dict>"));
  writeLibrary(plist("<dict><key>CFBundleVersion</key><string>9.9.9</string></dict>"));
  const char *text = nullptr;
  ASSERT_EQ(NVX_GetDriverVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "2.1");  // the driver's short version
  ASSERT_EQ(NVX_GetUtilityVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "3.0.4");  // the application's build version
  ASSERT_EQ(NVX_GetLibraryVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "9.9.9");
}

TEST_F(ApiVersionText, BadFilesAndKeysGiveErrorWithTheOutputUntouched) {
  const std::vector<std::pair<const char *, std::string>> cases = {
      {"missing file", ""},
      {"malformed", "<plist><dict><key>CFBundleVersion</key>"},
      {"root is an array", plist("<array><string>1.0</string></array>")},
      {"key missing, another key present",
       plist("<dict><key>CFBundleVersion</key><string>1.0</string></dict>")},  // driver wants the short one
      {"value is a dictionary", plist("<dict><key>CFBundleShortVersionString</key><dict/></dict>")},
  };
  for (const auto &[what, content] : cases) {
    SCOPED_TRACE(what);
    ScratchDir fresh;
    env.set("MXRK7_SYSROOT", fresh.path());
    if (!content.empty())
      fresh.write("System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist", content);
    const char *text = "untouched";
    EXPECT_EQ(NVX_GetDriverVersionText(0, &text), NVX_ERROR);
    EXPECT_STREQ(text, "untouched");
  }
}

TEST_F(ApiVersionText, ANumberIsHandedOutAsText) {
  writeUtility(plist("<dict><key>CFBundleVersion</key><integer>1078</integer></dict>"));
  const char *text = nullptr;
  ASSERT_EQ(NVX_GetUtilityVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "1078");
}

TEST_F(ApiVersionText, ACapitalisedInfoPlistIsFoundToo) {
  root.write("Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/Info.plist",
             plist("<dict><key>CFBundleVersion</key><string>4.2</string></dict>"));
  const char *text = nullptr;
  ASSERT_EQ(NVX_GetUtilityVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "4.2");
}

// With the files there: the product and the output are tested before any file is read.
TEST_F(ApiVersionText, ArgumentsAreTestedBeforeTheFileIsRead) {
  writeDriver(plist("<dict><key>CFBundleShortVersionString</key><string>2.1</string></dict>"));
  writeLibrary(plist("<dict><key>CFBundleVersion</key><string>9.9.9</string></dict>"));
  for (auto function : {NVX_GetDriverVersionText, NVX_GetUtilityVersionText, NVX_GetLibraryVersionText}) {
    const char *text = "untouched";
    EXPECT_EQ(function(1, &text), NVX_ERROR);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(function(0, nullptr), NVX_ERROR);
  }
}

TEST_F(ApiVersionText, TheTextStaysValidUntilTheNextCallOnTheThread) {
  writeLibrary(plist("<dict><key>CFBundleVersion</key><string>5.6.7</string></dict>"));
  const char *first = nullptr;
  ASSERT_EQ(NVX_GetLibraryVersionText(0, &first), NVX_OK);
  const char *driver = nullptr;
  EXPECT_EQ(NVX_GetDriverVersionText(0, &driver), NVX_ERROR);  // another function does not disturb it
  EXPECT_STREQ(first, "5.6.7");
}

TEST(ApiLibraryVersion, TheBuiltBundleCarriesTheProjectVersion) {
  // No MXRK7_SYSROOT: the library finds the bundle next to itself, as staged by the build.
  EnvGuard env;
  env.set("MXRK7_SYSROOT", std::nullopt);
  const char *text = nullptr;
  ASSERT_EQ(NVX_GetLibraryVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, MXRK7_PROJECT_VERSION);
}

class ApiConnection : public ApiTest {};

TEST_F(ApiConnection, CountsMixersForTheOneProductOnly) {
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
  bus.setMixers(mixers(2));
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_CONNECTED);
  EXPECT_EQ(NVX_IsUSBConnection(5), NVX_NOT_CONNECTED);
  EXPECT_EQ(NVX_IsUSBConnection(-1), NVX_NOT_CONNECTED);
  EXPECT_TRUE(bus.log().empty()) << "counting opens nothing";
}

TEST_F(ApiConnection, AMissingOrInvalidConfigIsABusWithoutMixers) {
  for (const char *config : {"not json", "{\"mixers\": [{\"serato\": \"yes\"}]}", "{\"mixers\": {}}"}) {
    ScratchDir dir;
    env.set("MXRK7_VIRTUAL_MIXERS", dir.write("mixers.json", config));
    EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED) << config;
  }
  env.set("MXRK7_VIRTUAL_MIXERS", "/nonexistent/mixers.json");
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
}

TEST_F(ApiConnection, MixersAreCountedAfreshAtEveryCall) {
  bus.setMixers(mixers(1));
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_CONNECTED);
  bus.setMixers({});
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
}

}  // namespace
}  // namespace nvx::test
