// Export and import of settings files, through the document model the tool shares.
#pragma once

#include <string>

namespace mxrk7setup {

// Writes every remembered setting to `path`. `message` tells what was done or what went wrong.
bool exportSettings(const std::string &path, std::string &message);
// Reads `path`, checks it, and sets every setting it holds through the library.
bool importSettings(const std::string &path, std::string &message);
// What importing `path` would change, one line per setting; false with a message when the file
// cannot be imported.
bool describeImport(const std::string &path, std::string &changes);

}  // namespace mxrk7setup
