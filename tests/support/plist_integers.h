// The integer values of a dictionary property list, read with libplist as an independent check of
// what the library wrote. Kept free of GoogleTest so that the stress tests' helper processes use it.
#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace nvx::test {

// The entries of a libplist dictionary by key; of a key named twice (libplist keeps both when it
// reads a binary file), the last one.
std::map<std::string, plist_t> plistEntries(plist_t dict);

// Every integer of the top-level dictionary in `bytes` (XML or binary); nullopt when `bytes` is
// not a property list with a dictionary at its root.
std::optional<std::map<std::string, int64_t>> plistIntegers(const std::string &bytes);

}  // namespace nvx::test
