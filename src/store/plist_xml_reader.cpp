// XML property lists through expat. expat tokenizes without recursion; this builder keeps the open
// containers on a stack of its own, so nesting costs heap, not stack, and stops at the depth cap.
//
// Documents with an internal DTD subset, an entity declaration or a reference to an entity nobody
// declared are refused outright: expat 2.5 as Debian ships it expands nested entities recursively,
// and no property list needs entities beyond the five predefined ones and character references.
// The standard `<!DOCTYPE plist PUBLIC ...>` line has no internal subset and is fine.
#include <expat.h>

#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/plist_limits.h"
#include "store/plist_reader.h"
#include "store/plist_text.h"

namespace nvx::store::detail {

namespace {

enum class Scalar : uint8_t { None, Key, String, Integer, Real, Date, Data, True, False };

struct ElementName {
  std::string_view name;
  Scalar scalar;
};

constexpr ElementName kScalars[] = {
    {"key", Scalar::Key},         {"string", Scalar::String}, {"integer", Scalar::Integer},
    {"real", Scalar::Real},       {"date", Scalar::Date},     {"data", Scalar::Data},
    {"true", Scalar::True},       {"false", Scalar::False},
};
static_assert(std::size(kScalars) == 8, "one row per scalar element of the format");

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\n\r") == std::string_view::npos; }

class XmlTreeBuilder {
 public:
  explicit XmlTreeBuilder(XML_Parser parser) : parser_(parser) {}

  std::optional<PlistValue> result() {
    if (failed_ || !root_ || !open_.empty() || scalar_ != Scalar::None) return std::nullopt;
    return std::move(root_);
  }

  void fail() {
    if (failed_) return;
    failed_ = true;
    XML_StopParser(parser_, XML_FALSE);
  }
  bool failed() const { return failed_; }

  void start(std::string_view name) {
    const bool documentElement = !seenElement_;
    seenElement_ = true;
    if (scalar_ != Scalar::None) return fail();  // scalars hold text only
    if (name == "plist") {
      if (!documentElement) return fail();
      return;
    }
    const int depth = static_cast<int>(open_.size()) + 1;
    if (name == "dict" || name == "array") {
      if (!canTakeValue() || !budget_.takeNode(depth, true)) return fail();
      PlistValue *container =
          attach(name == "dict" ? PlistValue(PlistDictionary{}) : PlistValue(PlistArray{}));
      open_.push_back({container, {}});
      return;
    }
    for (const auto &element : kScalars) {
      if (element.name != name) continue;
      if (element.scalar == Scalar::Key) {
        if (open_.empty() || !open_.back().container->as<PlistDictionary>() || open_.back().key) return fail();
      } else if (!canTakeValue() || !budget_.takeNode(depth, false)) {
        return fail();
      }
      scalar_ = element.scalar;
      text_.clear();
      return;
    }
    fail();  // not an element of the format
  }

  void end(std::string_view name) {
    if (scalar_ != Scalar::None) return endScalar();
    if (name == "plist") return;
    Open &top = open_.back();
    if (auto *dict = top.container->as<PlistDictionary>()) {
      if (top.key) return fail();  // a key without a value
      dict->endAppend();
    }
    open_.pop_back();
  }

  void text(std::string_view chunk) {
    if (scalar_ == Scalar::None || scalar_ == Scalar::True || scalar_ == Scalar::False) {
      if (!isBlank(chunk)) fail();
      return;
    }
    if (chunk.size() > kMaxPlistBytes - text_.size()) return fail();
    text_.append(chunk);
  }

 private:
  struct Open {
    PlistValue *container;
    std::optional<std::string> key;  // a dictionary's key waiting for its value
  };

  bool canTakeValue() const {
    if (open_.empty()) return !root_;
    const Open &top = open_.back();
    return top.container->as<PlistArray>() || top.key.has_value();
  }

  // Places a value where the document is (the caller checked canTakeValue) and returns it.
  PlistValue *attach(PlistValue value) {
    if (open_.empty()) {
      root_ = std::move(value);
      return &*root_;
    }
    Open &top = open_.back();
    if (auto *array = top.container->as<PlistArray>()) {
      array->items.push_back(std::move(value));
      return &array->items.back();
    }
    auto *dict = top.container->as<PlistDictionary>();
    dict->append(std::move(*top.key), std::move(value));
    top.key.reset();
    return &dict->valueAt(dict->size() - 1);
  }

