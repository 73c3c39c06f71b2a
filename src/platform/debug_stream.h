#pragma once

#include <atomic>
#include <string_view>

#include "platform/unique_fd.h"

namespace updown {

// Writes debug texts to a standard stream and never waits for who reads it: what does not go out at
// once is dropped, and so is everything for a stream that is closed or cannot be had without
// waiting. Any thread, no lock.
//
// A pipe or terminal is opened anew, so that the parent's own use of it stays as it is. Texts of up
// to PIPE_BUF bytes go into a pipe whole or not at all; of a longer one, or on a terminal or
// socket, the end may be missing, and the next text then begins on a line of its own.
class DebugStream {
 public:
  // `fd` stays the caller's, and what it refers to must not change later.
  explicit DebugStream(int fd);

  void Write(std::string_view text) noexcept;  // leaves errno as it is

 private:
  enum class Kind { None, File, Socket };

  long WriteOnce(std::string_view bytes) const;
  void WriteWhatGoesOut(std::string_view text);

  Kind kind_ = Kind::None;
  int fd_;
  UniqueFd own_;                   // of a pipe or terminal; then fd_ is its number
  std::atomic<bool> cut_ = false;  // the last text that went out lacks its end
};

// Formats as printf does and writes to the standard error stream, or the standard output stream, as
// they are at the first call. The text brings its line breaks. A text for which there is no memory
// is dropped.
void DebugLine(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));
void OutputLine(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));

// A text as it is, to the standard error stream.
void WriteDebugText(std::string_view text) noexcept;

}  // namespace updown
