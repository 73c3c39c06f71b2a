#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/unique_fd.h"

namespace updown {

// Folders held by descriptor, so that what is done inside them cannot be led elsewhere by a path
// that changes meanwhile. Any thread.

struct PathParts {
  std::string folder;  // "." for a bare name
  std::string name;    // last component, never empty, "." or ".."
};

// Nothing for a path without a proper last component, such as "" or "/". Trailing "/" do not count.
std::optional<PathParts> SplitPath(std::string_view path);

// The folder that a path given by the user names, links followed.
UniqueFd OpenFolderPath(const std::string& path);

// A folder inside another one. A link in its place is not followed: the call fails.
UniqueFd OpenInnerFolder(int folder, const std::string& name);

// Names in the folder without "." and ".."; nothing if it cannot be read.
std::optional<std::vector<std::string>> NamesIn(int folder);

// How deep trees are walked; each level holds a descriptor.
inline constexpr int kDeepestFolder = 256;

}  // namespace updown
