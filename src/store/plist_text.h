// The text forms of scalar values in an XML property list, read and written without the locale
// (std::from_chars / std::to_chars), so a program that switched to a comma-decimal locale reads and
// writes the same numbers as any other.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/plist_value.h"

namespace nvx::store {

// Decimal (no leading zero), or hexadecimal after "0x"; an optional sign; surrounding XML white
// space is ignored. Values from -2^63 to 2^64-1.
std::optional<PlistInteger> parseInteger(std::string_view text);
std::string integerText(PlistInteger value);

// Decimal or exponent notation, "inf"/"infinity" with an optional sign, "nan" (any case).
std::optional<double> parseReal(std::string_view text);
// The shortest text that reads back as the same double; "+infinity", "-infinity", "nan".
std::string realText(double value);

// "YYYY-MM-DDTHH:MM:SSZ", years 0001 to 9999.
std::optional<PlistDate> parseDate(std::string_view text);
// nullopt when XML cannot hold the date exactly (a fraction of a second, or a year out of range).
std::optional<std::string> dateText(PlistDate date);

// Base64 with white space anywhere; nullopt on any other character or a bad length.
std::optional<std::string> parseBase64(std::string_view text);
std::string base64Text(std::string_view bytes);

}  // namespace nvx::store
