#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "peer/options.h"

namespace updown::peer {

// The faults that are asked for, each with its own count of the messages that it has met.
// Thread-safe.
class FaultPlan {
 public:
  void Add(const Fault& fault);
  void Clear();

  // Counts the message with every fault that looks out for it, and gives the first one that
  // strikes now.
  std::optional<Fault> Meet(std::uint32_t message);

 private:
  struct Planned {
    Fault fault;
    std::uint64_t met = 0;
  };
  std::mutex mutex_;
  std::vector<Planned> plan_;  // guarded by mutex_
};

// True for the kinds that leave the request undone: the reply is replaced, not spoiled.
bool ReplacesReply(Fault::Kind kind);

// Reads "KIND:MESSAGE[:skip=N][:times=N][:code=N]", as in "drop-inside:4104:skip=2:times=1".
// Nothing if the text is no such thing.
std::optional<Fault> ParseFault(std::string_view text);

}  // namespace updown::peer
