// The integer values of a dictionary property list, read with libplist as an independent check of
// what the library wrote. Kept free of GoogleTest so that the stress tests' helper processes use it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace nvx::test {

// Every integer of the top-level dictionary in `bytes` (XML or binary); nullopt when `bytes` is
// not a property list with a dictionary at its root.
std::optional<std::map<std::string, int64_t>> plistIntegers(const std::string &bytes);

}  // namespace nvx::test
