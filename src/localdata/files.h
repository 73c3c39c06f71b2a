#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "platform/local_file.h"
#include "platform/unique_fd.h"

namespace updown {

// Local files of the transfer code and the task list: UTF-8 paths, 32-bit offsets and plain
// results. No state, no buffering; any thread.

// What the file is opened for.
enum class OpenMode : std::uint32_t {
  Read = 1,       // size query, source of an upload, loading the task list
  ReadWrite = 2,  // target of a download, saving the task list
};

// Empty on failure, on an empty path, and on one of 260 bytes or more, errno telling why.
UniqueFd OpenLocalFile(const std::string& path, OpenMode mode, FileDisposition disposition);

// The low 32 bits of the size; 0 if the file cannot be opened, which also tells "missing".
std::uint32_t LocalFileSize(const std::string& path);

// 0, or -1 if the seek failed. Offsets of 2 GiB and more are refused.
int SeekLocalFile(const UniqueFd& file, std::uint32_t offset);

// Bytes moved (0 from a read at the end of the file), or the negated errno. An interrupted call is
// repeated.
int WriteLocalFile(const UniqueFd& file, std::span<const std::uint8_t> bytes);
int ReadLocalFile(const UniqueFd& file, std::span<std::uint8_t> buffer);

// True if the file was there and is gone.
bool DeleteLocalFile(const std::string& path);

// The path without slashes at its end; empty for one without a proper last component.
std::filesystem::path NamedPath(std::string_view path);

// Removes a file, a link itself, or a folder with all that is in it, asking nothing; links inside
// are not followed. True if nothing is left under the path, also if nothing was there. After a
// failure what could be removed is gone.
bool DeleteLocal(const std::string& path);

}  // namespace updown
