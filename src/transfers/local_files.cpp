#include "transfers/local_files.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <vector>

#include "localdata/files.h"
#include "platform/unique_fd.h"

namespace updown {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kChunk = 262144;

std::error_code LastError() { return {errno != 0 ? errno : EIO, std::generic_category()}; }

std::error_code Sync(const fs::path& path) {
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file && fsync(file.Get()) == 0 ? std::error_code() : LastError();
}

// A file system that does not know the flag gives EINVAL; there a look must do.
std::error_code Rename(const fs::path& from, const fs::path& to, bool replace) {
  const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0) {
    return {};
  }
  std::error_code error = LastError();
  std::error_code ignored;
  if (!replace && error == std::errc::invalid_argument &&
      !fs::exists(fs::symlink_status(to, ignored))) {
    fs::rename(from, to, error);
  }
  return error;
}

// A folder beside the target, on its file system, that goes with all that is still in it.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const fs::path& parent)
      : path_((parent / ".updown-XXXXXX").string()), made_(mkdtemp(path_.data()) != nullptr) {}
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    if (made_) {
      fs::remove_all(path_, ignored);
    }
  }

  bool Made() const { return made_; }
  fs::path Inside(const fs::path& name) const { return path_ / name; }

 private:
  std::string path_;
  bool made_;
};

// Copies one tree. Errors of the file system come as exceptions.
class Copy {
 public:
  Copy(MoveProgress& progress, const fs::path& from) : progress_(progress) {
    std::uint64_t total = Size(fs::directory_entry(from));
    if (fs::is_directory(fs::symlink_status(from))) {
      for (const fs::directory_entry& entry : fs::recursive_directory_iterator(from)) {
        total += Size(entry);
      }
    }
    progress_.totalBytes = total;
  }

  void Entry(const fs::path& from, const fs::path& to) {
    const fs::file_status status = fs::symlink_status(from);
    if (fs::is_symlink(status)) {
      fs::copy_symlink(from, to);
      return;
    }
    if (fs::is_directory(status)) {
      Folder(from, to);
    } else if (fs::is_regular_file(status)) {
      Bytes(from, to);
    } else {
      throw std::system_error(std::make_error_code(std::errc::operation_not_supported));
    }
    // Last, since writing changes the times and a read-only folder takes no entries.
    std::error_code ignored;
    fs::last_write_time(to, fs::last_write_time(from), ignored);
    Check(Sync(to));
    fs::permissions(to, status.permissions(), ignored);
  }

 private:
  static std::uint64_t Size(const fs::directory_entry& entry) {
    return fs::is_regular_file(entry.symlink_status()) ? entry.file_size() : 0;
  }

  static void Check(std::error_code error) {
    if (error) {
      throw std::system_error(error);
    }
  }

  void Folder(const fs::path& from, const fs::path& to) {
    fs::create_directory(to);
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
      Entry(entry.path(), to / entry.path().filename());
    }
  }

  void Bytes(const fs::path& from, const fs::path& to) {
    errno = 0;
    std::ifstream in(from, std::ios::binary);
    std::ofstream out(to, std::ios::binary);
    std::vector<char> chunk(kChunk);
    while (in && out) {
      if (progress_.stop) {
        Check(std::make_error_code(std::errc::operation_canceled));
      }
      in.read(chunk.data(), static_cast<std::streamsize>(chunk.size()));
      out.write(chunk.data(), in.gcount());
      progress_.copiedBytes += static_cast<std::uint64_t>(in.gcount());
    }
    out.close();
    if (!in.eof() || !out) {
      throw std::system_error(LastError());
    }
  }

  MoveProgress& progress_;
};

bool IsInside(const fs::path& inner, const fs::path& outer) {
  const fs::path way = fs::canonical(inner).lexically_relative(fs::canonical(outer));
  return !way.empty() && *way.begin() != "..";
}

std::error_code CopyAndRemove(const fs::path& from, const fs::path& to, bool replace,
                              MoveProgress& progress) {
  const fs::path parent = to.parent_path();
  if (fs::is_directory(fs::symlink_status(from)) && IsInside(parent, from)) {
    return std::make_error_code(std::errc::invalid_argument);
  }
  const TemporaryFolder folder(parent);
  if (!folder.Made()) {
    return LastError();
  }
  const fs::path copy = folder.Inside(to.filename());
  Copy(progress, from).Entry(from, copy);
  if (const std::error_code error = Rename(copy, to, replace)) {
    return error;
  }
  Sync(parent);
  std::error_code ignored;
  fs::remove_all(from, ignored);
  return {};
}

std::error_code MoveByCopy(const fs::path& from, const fs::path& to, bool replace,
                           MoveProgress& progress) {
  try {
    return CopyAndRemove(from, to, replace, progress);
  } catch (const std::system_error& error) {
    return error.code();
  }
}

// Two names of one file: a rename would leave both.
bool HardLinks(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(a, error)) &&
         fs::is_regular_file(fs::symlink_status(b, error)) && fs::equivalent(a, b, error);
}

}  // namespace

std::optional<std::string> MoveTarget(const std::string& path, const std::string& folder) {
  const fs::path from = NamedPath(path);
  std::error_code error;
  if (from.empty() || folder.empty() ||
      fs::equivalent(from.has_parent_path() ? from.parent_path() : ".", folder, error)) {
    return std::nullopt;
  }
  return (fs::path(folder) / from.filename()).string();
}

std::error_code MoveLocal(const std::string& from, const std::string& to, bool replace,
                          MoveProgress& progress, MoveRoad road) {
  const fs::path source = NamedPath(from);
  std::error_code error = std::make_error_code(std::errc::cross_device_link);
  if (replace && HardLinks(source, to)) {
    fs::remove(source, error);
    return error;
  }
  if (road == MoveRoad::Rename) {
    error = Rename(source, to, replace);
  }
  return error == std::errc::cross_device_link ? MoveByCopy(source, to, replace, progress) : error;
}

}  // namespace updown
