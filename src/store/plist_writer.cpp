#include "store/plist_writer.h"

#include <glib.h>

#include <optional>
#include <string_view>
#include <vector>

#include "store/plist_limits.h"
#include "store/plist_text.h"

namespace nvx::store {

namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kFooter = "</plist>\n";

// Appends `text` as XML character data; false when XML 1.0 cannot hold it: not UTF-8, a NUL or
// another control character (tab and line breaks aside), or U+FFFE / U+FFFF. A carriage return is
// written as a character reference, since a reader turns a literal one into a line feed.
bool appendText(std::string &out, std::string_view text) {
  if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return false;
    if (c == 0xEF && text.substr(i + 1, 1) == "\xBF" && (text.substr(i + 2, 1) == "\xBE" || text.substr(i + 2, 1) == "\xBF"))
      return false;
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '\r':
        out += "&#13;";
        break;
      default:
        out += static_cast<char>(c);
    }
  }
  return true;
}

std::string element(std::string_view name, std::string_view text) {
  std::string out;
  out.reserve(2 * name.size() + text.size() + 6);
  out.append("<").append(name).append(">").append(text).append("</").append(name).append(">\n");
  return out;
}

class XmlWriter {
 public:
  std::variant<std::string, XmlRefusal> write(const PlistValue &root) {
    out_ = kHeader;
    if (!open(root, 0)) return XmlRefusal::Unrepresentable;
    while (!stack_.empty()) {
      Frame &frame = stack_.back();
      const size_t size = frame.dict ? frame.dict->size() : frame.array->items.size();
      if (out_.size() > kMaxPlistBytes) return XmlRefusal::TooLarge;
      if (frame.next == size) {
        indent(frame.depth);
        out_ += frame.dict ? "</dict>\n" : "</array>\n";
        stack_.pop_back();
        continue;
      }
      const size_t i = frame.next++;
      const int depth = frame.depth + 1;
      const PlistValue *child = nullptr;
      if (frame.dict) {
        indent(depth);
        out_ += "<key>";
        if (!appendText(out_, frame.dict->keyAt(i))) return XmlRefusal::Unrepresentable;
        out_ += "</key>\n";
        child = &frame.dict->valueAt(i);
      } else {
        child = &frame.array->items[i];
      }
      if (!open(*child, depth)) return XmlRefusal::Unrepresentable;  // `frame` may have moved
    }
    out_ += kFooter;
    if (out_.size() > kMaxPlistBytes) return XmlRefusal::TooLarge;
    return std::move(out_);
  }

 private:
  struct Frame {
    const PlistDictionary *dict;
    const PlistArray *array;
    size_t next;
    int depth;
  };

  void indent(int depth) { out_.append(static_cast<size_t>(depth), '\t'); }

  // Writes a scalar whole, or a container's opening tag (pushing it to be walked); false when XML
  // cannot hold the value.
  bool open(const PlistValue &value, int depth) {
    indent(depth);
    if (const auto *dict = value.as<PlistDictionary>()) {
      out_ += dict->size() == 0 ? "<dict/>\n" : "<dict>\n";
      if (dict->size() != 0) stack_.push_back({dict, nullptr, 0, depth});
      return true;
    }
    if (const auto *array = value.as<PlistArray>()) {
      out_ += array->items.empty() ? "<array/>\n" : "<array>\n";
      if (!array->items.empty()) stack_.push_back({nullptr, array, 0, depth});
      return true;
    }
    if (const auto *text = value.as<std::string>()) {
      out_ += "<string>";
      if (!appendText(out_, *text)) return false;
      out_ += "</string>\n";
      return true;
    }
    const auto scalar = scalarText(value);
    if (!scalar) return false;
    out_ += *scalar;
    return true;
  }

  // The element of a scalar other than a string; nullopt when XML cannot hold it.
  static std::optional<std::string> scalarText(const PlistValue &value) {
    if (const auto *flag = value.as<bool>()) return *flag ? "<true/>\n" : "<false/>\n";
    if (const auto *integer = value.as<PlistInteger>()) return element("integer", integerText(*integer));
    if (const auto *real = value.as<PlistReal>()) return element("real", realText(real->value));
    if (const auto *data = value.as<PlistData>()) return element("data", base64Text(data->bytes));
    if (const auto *date = value.as<PlistDate>()) {
      const auto text = dateText(*date);
      if (text) return element("date", *text);
    }
    return std::nullopt;  // a date XML cannot hold exactly, or a foreign value
  }

  std::string out_;
  std::vector<Frame> stack_;
};

}  // namespace

std::variant<std::string, XmlRefusal> plistXml(const PlistValue &root) { return XmlWriter().write(root); }

}  // namespace nvx::store
