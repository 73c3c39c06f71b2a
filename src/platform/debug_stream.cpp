#include "platform/debug_stream.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>
#include <string>

namespace updown {
namespace {

// A description of our own of the same pipe or terminal: O_NONBLOCK on the one that was handed down
// would hold for the parent as well.
UniqueFd OpenAnew(int fd) {
  std::array<char, 32> path{};
  std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", fd);
  return UniqueFd(open(path.data(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

// Neither is destroyed: threads may outlive the statics of a process that ends.
DebugStream& StandardError() {
  static auto& stream = *new DebugStream(STDERR_FILENO);
  return stream;
}

DebugStream& StandardOutput() {
  static auto& stream = *new DebugStream(STDOUT_FILENO);
  return stream;
}

std::string Format(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  constexpr std::size_t kMostLines = 255;  // are shorter, and are formatted once
  std::string text(kMostLines, '\0');
  // The check loses sight of a list that is handed on.
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
  const int length = std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  if (text.size() > kMostLines) {
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  }
  return text;
}

void WriteFormatted(DebugStream& (*stream)(), const char* format, va_list arguments) noexcept {
  try {
    stream().Write(Format(format, arguments));
  } catch (const std::bad_alloc&) {
    return;
  }
}

}  // namespace

DebugStream::DebugStream(int fd) : fd_(fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) {
    return;
  }
  if (S_ISSOCK(status.st_mode)) {
    kind_ = Kind::Socket;
  } else if (S_ISREG(status.st_mode)) {
    kind_ = Kind::File;  // as it is: one opened anew would write from the beginning
  } else if ((own_ = OpenAnew(fd))) {
    kind_ = Kind::File;
    fd_ = own_.Get();
  }
}

long DebugStream::WriteOnce(std::string_view bytes) const {
  long written;
  do {
    written = kind_ == Kind::Socket
                  ? send(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
                  : write(fd_, bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  return written;
}

// Set by who cuts a text, and cleared only by who ends its line: a text of another thread that
// finds no room in between must not clear it.
void DebugStream::WriteWhatGoesOut(std::string_view text) {
  if (cut_.exchange(false) && WriteOnce("\n") != 1) {
    cut_ = true;
    return;
  }
  const long written = WriteOnce(text);
  const auto end = static_cast<std::size_t>(written > 0 ? written : 0);
  if (end > 0 && end < text.size() && text[end - 1] != '\n') {
    cut_ = true;
  }
}

void DebugStream::Write(std::string_view text) noexcept {
  if (kind_ != Kind::None && !text.empty()) {
    const int savedErrno = errno;
    WriteWhatGoesOut(text);
    errno = savedErrno;
  }
}

void DebugLine(const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  WriteFormatted(&StandardError, format, arguments);
  va_end(arguments);
}

void OutputLine(const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  WriteFormatted(&StandardOutput, format, arguments);
  va_end(arguments);
}

void WriteDebugText(std::string_view text) noexcept { StandardError().Write(text); }

}  // namespace updown
