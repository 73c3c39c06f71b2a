#pragma once

#include <utility>

namespace updown {

// Owner of one file descriptor (file or socket). -1 means none. Closes on destruction.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(other.Release()) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  ~UniqueFd() { Reset(); }

  int Get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int Release() { return std::exchange(fd_, -1); }
  void Reset(int fd = -1);

 private:
  int fd_ = -1;
};

// Opens /dev/null in place of each standard stream that the parent has left closed. Else a file or
// socket of ours would get its number, and take in what the program prints. Called first of all.
void HoldStandardStreams();

}  // namespace updown