  void endScalar() {
    const Scalar scalar = std::exchange(scalar_, Scalar::None);
    std::optional<PlistValue> value;
    switch (scalar) {
      case Scalar::Key:
        if (!budget_.takeText(text_.size())) return fail();
        open_.back().key = std::move(text_);
        return;
      case Scalar::String:
        if (budget_.takeText(text_.size())) value = PlistValue(std::move(text_));
        break;
      case Scalar::Integer:
        if (const auto number = parseInteger(text_)) value = PlistValue(*number);
        break;
      case Scalar::Real:
        if (const auto number = parseReal(text_)) value = PlistValue(PlistReal{*number});
        break;
      case Scalar::Date:
        if (const auto date = parseDate(text_)) value = PlistValue(*date);
        break;
      case Scalar::Data:
        if (auto bytes = parseBase64(text_); bytes && budget_.takeText(bytes->size()))
          value = PlistValue(PlistData{std::move(*bytes)});
        break;
      case Scalar::True:
      case Scalar::False:
        value = PlistValue(scalar == Scalar::True);
        break;
      case Scalar::None:
        break;
    }
    text_.clear();
    if (!value) return fail();
    attach(std::move(*value));
  }

  XML_Parser parser_;
  ReadBudget budget_;
  std::optional<PlistValue> root_;
  std::vector<Open> open_;
  Scalar scalar_ = Scalar::None;
  std::string text_;
  bool seenElement_ = false;
  bool failed_ = false;
};

XmlTreeBuilder &builderOf(void *userData) { return *static_cast<XmlTreeBuilder *>(userData); }

// expat is C: no exception may leave a handler. A failed allocation fails the read.
template <class Work>
void guardedHandler(void *userData, Work &&work) {
  XmlTreeBuilder &builder = builderOf(userData);
  if (builder.failed()) return;  // expat may report a little more after being stopped
  try {
    work(builder);
  } catch (...) {
    builder.fail();
  }
}

void XMLCALL onStart(void *userData, const XML_Char *name, const XML_Char **) {
  guardedHandler(userData, [&](XmlTreeBuilder &b) { b.start(name); });
}

void XMLCALL onEnd(void *userData, const XML_Char *name) {
  guardedHandler(userData, [&](XmlTreeBuilder &b) { b.end(name); });
}

void XMLCALL onText(void *userData, const XML_Char *text, int length) {
  guardedHandler(userData, [&](XmlTreeBuilder &b) { b.text(std::string_view(text, static_cast<size_t>(length))); });
}

void XMLCALL onDoctype(void *userData, const XML_Char *, const XML_Char *, const XML_Char *, int internalSubset) {
  if (internalSubset) builderOf(userData).fail();
}

void XMLCALL onEntityDeclaration(void *userData, const XML_Char *, int, const XML_Char *, int, const XML_Char *,
                                 const XML_Char *, const XML_Char *, const XML_Char *) {
  builderOf(userData).fail();
}

void XMLCALL onSkippedEntity(void *userData, const XML_Char *, int) { builderOf(userData).fail(); }

}  // namespace

std::optional<PlistValue> parseXmlPlist(std::string_view bytes) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
  if (!parser) return std::nullopt;
  XmlTreeBuilder builder(parser.get());
  XML_SetUserData(parser.get(), &builder);
  XML_SetElementHandler(parser.get(), onStart, onEnd);
  XML_SetCharacterDataHandler(parser.get(), onText);
  XML_SetStartDoctypeDeclHandler(parser.get(), onDoctype);
  XML_SetEntityDeclHandler(parser.get(), onEntityDeclaration);
  XML_SetSkippedEntityHandler(parser.get(), onSkippedEntity);
  // No external DTD or entity is ever loaded: expat reads none unless asked to.
  XML_SetParamEntityParsing(parser.get(), XML_PARAM_ENTITY_PARSING_NEVER);
  const auto status = XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE);
  if (status != XML_STATUS_OK) return std::nullopt;
  return builder.result();
}

}  // namespace nvx::store::detail
