// The caps of every property list the library reads, in one place. The reader enforces them while it
// builds the tree, for the XML and the binary format alike; a file over any of them is unreadable.
// No real settings or version file comes near them: they bound what a crafted file can cost.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nvx::store {

// Size of the whole file. The writer refuses to produce more, so what it writes always reads back.
inline constexpr size_t kMaxPlistBytes = 1024 * 1024;

// Containers (arrays and dictionaries) nested in one another; the root dictionary is level 1.
inline constexpr int kMaxPlistDepth = 128;

// Values in the tree, counting each reference of a binary file as a value of its own (a binary file
// names shared objects by reference, so a few kilobytes can describe millions of values).
inline constexpr uint32_t kMaxPlistNodes = 65536;

// Bytes of one string, key or data value, and of all of them together once references are
// expanded (UTF-16 text of a binary file takes up to 1.5 times its size as UTF-8).
inline constexpr size_t kMaxPlistTextBytes = kMaxPlistBytes;
inline constexpr size_t kMaxPlistTotalTextBytes = 4 * kMaxPlistBytes;

}  // namespace nvx::store
