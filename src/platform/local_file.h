#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "platform/unique_fd.h"

namespace updown {

enum class FileAccess { Read, ReadWrite };
enum class FileDisposition : std::uint32_t { OpenExisting = 3, OpenAlways = 4 };

// Opens a regular file; never truncates, follows links like any program. OpenAlways makes a missing
// file, for read access too. Empty on failure, errno telling why. Folders, pipes and devices are
// refused, so that an open never blocks. `mode` is for a file that is made, less the umask.
UniqueFd OpenFile(const std::string& path, FileAccess access, FileDisposition disposition,
                  mode_t mode = 0666);

// Size in bytes, or -1.
std::int64_t FileSize(int fd);

}  // namespace updown
