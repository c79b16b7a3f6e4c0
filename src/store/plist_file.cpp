// Property-list reading on libplist 2.2, with the input checked before libplist parses it.
//
// libplist's binary reader recurses once per nesting level and expands every object reference into a
// fresh copy of the object, so a small crafted file can exhaust the stack (deep or cyclic
// references) or memory (large objects referenced many times). Its trees are also freed and printed
// recursively, and its string and key getters abort the process (an assert) on a string holding a
// NUL byte. The checks here rule all of that out before libplist is called: the size cap, a nesting
// cap for both formats, no NUL in any string, and for the binary format caps on the number of nodes
// and on the string and data bytes that the expansion yields.
// (libplist 2.2 reads XML without recursion; the XML nesting cap protects what comes after.)
#include "store/plist_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <utility>
#include <vector>

namespace nvx::store {

namespace {

// A binary property list expands shared references into separate nodes. A file without shared
// containers yields at most one node per reference, and every reference takes at least one byte, so
// a real file stays below this count; only crafted reference graphs exceed it.
constexpr uint64_t kMaxBinaryNodes = kMaxPlistBytes;
// Likewise the string and data bytes of all expanded nodes: without sharing they are part of the
// file; writers share equal strings, which leaves room for some repetition, not for a blow-up.
constexpr uint64_t kMaxBinaryExpandedBytes = 8 * kMaxPlistBytes;

constexpr std::string_view kBinaryMagic = "bplist00";
constexpr size_t kBinaryTrailerSize = 32;

bool startsWith(std::string_view text, size_t at, std::string_view prefix) {
  return text.size() - at >= prefix.size() && text.compare(at, prefix.size(), prefix) == 0;
}

bool isXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Finds the '>' that ends a tag or (with `brackets`) a declaration, starting at `from`: a '>' inside
// double quotes or, in a declaration, inside [...] does not count. Single quotes are plain
// characters here, as they are to libplist: the scan must end a tag exactly where libplist does.
// Returns npos when the text ends first.
size_t findMarkupEnd(std::string_view text, size_t from, bool brackets) {
  bool quoted = false;
  int bracketDepth = 0;
  for (size_t i = from; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      quoted = !quoted;
    } else if (quoted) {
      continue;
    } else if (brackets && c == '[') {
      ++bracketDepth;
    } else if (brackets && c == ']' && bracketDepth > 0) {
      --bracketDepth;
    } else if (c == '>' && bracketDepth == 0) {
      return i;
    }
  }
  return std::string_view::npos;
}

// Checks an XML property list: no NUL byte (XML has none, and a string holding one would reach
// libplist's aborting getters), and the nesting of <array> and <dict> elements, counted while
// scanning the text. Comments, CDATA sections, processing instructions and the DOCTYPE are skipped
// as an XML reader skips them, so tags inside them do not count. False as well when the markup is
// cut off (which the parser would refuse anyway).
bool xmlWithinCaps(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return false;
  int depth = 0;
  size_t i = 0;
  while ((i = text.find('<', i)) != std::string_view::npos) {
    size_t end;
    if (startsWith(text, i, "<!--")) {
      end = text.find("-->", i + 4);
      if (end == std::string_view::npos) return false;
      i = end + 3;
      continue;
    }
    if (startsWith(text, i, "<![CDATA[")) {
      end = text.find("]]>", i + 9);
      if (end == std::string_view::npos) return false;
      i = end + 3;
      continue;
    }
    if (startsWith(text, i, "<?")) {
      end = text.find("?>", i + 2);
      if (end == std::string_view::npos) return false;
      i = end + 2;
      continue;
    }
    if (startsWith(text, i, "<!")) {
      end = findMarkupEnd(text, i + 2, true);
      if (end == std::string_view::npos) return false;
      i = end + 1;
      continue;
    }

    const bool closing = startsWith(text, i, "</");
    const size_t nameStart = i + (closing ? 2 : 1);
    size_t nameEnd = nameStart;
    while (nameEnd < text.size() && !isXmlSpace(text[nameEnd]) && text[nameEnd] != '/' && text[nameEnd] != '>')
      ++nameEnd;
    end = findMarkupEnd(text, nameEnd, false);
    if (end == std::string_view::npos) return false;

    const std::string_view name = text.substr(nameStart, nameEnd - nameStart);
    if (name == "array" || name == "dict") {
      const bool selfClosing = !closing && text[end - 1] == '/';
      if (closing) {
        if (depth > 0) --depth;
      } else if (!selfClosing && ++depth > kMaxPlistDepth) {
        return false;
      }
    }
    i = end + 1;
  }
  return true;
}

// A big-endian unsigned number of `width` (1..8) bytes at `at`; the caller has checked the bounds.
uint64_t bigEndian(std::string_view bytes, size_t at, size_t width) {
  uint64_t value = 0;
  for (size_t k = 0; k < width; ++k) value = (value << 8) | static_cast<unsigned char>(bytes[at + k]);
  return value;
}

// Reads the length of a data, string or container object at `pos` (just after its marker): the
// marker's low nibble, or when that is 0xF an integer object that follows. Advances `pos`.
bool readLength(std::string_view bytes, size_t dataEnd, unsigned marker, size_t &pos, uint64_t &length) {
  length = marker & 0xF;
  if (length != 0xF) return true;
  if (pos >= dataEnd) return false;
  const unsigned intMarker = static_cast<unsigned char>(bytes[pos++]);
  if ((intMarker >> 4) != 0x1 || (intMarker & 0xF) > 3) return false;
  const size_t width = size_t{1} << (intMarker & 0xF);
  if (width > dataEnd - pos) return false;
  length = bigEndian(bytes, pos, width);
  pos += width;
  return true;
}

// Checks a binary property list's trailer and walks its object graph from the top object without
// recursion, as libplist would expand it: every reference must name an existing object at a
// plausible offset; containers may nest at most kMaxPlistDepth levels (so a reference cycle
// fails); the expansion may yield at most kMaxBinaryNodes nodes and kMaxBinaryExpandedBytes bytes
// of strings and data; no string may hold a NUL. Numbers, dates and the like are left to libplist.
bool binaryWithinCaps(std::string_view bytes) {
  if (bytes.size() < kBinaryMagic.size() + kBinaryTrailerSize) return false;
  const size_t dataEnd = bytes.size() - kBinaryTrailerSize;
  const size_t offsetSize = static_cast<unsigned char>(bytes[dataEnd + 6]);
  const size_t refSize = static_cast<unsigned char>(bytes[dataEnd + 7]);
  const uint64_t objectCount = bigEndian(bytes, dataEnd + 8, 8);
  const uint64_t topObject = bigEndian(bytes, dataEnd + 16, 8);
  const uint64_t tableOffset = bigEndian(bytes, dataEnd + 24, 8);

  if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8) return false;
  if (objectCount == 0 || topObject >= objectCount) return false;
  if (tableOffset < kBinaryMagic.size() || tableOffset > dataEnd) return false;
  if (objectCount > (dataEnd - tableOffset) / offsetSize) return false;

