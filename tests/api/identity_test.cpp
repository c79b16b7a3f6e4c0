// Product identification, the version texts and their files, and the connection test.
#include <string>

#include "api_fixture.h"

namespace nvx::test {
namespace {

TEST(ApiProductId, FindsTheModelAnywhereInAnyCase) {
  const std::pair<const char *, int32_t> cases[] = {
      {"MXR-K7", NVX_OK}, {"mxr-k7", NVX_OK}, {"MXR-K7 Setup", NVX_OK}, {"Norvane mXr-K7 mixer", NVX_OK},
      {"MXRK7", NVX_ERROR}, {"MXR K7", NVX_ERROR}, {"", NVX_ERROR},
      {"ｍｘｒ-ｋ７", NVX_ERROR},                   // full-width letters stay full-width when upper-cased
      {"\xEF\xAC\x80 mxr-k7", NVX_OK},             // "ﬀ" upper-cases to "FF"; the model still stands as such
      {"stra\xC3\x9F" "e mxr-k7", NVX_OK},          // "ß" grows to "SS": the model is still found after it
      {"MXR-K7 \xFF\xFE", NVX_ERROR},              // not UTF-8
  };
  for (const auto &[name, result] : cases) {
    int32_t product = 42;
    EXPECT_EQ(NVX_GetProductId(name, &product), result) << name;
    EXPECT_EQ(product, result == NVX_OK ? 0 : 42) << "the output is written only on success: " << name;
  }
}

// Version files below a scratch data root.
class ApiVersionText : public ApiTest {
 protected:
  static constexpr const char *kDriver = "System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist";
  static constexpr const char *kLibrary =
      "System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist";

  ApiVersionText() { env.set("MXRK7_SYSROOT", root.path()); }
  static std::string plist(const std::string &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "\n</plist>\n";
  }
  static std::string versions(const char *shortVersion, const char *version) {
    return plist(std::string("<dict><key>CFBundleShortVersionString</key><string>") + shortVersion +
                 "</string><key>CFBundleVersion</key><string>" + version + "</string></dict>");
  }

  ScratchDir root;
};

// A number is handed out as text, and a capitalised Info.plist is found too. The product and the
// output are tested before any file is read.
TEST_F(ApiVersionText, EachFunctionReadsItsOwnFileAndKeyAfterTestingItsArguments) {
  root.write(kDriver, versions("2.1", "2.1.7"));
  root.write("Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/Info.plist",
             plist("<dict><key>CFBundleShortVersionString</key><string>3.0</string>"
                   "<key>CFBundleVersion</key><integer>1078</integer></dict>"));
  root.write(kLibrary, versions("9.8", "9.9.9"));
  const char *library = nullptr, *text = nullptr;
  ASSERT_EQ(NVX_GetLibraryVersionText(0, &library), NVX_OK);
  ASSERT_EQ(NVX_GetDriverVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "2.1");  // the driver's short version
  ASSERT_EQ(NVX_GetUtilityVersionText(0, &text), NVX_OK);
  EXPECT_STREQ(text, "1078");  // the application's build version
  EXPECT_STREQ(library, "9.9.9") << "valid until the next call of the same function on the thread";
  for (auto function : {NVX_GetDriverVersionText, NVX_GetUtilityVersionText, NVX_GetLibraryVersionText}) {
    text = "untouched";
    EXPECT_EQ(function(1, &text), NVX_ERROR);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(function(0, nullptr), NVX_ERROR);
  }
}

TEST_F(ApiVersionText, BadFilesAndKeysGiveErrorWithTheOutputUntouched) {
  const std::pair<const char *, std::string> cases[] = {
      {"missing file", ""},
      {"root is an array", plist("<array><string>1.0</string></array>")},
      {"the driver's key missing", plist("<dict><key>CFBundleVersion</key><string>1.0</string></dict>")},
      {"value is a dictionary", plist("<dict><key>CFBundleShortVersionString</key><dict/></dict>")},
  };
  for (const auto &[what, content] : cases) {
    ScratchDir fresh;
    env.set("MXRK7_SYSROOT", fresh.path());
    if (!content.empty()) fresh.write(kDriver, content);
    const char *text = "untouched";
    EXPECT_EQ(NVX_GetDriverVersionText(0, &text), NVX_ERROR) << what;
    EXPECT_STREQ(text, "untouched") << what;
  }
}

// Mixers are counted afresh at every call, and counting opens nothing.
TEST_F(ApiTest, ConnectionCountsMixersOfTheOneProduct) {
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
  bus.setMixers(mixers(2));
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_CONNECTED);
  EXPECT_EQ(NVX_IsUSBConnection(5), NVX_NOT_CONNECTED);
  EXPECT_EQ(NVX_IsUSBConnection(-1), NVX_NOT_CONNECTED);
  EXPECT_TRUE(bus.log().empty());
  bus.setMixers({});
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
}

TEST_F(ApiTest, ConnectionWithAMissingOrInvalidConfigIsABusWithoutMixers) {
  ScratchDir dir;
  for (const char *config : {"not json", "{\"mixers\": [{\"serato\": \"yes\"}]}", "{\"mixers\": {}}"}) {
    env.set("MXRK7_VIRTUAL_MIXERS", dir.write("mixers.json", config));
    EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED) << config;
  }
  env.set("MXRK7_VIRTUAL_MIXERS", "/nonexistent/mixers.json");
  EXPECT_EQ(NVX_IsUSBConnection(0), NVX_NOT_CONNECTED);
}

}  // namespace
}  // namespace nvx::test
