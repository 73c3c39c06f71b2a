#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "peer/bytes.h"
#include "peer/connection.h"

namespace updown::peer {

// Why an operation on the served folder was refused.
enum class Refusal { None, NotFound, NotAllowed, BadName };

struct FolderEntry {
  std::string name;
  bool isFolder = false;
  std::uint32_t time = 0;  // seconds since 1970
  std::uint32_t size = 0;  // bytes; 0 for a folder, all ones for a file of 4 GiB and more
  std::uint16_t mode = 0;  // permission bits
};

// The folder that is served as "/". Paths have "/" as separator. Nothing outside the folder can be
// reached: a path that holds ".." is refused, links are neither followed nor shown, and what is
// neither folder nor plain file does not exist. Safe from any thread; two that write one
// file at a time get what the file system gives.
class ServedFolder {
 public:
  explicit ServedFolder(const std::string& root);  // throws std::runtime_error if it is no folder

  // "." and ".." first, then the entries in the order of their names' bytes.
  Refusal ListEntries(std::string_view path, std::vector<FolderEntry>& entries) const;
  Refusal FileInformation(std::string_view path, FolderEntry& entry) const;
  // Replaces `block` with at most `length` bytes from `offset` on; none at or past the end.
  Refusal ReadBlock(std::string_view path, std::uint32_t offset, std::uint32_t length,
                    Bytes& block) const;
  // Makes the file if need be.
  Refusal WriteBlock(std::string_view path, std::uint32_t offset, View block) const;
  Refusal CreateFolder(std::string_view path) const;
  Refusal RemoveFolder(std::string_view path) const;  // an empty one
  Refusal RemoveFile(std::string_view path) const;
  Refusal Rename(std::string_view oldPath, std::string_view newPath) const;  // never over another

 private:
  struct Place;
  Refusal Find(std::string_view path, Place& place) const;
  Refusal OpenFolder(std::string_view path, Handle& folder) const;
  Refusal OpenFile(std::string_view path, int flags, Handle& file) const;

  Handle root_;
};

}  // namespace updown::peer
