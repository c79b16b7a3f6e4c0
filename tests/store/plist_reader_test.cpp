// The property-list reader and writer: every kind of value in both formats, what counts as
// unreadable, the caps at their edges, and what the writer refuses to write.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "store/plist_file.h"
#include "store/plist_reader.h"
#include "store/plist_writer.h"
#include "support/binary_plist.h"
#include "support/crafted_files.h"

namespace {

using namespace nvx::store;
using nvx::test::BinaryPlistBuilder;
using nvx::test::xmlPlist;

PlistValue integer(uint64_t bits, bool negative = false) { return PlistValue(PlistInteger{bits, negative}); }
PlistValue real(double value) { return PlistValue(PlistReal{value}); }
PlistValue text(std::string value) { return PlistValue(std::move(value)); }

// The value under "v" of a file holding `entry` after <key>v</key>; nullopt when unreadable.
std::optional<PlistValue> valueOf(const std::string &bytes) {
  const auto dict = parsePlistDictionary(bytes);
  if (!dict) return std::nullopt;
  const PlistValue *value = dict->entries().find("v");
  return value ? std::optional<PlistValue>(*value) : std::nullopt;
}

std::optional<PlistValue> xmlValue(const std::string &entry) {
  return valueOf(xmlPlist("<key>v</key>" + entry + "\n"));
}

TEST(StorePlistReader, XmlValuesOfEveryKindAndWhatIsUnreadable) {
  PlistArray array;
  array.items.push_back(integer(1));
  const struct {
    const char *entry;
    std::optional<PlistValue> expected;  // nullopt: unreadable
  } cases[] = {
      {"<integer>5</integer>", integer(5)},
      {"<integer>-1</integer>", PlistValue::signedInteger(-1)},
      {"<integer>18446744073709551615</integer>", integer(~uint64_t{0})},
      {"<integer>-9223372036854775808</integer>", PlistValue::signedInteger(std::numeric_limits<int64_t>::min())},
      {"<integer> +0x1F </integer>", integer(31)},
      {"<real>1.75</real>", real(1.75)},
      {"<real>-0</real>", real(-0.0)},
      {"<real>1e-320</real>", real(1e-320)},
      {"<real>+infinity</real>", real(std::numeric_limits<double>::infinity())},
      {"<real>-inf</real>", real(-std::numeric_limits<double>::infinity())},
      {"<real>nan</real>", real(std::nan(""))},
      {"<date>2020-01-02T03:04:05Z</date>", PlistValue(PlistDate{599627045})},
      {"<date>0001-01-01T00:00:00Z</date>", PlistValue(PlistDate{-63113904000})},
      {"<data> AA\n E= </data>", PlistValue(PlistData{std::string("\0\1", 2)})},
      {"<string>a &amp; &lt;b&gt; &#13;&#x1F600;</string>", text("a & <b> \r\xF0\x9F\x98\x80")},
      {"<string><![CDATA[<dict>]]></string>", text("<dict>")},
      {"<string/>", text("")},
      {"<true/>", PlistValue(true)},
      {"<false></false>", PlistValue(false)},
      {"<array><!-- one --><integer>1</integer></array>", PlistValue(array)},
      {"<dict/>", PlistValue(PlistDictionary{})},
      {"<integer>5x</integer>", std::nullopt},
      {"<integer></integer>", std::nullopt},
      {"<integer>18446744073709551616</integer>", std::nullopt},
      {"<integer>-9223372036854775809</integer>", std::nullopt},
      {"<integer>012</integer>", std::nullopt},
      {"<real>1,75</real>", std::nullopt},
      {"<real>0x1p3</real>", std::nullopt},
      {"<date>2020-02-30T00:00:00Z</date>", std::nullopt},
      {"<date>2020-01-02 03:04:05</date>", std::nullopt},
      {"<data>AAE</data>", std::nullopt},
      {"<data>A!E=</data>", std::nullopt},
      {"<string>a<b/></string>", std::nullopt},
      {"<true>yes</true>", std::nullopt},
      {"<foo/>", std::nullopt},
      {"<dict><key>a</key></dict>", std::nullopt},
      {"<dict><integer>1</integer></dict>", std::nullopt},
      {"<dict>text<key>a</key><true/></dict>", std::nullopt},
      {"<integer>1</integer><integer>2</integer>", std::nullopt},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.entry);
    EXPECT_EQ(xmlValue(c.entry), c.expected);
  }
  EXPECT_FALSE(parsePlistDictionary("<plist><array/></plist>")) << "the root must be a dictionary";
  EXPECT_TRUE(parsePlist("<plist><array/></plist>"));
}

