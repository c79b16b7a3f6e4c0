// The canonical XML form of a property-list tree, as the library writes the auto-setup file.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "store/plist_value.h"

namespace nvx::store {

enum class XmlRefusal : uint8_t {
  Unrepresentable,  // a value XML cannot hold exactly: a foreign binary value, text that is not
                    // UTF-8 or holds characters XML 1.0 has no place for, a date with a fraction
  TooLarge,         // the text would exceed kMaxPlistBytes, which the reader would refuse
};

// The whole document (declaration, DOCTYPE, <plist>), tab-indented, written without recursion.
std::variant<std::string, XmlRefusal> plistXml(const PlistValue &root);

}  // namespace nvx::store
