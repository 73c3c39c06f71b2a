#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/unique_fd.h"

namespace updown {

// Puts a new file in the place of an old one as a whole: the bytes go to a file beside it, named
// as it with ".tmp" behind, which takes the name once it is on disk. Whatever fails or dies in
// between, the old file is as it was. One writer for each path; only the owner may read the file.
//
// Errors are values of errno; behind the first one nothing more is written.
class FileReplacement {
 public:
  // Removes what an earlier writer that died has left under the temporary name.
  explicit FileReplacement(std::string path);
  // Without a Commit that came through, the temporary file goes.
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  void Write(std::span<const std::uint8_t> bytes);  // gathered; goes out in pieces of 64 KiB

  // 0 when the new file is on the disk and has the name, else the error. The name outlasts a loss
  // of power where the file system can sync a folder; where it cannot, that is no error.
  int Commit();

 private:
  void Flush();

  const std::string path_;
  const std::string temporaryPath_;
  UniqueFd file_;
  std::vector<std::uint8_t> gathered_;
  int error_ = 0;
};

}  // namespace updown
