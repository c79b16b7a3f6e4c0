// Settings files made to hurt a reader (deep nesting, hidden markup, entity tricks, binary reference
// bombs, caps, values only the binary format holds) with what the store must make of each. Shared by
// the store tests and the report that measures each file's time and memory
// (scripts/crafted-files.sh).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nvx::test {

struct CraftedFile {
  std::string name;
  std::string bytes;
  bool readable;                   // a getter reads the file (else: as if missing)
  bool rewritable;                 // an update keeps what it holds (else: refused, or replaced when unreadable)
  std::optional<int32_t> padMode;  // what a getter finds under "PADMode"
};

std::vector<CraftedFile> craftedFiles();

// XML property lists: a dictionary holding `entries` (XML text) between the standard head and tail.
std::string xmlPlist(const std::string &entries);

}  // namespace nvx::test
