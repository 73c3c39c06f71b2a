#include "localdata/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

#include "localdata/file_names.h"

namespace updown {
namespace {

constexpr std::size_t kMostBytes = std::numeric_limits<int>::max();

// Leaves the reason in errno.
bool UsablePath(const std::string& path) {
  if (path.empty()) {
    errno = ENOENT;
  } else if (!FitsPath(path)) {
    errno = ENAMETOOLONG;
  } else if (path.find('\0') != std::string::npos) {
    errno = EINVAL;
  } else {
    return true;
  }
  return false;
}

// Repeats `call` while signals interrupt it. Its count, or the negated errno.
template <typename Call>
int CountOrError(Call call) {
  ssize_t count = -1;
  do {
    count = call();
  } while (count < 0 && errno == EINTR);
  return count < 0 ? -errno : static_cast<int>(count);
}

}  // namespace

UniqueFd OpenLocalFile(const std::string& path, OpenMode mode, FileDisposition disposition) {
  if (!UsablePath(path)) {
    return {};
  }
  const FileAccess access = mode == OpenMode::Read ? FileAccess::Read : FileAccess::ReadWrite;
  return OpenFile(path, access, disposition);
}

std::uint32_t LocalFileSize(const std::string& path) {
  const UniqueFd file = OpenLocalFile(path, OpenMode::Read, FileDisposition::OpenExisting);
  const std::int64_t size = file ? FileSize(file.Get()) : 0;
  return size < 0 ? 0 : static_cast<std::uint32_t>(size);
}

int SeekLocalFile(const UniqueFd& file, std::uint32_t offset) {
  if (offset > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max())) {
    return -1;
  }
  return lseek(file.Get(), static_cast<off_t>(offset), SEEK_SET) < 0 ? -1 : 0;
}

int WriteLocalFile(const UniqueFd& file, std::span<const std::uint8_t> bytes) {
  const std::size_t count = std::min(bytes.size(), kMostBytes);
  return CountOrError([&] { return write(file.Get(), bytes.data(), count); });
}

int ReadLocalFile(const UniqueFd& file, std::span<std::uint8_t> buffer) {
  const std::size_t count = std::min(buffer.size(), kMostBytes);
  return CountOrError([&] { return read(file.Get(), buffer.data(), count); });
}

bool DeleteLocalFile(const std::string& path) {
  return UsablePath(path) && unlink(path.c_str()) == 0;
}

std::filesystem::path NamedPath(std::string_view path) {
  while (path.ends_with('/')) {
    path.remove_suffix(1);
  }
  std::filesystem::path named(path);
  const std::filesystem::path name = named.filename();
  return name == "." || name == ".." ? std::filesystem::path() : named;
}

bool DeleteLocal(const std::string& path) {
  const std::filesystem::path named = NamedPath(path);
  std::error_code error;
  return !named.empty() &&
         std::filesystem::remove_all(named, error) != static_cast<std::uintmax_t>(-1);
}

}  // namespace updown