  struct Pending {
    uint64_t object;
    int depth;  // containers from the root down to this object, the object included if a container
  };
  std::vector<Pending> pending{{topObject, 1}};
  uint64_t nodes = 1;
  uint64_t expandedBytes = 0;

  while (!pending.empty()) {
    const Pending current = pending.back();
    pending.pop_back();

    const uint64_t offset = bigEndian(bytes, static_cast<size_t>(tableOffset + current.object * offsetSize), offsetSize);
    if (offset < kBinaryMagic.size() || offset >= dataEnd) return false;
    size_t pos = static_cast<size_t>(offset);
    const unsigned marker = static_cast<unsigned char>(bytes[pos++]);
    const unsigned type = marker >> 4;

    switch (type) {
      case 0x4:    // data
      case 0x5:    // ASCII string
      case 0x6:    // UTF-16 string
      case 0x7: {  // UTF-8 string
        uint64_t length = 0;
        if (!readLength(bytes, dataEnd, marker, pos, length)) return false;
        const size_t unit = type == 0x6 ? 2 : 1;
        if (length > (dataEnd - pos) / unit) return false;
        const size_t size = static_cast<size_t>(length) * unit;
        if (size > kMaxBinaryExpandedBytes - expandedBytes) return false;
        expandedBytes += size;
        if (type == 0x6) {
          for (size_t k = 0; k < size; k += 2)
            if (bytes[pos + k] == '\0' && bytes[pos + k + 1] == '\0') return false;
        } else if (type != 0x4 && bytes.substr(pos, size).find('\0') != std::string_view::npos) {
          return false;
        }
        break;
      }
      case 0xA:    // array
      case 0xC:    // set
      case 0xD: {  // dictionary: the key references, then the value references
        if (current.depth > kMaxPlistDepth) return false;
        uint64_t count = 0;
        if (!readLength(bytes, dataEnd, marker, pos, count)) return false;
        const uint64_t refsPerEntry = type == 0xD ? 2 : 1;
        if (count > (dataEnd - pos) / refSize / refsPerEntry) return false;
        const uint64_t refCount = count * refsPerEntry;
        if (refCount > kMaxBinaryNodes - nodes) return false;
        nodes += refCount;
        for (uint64_t r = 0; r < refCount; ++r) {
          const uint64_t ref = bigEndian(bytes, static_cast<size_t>(pos + r * refSize), refSize);
          if (ref >= objectCount) return false;
          pending.push_back({ref, current.depth + 1});
        }
        break;
      }
      default:
        break;
    }
  }
  return true;
}

}  // namespace

