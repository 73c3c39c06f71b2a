#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>

namespace updown::peer {

// How long each reply is held back. Thread-safe.
class Delays {
 public:
  // `message` as in Fault: 0 is every message of the service, and is added to a message's own.
  void Set(std::uint32_t message, std::uint32_t milliseconds);
  void Clear();
  std::chrono::milliseconds Of(std::uint32_t message) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::uint32_t, std::uint32_t> milliseconds_;  // guarded by mutex_
};

}  // namespace updown::peer
