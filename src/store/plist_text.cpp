#include "store/plist_text.h"

#include <glib.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>

namespace nvx::store {

namespace {

bool isXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isXmlSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isXmlSpace(text.back())) text.remove_suffix(1);
  return text;
}

// The whole of `text` as one number (integers in `base`).
template <class Number, class... Base>
bool parseWhole(std::string_view text, Number &value, Base... base) {
  if (text.empty()) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base...);
  return error == std::errc() && end == text.data() + text.size();
}

template <class Number>
std::string toText(Number value) {
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

// The first day that dates count from.
constexpr std::chrono::sys_days kReferenceDay{std::chrono::year{2001} / 1 / 1};
constexpr int64_t kSecondsPerDay = 86400;

}  // namespace

std::optional<PlistInteger> parseInteger(std::string_view text) {
  text = trimmed(text);
  bool negative = false;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    base = 16;
    text.remove_prefix(2);
  }
  // A leading zero is refused: some readers take "012" for octal, others for decimal.
  const bool ambiguous = base == 10 && text.size() > 1 && text.front() == '0';
  uint64_t magnitude = 0;
  if (ambiguous || text.empty() || text.front() == '-' || text.front() == '+' || !parseWhole(text, magnitude, base))
    return std::nullopt;
  if (!negative || magnitude == 0) return PlistInteger{magnitude, false};
  if (magnitude > uint64_t{1} << 63) return std::nullopt;
  return PlistInteger{~magnitude + 1, true};
}

std::string integerText(PlistInteger value) {
  return value.negative ? toText(static_cast<int64_t>(value.bits)) : toText(value.bits);
}

std::optional<double> parseReal(std::string_view text) {
  text = trimmed(text);
  // from_chars takes a minus sign but no plus sign.
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  double value = 0;
  if (!parseWhole(text, value)) return std::nullopt;
  return value;
}

std::string realText(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
  return toText(value);
}

std::optional<PlistDate> parseDate(std::string_view text) {
  text = trimmed(text);
  // YYYY-MM-DDTHH:MM:SSZ
  if (text.size() != 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' ||
      text[16] != ':' || text[19] != 'Z')
    return std::nullopt;
  int year = 0;
  unsigned month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (!parseWhole(text.substr(0, 4), year) || !parseWhole(text.substr(5, 2), month) ||
      !parseWhole(text.substr(8, 2), day) || !parseWhole(text.substr(11, 2), hour) ||
      !parseWhole(text.substr(14, 2), minute) || !parseWhole(text.substr(17, 2), second))
    return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  if (year < 1 || !date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const int64_t days = (std::chrono::sys_days{date} - kReferenceDay).count();
  return PlistDate{static_cast<double>(days * kSecondsPerDay + hour * 3600 + minute * 60 + second)};
}

std::optional<std::string> dateText(PlistDate date) {
  const double seconds = date.seconds;
  // Years 1 to 9999 lie within +-3.2e11 s of the reference day.
  if (!std::isfinite(seconds) || std::floor(seconds) != seconds || std::fabs(seconds) > 4e11) return std::nullopt;
  const auto whole = static_cast<int64_t>(seconds);
  int64_t days = whole / kSecondsPerDay;
  int64_t rest = whole % kSecondsPerDay;
  if (rest < 0) {
    rest += kSecondsPerDay;
    --days;
  }
  const std::chrono::year_month_day ymd{kReferenceDay + std::chrono::days{days}};
  const int year = static_cast<int>(ymd.year());
  if (year < 1 || year > 9999) return std::nullopt;
  char buffer[32];
  const int length = std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", year,
                                   static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                                   static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60),
                                   static_cast<int>(rest % 60));
  return std::string(buffer, static_cast<size_t>(length));
}

std::optional<std::string> parseBase64(std::string_view text) {
  // GLib decodes leniently (it skips what does not belong); check the alphabet and padding first.
  std::string compact;
  compact.reserve(text.size());
  size_t padding = 0;
  for (const char c : text) {
    if (isXmlSpace(c)) continue;
    const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
    if (c == '=') {
      ++padding;
    } else if (!letter || padding > 0) {
      return std::nullopt;
    }
    compact += c;
  }
  if (compact.size() % 4 != 0 || padding > 2) return std::nullopt;
  if (compact.empty()) return std::string();
  gsize length = 0;
  const std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(compact.c_str(), &length), g_free);
  return std::string(reinterpret_cast<const char *>(bytes.get()), length);
}

std::string base64Text(std::string_view bytes) {
  const std::unique_ptr<gchar, decltype(&g_free)> text(
      g_base64_encode(reinterpret_cast<const guchar *>(bytes.data()), bytes.size()), g_free);
  return text.get();
}

}  // namespace nvx::store
