// The property-list reader: value access, accepted formats, and what counts as unreadable.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <limits>

#include "store/plist_file.h"
#include "support/scratch_dir.h"
#include "plist_builders.h"

namespace {

using nvx::store::kMaxPlistBytes;
using nvx::store::kMaxPlistDepth;
using nvx::store::parsePlistDictionary;
using nvx::store::readPlistDictionary;
using namespace nvx::test;

std::string xmlDict(const std::string &body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" + body +
         "</dict>\n</plist>\n";
}

struct IntegerCase {
  const char *text;  // as written in the file
  std::optional<int32_t> expected;
};

TEST(PlistReader, IntegersReadAsSigned64BitThenTakenTo32Bits) {
  const IntegerCase cases[] = {
      {"5", 5},
      {"0", 0},
      {"-1", -1},
      {"-2147483648", std::numeric_limits<int32_t>::min()},
      {"2147483647", std::numeric_limits<int32_t>::max()},
      {"4294967295", -1},                 // low 32 bits of 0xFFFFFFFF
      {"4294967298", 2},                  // 2^32 + 2
      {"-4294967297", -1},                // low 32 bits of -(2^32 + 1)
      {"18446744073709551615", -1},       // the unsigned 64-bit maximum is -1 read as signed
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.text);
    auto dict = parsePlistDictionary(xmlDict(std::string("<key>v</key><integer>") + c.text + "</integer>\n"));
    ASSERT_TRUE(dict);
    EXPECT_EQ(dict->integer("v"), c.expected);
  }
}

TEST(PlistReader, OtherTypesUnderAKeyReadAsAbsentIntegers) {
  const auto dict = parsePlistDictionary(xmlDict(
      "<key>string</key><string>5</string>\n"
      "<key>real</key><real>5.0</real>\n"
      "<key>true</key><true/>\n"
      "<key>date</key><date>2020-01-02T03:04:05Z</date>\n"
      "<key>data</key><data>AAE=</data>\n"
      "<key>array</key><array><integer>5</integer></array>\n"
      "<key>dict</key><dict><key>v</key><integer>5</integer></dict>\n"));
  ASSERT_TRUE(dict);
  for (const char *key : {"string", "real", "true", "date", "data", "array", "dict", "missing"}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(dict->integer(key), std::nullopt);
    EXPECT_EQ(dict->contains(key), std::string(key) != "missing");
  }
}

TEST(PlistReader, TextOfScalars) {
  const auto dict = parsePlistDictionary(xmlDict(
      "<key>string</key><string>1.0.2 &amp; more</string>\n"
      "<key>negative</key><integer>-3</integer>\n"
      "<key>real</key><real>1.5</real>\n"
      "<key>yes</key><true/>\n"
      "<key>no</key><false/>\n"
      "<key>date</key><date>2020-01-02T03:04:05Z</date>\n"
      "<key>data</key><data>AAE=</data>\n"
      "<key>array</key><array/>\n"));
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->scalarText("string"), "1.0.2 & more");
  EXPECT_EQ(dict->string("string"), "1.0.2 & more");
  EXPECT_EQ(dict->scalarText("negative"), "-3");
  EXPECT_EQ(dict->string("negative"), std::nullopt);
  EXPECT_EQ(dict->scalarText("real"), "1.5");
  EXPECT_EQ(dict->scalarText("yes"), "true");
  EXPECT_EQ(dict->scalarText("no"), "false");
  for (const char *key : {"date", "data", "array", "missing"}) {
    SCOPED_TRACE(key);
    EXPECT_EQ(dict->scalarText(key), std::nullopt);
    EXPECT_EQ(dict->string(key), std::nullopt);
  }
}

TEST(PlistReader, BinaryPropertyListsReadLikeXml) {
  plist_t root = plist_new_dict();
  plist_dict_set_item(root, "negative", plist_new_uint(static_cast<uint64_t>(int64_t{-7})));
  plist_dict_set_item(root, "positive", plist_new_uint(70000));
  plist_dict_set_item(root, "name", plist_new_string("MXR-K7"));
  const std::string bytes = toBinary(root);
  plist_free(root);
  ASSERT_TRUE(bytes.starts_with("bplist00"));

  const auto dict = parsePlistDictionary(bytes);
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->integer("negative"), -7);
  EXPECT_EQ(dict->integer("positive"), 70000);
  EXPECT_EQ(dict->string("name"), "MXR-K7");
}

