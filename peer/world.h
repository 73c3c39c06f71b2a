#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "peer/connection.h"
#include "peer/delays.h"
#include "peer/dialects.h"
#include "peer/faults.h"
#include "peer/files.h"
#include "peer/options.h"

namespace updown::peer {

// The sessions issued so far; the oldest are forgotten when there are too many. Thread-safe.
class Sessions {
 public:
  explicit Sessions(std::uint32_t first) : issued_(first) {}
  std::string Issue(bool authenticated);
  void Authenticate(const std::string& sessid);
  bool IsAuthenticated(const std::string& sessid) const;
  void Forget();

 private:
  mutable std::mutex mutex_;
  std::uint32_t issued_;                // guarded by mutex_, as is the next
  std::map<std::string, bool> states_;  // true: authenticated; in the order of issue
};

// The requests that came in; beyond 64 MiB the oldest give way. Thread-safe.
class RequestLog {
 public:
  void Add(std::uint32_t message, View bytes);
  std::vector<SeenRequest> All() const;
  void Clear();

 private:
  mutable std::mutex mutex_;
  std::deque<SeenRequest> requests_;  // guarded by mutex_, as is the next
  std::size_t size_ = 0;
};

// Counts the service connections that are joined. Thread-safe.
class Joins {
 public:
  class Guard {
   public:
    explicit Guard(Joins& joins);
    ~Guard();
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

   private:
    Joins& joins_;
  };

  std::uint32_t Open() const;
  std::uint32_t Most() const;

 private:
  mutable std::mutex mutex_;
  std::uint32_t open_ = 0;  // guarded by mutex_, as is the next
  std::uint32_t most_ = 0;
};

// What all connections of one stand-in share.
struct World {
  explicit World(Options given);

  const Options options;
  const ServedFolder folder;
  const std::unique_ptr<const Dialect> dialect;
  std::atomic<std::uint32_t> blockLength;
  std::atomic<bool> accepting = true;
  FaultPlan faults;
  Delays delays;
  Sessions sessions;
  RequestLog requests;
  Joins joins;
  StopSignal stop;
};

}  // namespace updown::peer