PlistDict::PlistDict(plist_t root) : root_(root) {}

PlistDict::~PlistDict() {
  if (root_) plist_free(root_);
}

PlistDict::PlistDict(PlistDict &&other) noexcept : root_(std::exchange(other.root_, nullptr)) {}

PlistDict &PlistDict::operator=(PlistDict &&other) noexcept {
  if (this != &other) {
    if (root_) plist_free(root_);
    root_ = std::exchange(other.root_, nullptr);
  }
  return *this;
}

namespace {

plist_t lookup(plist_t dict, std::string_view key) {
  // A key with an embedded NUL cannot be stored in a property list.
  if (!dict || key.find('\0') != std::string_view::npos) return nullptr;
  return plist_dict_get_item(dict, std::string(key).c_str());
}

}  // namespace

bool PlistDict::contains(std::string_view key) const { return lookup(root_, key) != nullptr; }

std::optional<int32_t> PlistDict::integer(std::string_view key) const {
  plist_t node = lookup(root_, key);
  if (!node || plist_get_node_type(node) != PLIST_UINT) return std::nullopt;
  // libplist keeps every integer as 64 bits without sign; a negative number comes back as its
  // two's complement, so the signed reading restores it. Taking 32 bits keeps the low bits.
  uint64_t raw = 0;
  plist_get_uint_val(node, &raw);
  return static_cast<int32_t>(static_cast<int64_t>(raw));
}

std::optional<std::string> PlistDict::string(std::string_view key) const {
  plist_t node = lookup(root_, key);
  if (!node || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
  // The pointer form spares a copy; the reader has made sure that no string holds a NUL.
  uint64_t length = 0;
  const char *text = plist_get_string_ptr(node, &length);
  if (!text) return std::nullopt;
  return std::string(text, static_cast<size_t>(length));
}

std::optional<std::string> PlistDict::scalarText(std::string_view key) const {
  plist_t node = lookup(root_, key);
  if (!node) return std::nullopt;
  switch (plist_get_node_type(node)) {
    case PLIST_STRING:
      return string(key);
    case PLIST_UINT: {
      uint64_t raw = 0;
      plist_get_uint_val(node, &raw);
      return std::to_string(static_cast<int64_t>(raw));
    }
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      char buffer[64];
      const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
      if (result.ec != std::errc()) return std::nullopt;
      return std::string(buffer, result.ptr);
    }
    case PLIST_BOOLEAN: {
      uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return std::string(value ? "true" : "false");
    }
    default:
      return std::nullopt;
  }
}

std::optional<PlistDict> parsePlistDictionary(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > kMaxPlistBytes) return std::nullopt;
  // libplist 2.2 takes the binary reader exactly for this magic and the XML reader otherwise.
  const bool binary = bytes.starts_with(kBinaryMagic);
  if (binary ? !binaryWithinCaps(bytes) : !xmlWithinCaps(bytes)) return std::nullopt;

  // A private, NUL-terminated copy: the parser must never read past the given bytes.
  const std::string copy(bytes);
  plist_t root = nullptr;
  plist_from_memory(copy.c_str(), static_cast<uint32_t>(copy.size()), &root);
  if (!root) return std::nullopt;
  if (plist_get_node_type(root) != PLIST_DICT) {
    plist_free(root);
    return std::nullopt;
  }
  return PlistDict(root);
}

std::optional<PlistDict> readPlistDictionary(const std::string &path) {
  // Non-blocking, so that a FIFO in the file's place cannot stall the caller; anything but a
  // regular file is refused after the open.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return std::nullopt;
  struct FdCloser {
    int fd;
    ~FdCloser() { ::close(fd); }
  } closer{fd};

  struct stat info {};
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  if (info.st_size < 0 || static_cast<uint64_t>(info.st_size) > kMaxPlistBytes) return std::nullopt;

  // Read to the end, but never more than one byte past the cap (the file may grow meanwhile).
  std::string bytes;
  bytes.reserve(static_cast<size_t>(info.st_size) + 1);
  char chunk[16384];
  while (bytes.size() <= kMaxPlistBytes) {
    const ssize_t got = ::read(fd, chunk, sizeof chunk);
    if (got < 0) {
      if (errno == EINTR) continue;
      return std::nullopt;
    }
    if (got == 0) break;
    bytes.append(chunk, static_cast<size_t>(got));
  }
  if (bytes.size() > kMaxPlistBytes) return std::nullopt;
  return parsePlistDictionary(bytes);
}

}  // namespace nvx::store