TEST(PlistReader, BinaryDataMayHoldNulAndUtf16StringsAreRead) {
  BinaryPlistBuilder b;
  const uint64_t root = b.dict({{b.string("data"), b.data(std::string("\0\1\0", 3))},
                                {b.string("text"), b.utf16(u"Gr\u00FC\u00DFe")}});
  const auto dict = parsePlistDictionary(b.bytes(root));
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->string("text"), "Gr\xC3\xBC\xC3\x9F" "e");
  uint64_t length = 0;
  plist_get_data_ptr(plist_dict_get_item(dict->raw(), "data"), &length);
  EXPECT_EQ(length, 3u);
}

TEST(PlistReader, ReferencesSharedByManyEntriesAreAccepted) {
  // Writers share equal values; a dictionary whose 100000 array entries all name one string is an
  // ordinary file and must not trip the cap on expanded nodes.
  BinaryPlistBuilder b;
  const uint64_t shared = b.string("same");
  const uint64_t list = b.array(std::vector<uint64_t>(100000, shared));
  const uint64_t root = b.dict({{b.string("list"), list}, {b.string("v"), b.integer(4)}});
  const auto dict = parsePlistDictionary(b.bytes(root));
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->integer("v"), 4);
  EXPECT_EQ(plist_array_get_size(plist_dict_get_item(dict->raw(), "list")), 100000u);
}

TEST(PlistReader, NestingUpToTheCapIsReadAndOneLevelMoreIsNot) {
  // The root dictionary is the first level.
  EXPECT_TRUE(parsePlistDictionary(deepXmlPlist(kMaxPlistDepth - 1)));
  EXPECT_FALSE(parsePlistDictionary(deepXmlPlist(kMaxPlistDepth)));
  EXPECT_TRUE(parsePlistDictionary(deepBinaryPlist(kMaxPlistDepth - 1)));
  EXPECT_FALSE(parsePlistDictionary(deepBinaryPlist(kMaxPlistDepth)));
}

TEST(PlistReader, MarkupInsideCommentsTextAndAttributesDoesNotCountAsNesting) {
  std::string noise;
  for (int i = 0; i < 2 * kMaxPlistDepth; ++i) noise += "<dict><array>";
  const std::string body = "<!-- " + noise + " -->\n<key>text</key><string><![CDATA[" + noise +
                           "]]></string>\n<key>empty</key><array note=\"" + noise +
                           "\"/>\n<key>v</key><integer>9</integer>\n";
  const auto dict = parsePlistDictionary(xmlDict(body));
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->integer("v"), 9);
  EXPECT_EQ(dict->string("text"), noise);
}

TEST(PlistReader, SizeUpToTheCapIsReadAndOneByteMoreIsNot) {
  const std::string head =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
      "<key>v</key><integer>7</integer>\n<key>pad</key><string>";
  const std::string tail = "</string>\n</dict>\n</plist>\n";
  const std::string exact = head + std::string(kMaxPlistBytes - head.size() - tail.size(), 'x') + tail;
  ASSERT_EQ(exact.size(), kMaxPlistBytes);
  const auto dict = parsePlistDictionary(exact);
  ASSERT_TRUE(dict);
  EXPECT_EQ(dict->integer("v"), 7);

  const std::string over = head + std::string(kMaxPlistBytes - head.size() - tail.size() + 1, 'x') + tail;
  EXPECT_FALSE(parsePlistDictionary(over));

  ScratchDir dir;
  EXPECT_TRUE(readPlistDictionary(dir.write("exact.plist", exact)));
  EXPECT_FALSE(readPlistDictionary(dir.write("over.plist", over)));
}

struct UnreadableCase {
  const char *name;
  std::string bytes;
};

