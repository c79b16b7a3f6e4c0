#include "support/crafted_files.h"

#include "support/binary_plist.h"

namespace nvx::test {

namespace {

const std::string kPadMode = "<key>PADMode</key><integer>2</integer>\n";

std::string withProlog(const std::string &prolog, const std::string &entries) {
  return prolog + "<plist version=\"1.0\">\n<dict>\n" + entries + "</dict>\n</plist>\n";
}

std::string repeated(const std::string &text, int times) {
  std::string out;
  out.reserve(text.size() * static_cast<size_t>(times));
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

std::string nestedArrays(int levels) { return repeated("<array>", levels) + repeated("</array>", levels); }

std::string manyKeys(int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += "<key>k" + std::to_string(i) + "</key><true/>\n";
  return out;
}

std::string billionLaughs() {
  std::string doc = "<?xml version=\"1.0\"?>\n<!DOCTYPE plist [\n<!ENTITY l0 \"lol\">\n";
  for (int i = 1; i < 10; ++i)
    doc += "<!ENTITY l" + std::to_string(i) + " \"" + repeated("&l" + std::to_string(i - 1) + ";", 10) + "\">\n";
  return withProlog(doc + "]>\n", kPadMode + "<key>x</key><string>&l9;</string>\n");
}

// A binary file holding "PADMode" = 2 and `value` under "x".
template <class Build>
std::string binaryWith(Build &&build) {
  BinaryPlistBuilder b;
  const uint64_t value = build(b);
  return b.bytes(b.dict({{b.string("PADMode"), b.integer(2)}, {b.string("x"), value}}));
}

}  // namespace

std::string xmlPlist(const std::string &entries) {
  return withProlog("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n",
                    entries);
}

std::vector<CraftedFile> craftedFiles() {
  std::vector<CraftedFile> files = {
      {"an ordinary file", xmlPlist(kPadMode + "<key>Other</key><string>kept</string>\n"), true, true, 2},
      {"30,000 levels after an internal subset",
       withProlog("<!DOCTYPE x [ [ ]>\n", kPadMode + "<key>x</key>" + nestedArrays(30000)), false, false, std::nullopt},
      {"closing tags hidden in processing instructions",
       xmlPlist(kPadMode + "<key>x</key>" + repeated("<array><?x \"?>\" </array> ?>", 30000) +
                repeated("</array>", 30000)),
       false, false, std::nullopt},
      {"5,000 levels", xmlPlist(kPadMode + "<key>x</key>" + nestedArrays(5000)), false, false, std::nullopt},
      {"30,000 levels", xmlPlist(kPadMode + "<key>x</key>" + nestedArrays(30000)), false, false, std::nullopt},
      {"a billion laughs", billionLaughs(), false, false, std::nullopt},
      {"an external entity",
       withProlog("<!DOCTYPE plist [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>\n",
                  kPadMode + "<key>x</key><string>&x;</string>\n"),
       false, false, std::nullopt},
      {"an undeclared entity", xmlPlist(kPadMode + "<key>x</key><string>&x;</string>\n"), false, false, std::nullopt},
      {"2 MiB", xmlPlist(kPadMode + "<key>x</key><string>" + std::string(2 << 20, 'x') + "</string>\n"), false, false,
       std::nullopt},
      {"140,000 values", xmlPlist(kPadMode + "<key>x</key><array>" + repeated("<true/>", 140000) + "</array>\n"), false,
       false, std::nullopt},
      {"30,000 keys", xmlPlist(kPadMode + manyKeys(30000)), true, true, 2},
      {"a one-character typo", xmlPlist(kPadMode + "<key>x</key><string>y</string\n"), false, false, std::nullopt},
      {"a duplicate key (the last wins)", xmlPlist(kPadMode + "<key>PADMode</key><integer>1</integer>\n"), true, true,
       1},
      {"invalid UTF-8", xmlPlist(kPadMode + "<key>x</key><string>\xFF</string>\n"), false, false, std::nullopt},
      {"a billion values by shared references", binaryWith([](BinaryPlistBuilder &b) {
         uint64_t inner = b.array({});
         for (int i = 0; i < 30; ++i) inner = b.array({inner, inner});
         return inner;
       }),
       false, false, std::nullopt},
      {"a reference cycle", binaryWith([](BinaryPlistBuilder &b) {
         const uint64_t self = b.nextIndex();
         return b.array({self});
       }),
       false, false, std::nullopt},
      {"a 600 KB string named 20 times", binaryWith([](BinaryPlistBuilder &b) {
         return b.array(std::vector<uint64_t>(20, b.string(std::string(600 * 1024, 'x'))));
       }),
       false, false, std::nullopt},
      {"50,000 levels, binary", binaryWith([](BinaryPlistBuilder &b) {
         uint64_t inner = b.array({});
         for (int i = 1; i < 50000; ++i) inner = b.array({inner});
         return inner;
       }),
       false, false, std::nullopt},
      {"a UID (binary only)", binaryWith([](BinaryPlistBuilder &b) { return b.raw("\x80\x01"); }), true, false, 2},
      {"a control character in a string", binaryWith([](BinaryPlistBuilder &b) { return b.string("a\x01"); }), true,
       false, 2},
      {"a date with a fraction of a second",
       binaryWith([](BinaryPlistBuilder &b) { return b.date(0.5); }), true,
       false, 2},
  };
  {
    // 65,000 entries that all name one key and one value: read as one entry.
    BinaryPlistBuilder b;
    const uint64_t key = b.string("PADMode"), value = b.integer(2);
    std::vector<std::pair<uint64_t, uint64_t>> entries(65000, {key, value});
    files.push_back({"65,000 copies of one key", b.bytes(b.dict(entries)), true, true, 2});
  }
  return files;
}

}  // namespace nvx::test
