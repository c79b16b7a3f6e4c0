// Reading and writing a settings document's file, for the tool's export and import and the setup
// application's: read with a size cap whatever the file is (standard input and pipes included), and
// written so that a full disk or a crash never leaves a previous export half-written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nvx::support {

// No settings document comes near this size.
inline constexpr size_t kMaxDocumentBytes = 1024 * 1024;

struct DocumentRead {
  std::string text;
  int error = 0;          // errno of a failed open or read; 0 otherwise
  bool tooLarge = false;  // more than kMaxDocumentBytes
  bool ok() const { return error == 0 && !tooLarge; }
};

// The document at `path`, "-" for standard input.
DocumentRead readDocumentFile(const std::string &path);

// Writes `text` to `path`. A missing file or a regular file (through a symbolic link to its target,
// keeping an existing file's mode) is replaced durably: a temporary file in its folder, flushed and
// renamed over it. Anything else (/dev/stdout, a pipe) is written directly. The errno of the failure,
// or nothing.
std::optional<int> writeDocumentFile(const std::string &path, std::string_view text);

}  // namespace nvx::support