TEST(StorePlistReader, BinaryValuesOfEveryKind) {
  struct Case {
    const char *name;
    uint64_t (*build)(BinaryPlistBuilder &);
    std::optional<PlistValue> expected;  // nullopt: unreadable
  };
  const Case cases[] = {
      {"8-byte integer", [](BinaryPlistBuilder &b) { return b.integer(-7); }, PlistValue::signedInteger(-7)},
      {"1-byte integer", [](BinaryPlistBuilder &b) { return b.raw("\x10\xC8"); }, integer(200)},
      {"16-byte integer",
       [](BinaryPlistBuilder &b) { return b.raw("\x14" + std::string(8, '\0') + std::string(8, '\xFF')); },
       integer(~uint64_t{0})},
      {"16-byte integer beyond 64 bits",
       [](BinaryPlistBuilder &b) { return b.raw("\x14\x01" + std::string(15, '\0')); },
       PlistValue(PlistForeign{0x14})},
      {"4-byte real", [](BinaryPlistBuilder &b) { return b.raw(std::string("\x22\x3F\xC0\x00\x00", 5)); }, real(1.5)},
      {"8-byte real", [](BinaryPlistBuilder &b) { return b.real(0.1); }, real(0.1)},
      {"UTF-16 string", [](BinaryPlistBuilder &b) { return b.utf16(u"Gr\u00FC\u00DFe \U0001F600"); },
       text("Gr\xC3\xBC\xC3\x9F" "e \xF0\x9F\x98\x80")},
      {"unpaired surrogate", [](BinaryPlistBuilder &b) { return b.utf16(u"a\xD800"); }, PlistValue(PlistForeign{0x62})},
      {"data with NUL bytes", [](BinaryPlistBuilder &b) { return b.data(std::string("\0\1\0", 3)); },
       PlistValue(PlistData{std::string("\0\1\0", 3)})},
      {"UID", [](BinaryPlistBuilder &b) { return b.raw("\x80\x05"); }, PlistValue(PlistForeign{0x80})},
      {"null", [](BinaryPlistBuilder &b) { return b.raw(std::string(1, '\0')); }, PlistValue(PlistForeign{0x00})},
      {"set", [](BinaryPlistBuilder &b) { return b.raw(std::string("\xC1\x00\x00\x00\x00", 5)); },
       PlistValue(PlistForeign{0xC1})},
      {"unknown marker", [](BinaryPlistBuilder &b) { return b.raw("\x71" "a"); }, std::nullopt},
      {"reference past the objects", [](BinaryPlistBuilder &b) { return b.array({999}); }, std::nullopt},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    BinaryPlistBuilder b;
    const uint64_t value = c.build(b);
    EXPECT_EQ(valueOf(b.bytes(b.dict({{b.string("v"), value}}))), c.expected);
  }
}

// The caps the settings file has: 128 levels of nesting, 1 MiB; the last that reads and one more.
TEST(StorePlistReader, CapsAtTheirEdges) {
  const auto nested = [](int levels) {  // the root dictionary is level 1
    std::string xml;
    for (int i = 0; i < levels - 1; ++i) xml += "<array>";
    for (int i = 0; i < levels - 1; ++i) xml += "</array>";
    return xmlPlist("<key>v</key>" + xml + "\n");
  };
  EXPECT_TRUE(parsePlistDictionary(nested(128)));
  EXPECT_FALSE(parsePlistDictionary(nested(129)));
  const auto binaryNested = [](int levels) {
    BinaryPlistBuilder b;
    uint64_t inner = b.array({});
    for (int i = 2; i < levels; ++i) inner = b.array({inner});
    return b.bytes(b.dict({{b.string("v"), inner}}));
  };
  EXPECT_TRUE(parsePlistDictionary(binaryNested(128)));
  EXPECT_FALSE(parsePlistDictionary(binaryNested(129)));
  const std::string empty = xmlPlist("<key>v</key><string></string>\n");
  const auto sized = [&](size_t size) {
    std::string bytes = empty;
    return bytes.insert(empty.find("</string>"), size - empty.size(), 'x');
  };
  EXPECT_TRUE(parsePlistDictionary(sized(1 << 20)));
  EXPECT_FALSE(parsePlistDictionary(sized((1 << 20) + 1)));
}

TEST(StorePlistWriter, WritesTheCanonicalForm) {
  PlistDictionary dict;
  dict.set("MaxLevel", PlistValue::signedInteger(2));
  EXPECT_EQ(std::get<std::string>(plistXml(PlistValue(dict))),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n<dict>\n\t<key>MaxLevel</key>\n\t<integer>2</integer>\n</dict>\n</plist>\n");
}

TEST(StorePlistWriter, RefusesWhatXmlCannotHold) {
  // Foreign values, control characters and fractions of a second are refused too: see the crafted files.
  const PlistValue cases[] = {text(std::string("a\0b", 3)), text("\xFF"), text("\xEF\xBF\xBE") /* U+FFFE */,
                              PlistValue(PlistDate{3e11}) /* after the year 9999 */};
  for (const auto &value : cases) {
    PlistDictionary asValue;
    asValue.set("v", value);
    EXPECT_EQ(std::get<XmlRefusal>(plistXml(PlistValue(asValue))), XmlRefusal::Unrepresentable);
  }
  PlistDictionary badKey;
  badKey.set(std::string("a\0", 2), PlistValue(true));
  EXPECT_EQ(std::get<XmlRefusal>(plistXml(PlistValue(badKey))), XmlRefusal::Unrepresentable);
  PlistDictionary large;
  large.set("v", PlistValue(PlistData{std::string(1 << 20, 'x')}));
  EXPECT_EQ(std::get<XmlRefusal>(plistXml(PlistValue(large))), XmlRefusal::TooLarge);
}

}  // namespace