std::vector<UnreadableCase> unreadableCases() {
  std::vector<UnreadableCase> cases{
      {"empty", ""},
      {"not a property list", "this is not a property list\n"},
      {"cut off XML", xmlDict("<key>v</key><integer>1</integer>\n").substr(0, 90)},
      {"array root", "<?xml version=\"1.0\"?><plist version=\"1.0\"><array><integer>1</integer></array></plist>"},
      {"string root", "<?xml version=\"1.0\"?><plist version=\"1.0\"><string>x</string></plist>"},
      {"binary magic only", "bplist00"},
      {"2 MiB", xmlDict("<key>pad</key><string>" + std::string(2 * 1024 * 1024, 'x') + "</string>\n")},
      {"deep XML", deepXmlPlist(50000)},
      {"deep binary", deepBinaryPlist(50000)},
  };
  {
    // An array that holds itself: endless nesting.
    BinaryPlistBuilder b;
    const uint64_t self = b.nextIndex();
    b.array({self});
    const uint64_t root = b.dict({{b.string("loop"), self}});
    cases.push_back({"reference cycle", b.bytes(root)});
  }
  {
    // 21 levels of arrays holding the next one twice: shallow, but 4 million nodes once expanded.
    BinaryPlistBuilder b;
    uint64_t inner = b.array({});
    for (int i = 0; i < 21; ++i) inner = b.array({inner, inner});
    const uint64_t root = b.dict({{b.string("wide"), inner}});
    cases.push_back({"exponential expansion", b.bytes(root)});
  }
  {
    // One string of 600 KB named 20 times: a small file, but 12 MB of strings once expanded.
    BinaryPlistBuilder b;
    const uint64_t big = b.string(std::string(600 * 1024, 'x'));
    const uint64_t root = b.dict({{b.string("many"), b.array(std::vector<uint64_t>(20, big))}});
    cases.push_back({"large string named many times", b.bytes(root)});
  }
  // A NUL in a string or key: libplist 2.2's getters abort the process on such a string.
  cases.push_back({"NUL in an XML string", xmlDict(std::string("<key>s</key><string>a\0b</string>\n", 33))});
  cases.push_back({"NUL in an XML key", xmlDict(std::string("<key>a\0b</key><integer>1</integer>\n", 35))});
  {
    BinaryPlistBuilder b;
    cases.push_back({"NUL in a binary key", b.bytes(b.dict({{b.string(std::string("a\0b", 3)), b.integer(1)}}))});
  }
  {
    BinaryPlistBuilder b;
    cases.push_back({"NUL in a binary string", b.bytes(b.dict({{b.string("s"), b.string(std::string("a\0", 2))}}))});
  }
  {
    BinaryPlistBuilder b;
    cases.push_back({"NUL in a UTF-16 string", b.bytes(b.dict({{b.string("s"), b.utf16(std::u16string(u"a\0b", 3))}}))});
  }
  {
    BinaryPlistBuilder b;
    const uint64_t root = b.dict({{b.string("v"), b.integer(1)}});
    const std::string good = b.bytes(root);
    EXPECT_TRUE(parsePlistDictionary(good)) << "the builder's own file must be readable";

    std::string badRef = good;  // the value reference names an object that does not exist
    const size_t dictAt = good.find('\xD1');
    badRef[dictAt + 8] = '\x7F';
    cases.push_back({"reference past the objects", badRef});

    std::string badOffset = good;  // the offset table points past the object data
    const size_t tableAt = good.size() - 32 - 3 * 4;
    badOffset[tableAt] = '\x7F';
    cases.push_back({"offset past the data", badOffset});

    std::string badTrailer = good;  // reference size 0
    badTrailer[good.size() - 25] = '\0';
    cases.push_back({"bad trailer", badTrailer});

    cases.push_back({"truncated binary", good.substr(0, good.size() - 1)});
  }
  return cases;
}

TEST(PlistReader, UnreadableInputsGiveNoDictionary) {
  ScratchDir dir;
  for (const auto &c : unreadableCases()) {
    SCOPED_TRACE(c.name);
    const auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(parsePlistDictionary(c.bytes));
    EXPECT_FALSE(readPlistDictionary(dir.write("case.plist", c.bytes)));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
  }
}

TEST(PlistReader, FilesThatAreNotRegularFilesAreUnreadable) {
  ScratchDir dir;
  EXPECT_FALSE(readPlistDictionary(dir.file("missing.plist")));
  EXPECT_FALSE(readPlistDictionary(dir.path()));
  // A FIFO must not block the reader (nobody ever writes into it).
  const std::string fifo = dir.file("fifo.plist");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(readPlistDictionary(fifo));
}

}  // namespace
