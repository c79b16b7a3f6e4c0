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
  size_t plain = 0;  // start of the bytes not yet appended
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != '&' && c != '<' && c != '>' && c != 0xEF) continue;
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return false;
    if (c == 0xEF) {
      if (text.compare(i, 3, "\xEF\xBF\xBE") == 0 || text.compare(i, 3, "\xEF\xBF\xBF") == 0) return false;
      continue;
    }
    if (c == '\t' || c == '\n') continue;
    out.append(text, plain, i - plain);
    out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : "&#13;";
    plain = i + 1;
  }
  out.append(text, plain, std::string_view::npos);
  return true;
}

void appendElement(std::string &out, std::string_view name, std::string_view text) {
  out.append("<").append(name).append(">").append(text).append("</").append(name).append(">\n");
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
    return appendScalar(value);
  }

  // Writes a scalar other than a string; false when XML cannot hold it (a date with a fraction of
  // a second or out of range, or a foreign value).
  bool appendScalar(const PlistValue &value) {
    if (const auto *flag = value.as<bool>()) {
      out_ += *flag ? "<true/>\n" : "<false/>\n";
    } else if (const auto *integer = value.as<PlistInteger>()) {
      appendElement(out_, "integer", integerText(*integer));
    } else if (const auto *real = value.as<PlistReal>()) {
      appendElement(out_, "real", realText(real->value));
    } else if (const auto *data = value.as<PlistData>()) {
      appendElement(out_, "data", base64Text(data->bytes));
    } else if (const auto *date = value.as<PlistDate>()) {
      const auto text = dateText(*date);
      if (!text) return false;
      appendElement(out_, "date", *text);
    } else {
      return false;
    }
    return true;
  }

  std::string out_;
  std::vector<Frame> stack_;
};

}  // namespace

std::variant<std::string, XmlRefusal> plistXml(const PlistValue &root) { return XmlWriter().write(root); }

}  // namespace nvx::store
