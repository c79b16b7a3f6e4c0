// Path handling shared by the auto-setup file's update and whoever examines that file: the folder
// of a path, and the file a chain of symbolic links finally names.
#pragma once

#include <optional>
#include <string>

namespace nvx::store {

// The folder part of `path`: "." for a bare name, "/" for a name in the root folder.
std::string parentOf(const std::string &path);

// The last component of `path` (all of it when it has no slash).
std::string baseNameOf(const std::string &path);

// Follows symbolic links from `path` to the file they finally name, which need not exist yet (an
// update then creates it there). nullopt on a loop or an unreadable link.
std::optional<std::string> realFileOf(const std::string &path);

}  // namespace nvx::store
