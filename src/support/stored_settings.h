// The auto-setup file as the tool and the setup application inspect it: whether it exists and can
// be read, and whether it holds a given key with an integer value. The public API cannot tell a
// stored value from a default, and has no getter at all for the channel fader words.
//
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "store/plist_file.h"

namespace nvx::support {

class StoredSettings {
 public:
  enum class State : uint8_t {
    Missing,     // no file (nothing was ever stored)
    Unreadable,  // a file that the library cannot read: not a property list, too large or too deep,
                 // its root not a dictionary, or no permission to read it
    Readable,
  };

  // Reads the file once, as the library would read it now; later changes are not seen.
  static StoredSettings read();

  State state() const { return state_; }
  const std::string &path() const { return path_; }

  // The integer stored under `key` taken to 32 bits, as the library reads it; nullopt when the
  // file is not readable, the key is absent, or its value is not an integer (which the library
  // treats as absent).
  std::optional<int32_t> integer(std::string_view key) const;

  // Whether the key is present with a value of any type.
  bool contains(std::string_view key) const;

  // Every key of the file, in the file's order; empty when the file is not readable.
  std::vector<std::string> keys() const;

  // Why this user's changes would not reach the file now (the library then loses them silently):
  // a folder or file the store does not trust (another user's, or writable by others), a lock file
  // that is not a file, a file or folder without write permission, or values of another program
  // that cannot be written back. nullopt when they would.
  std::optional<std::string> writeProblem() const;

  // Why a file that is there cannot be read, for people ("permission denied", "larger than
  // 1 MiB", ...); empty unless the state is Unreadable.
  std::string unreadableReason() const;

 private:
  StoredSettings(State state, std::string path, std::optional<store::PlistDict> dict)
      : state_(state), path_(std::move(path)), dict_(std::move(dict)) {}

  State state_;
  std::string path_;
  std::optional<store::PlistDict> dict_;
};

const char *stateName(StoredSettings::State state);  // "missing", "unreadable", "readable"

// Whether the library reads or writes `key`: every key of its key table, including "Output4" and
// "PopUp", which it reads but never writes. Other keys belong to other programs.
bool isLibraryKey(std::string_view key);

}  // namespace nvx::support
