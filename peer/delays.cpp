#include "peer/delays.h"

#include "peer/dialects.h"

namespace updown::peer {

void Delays::Set(std::uint32_t message, std::uint32_t milliseconds) {
  const std::lock_guard lock(mutex_);
  milliseconds_[message] = milliseconds;
}

void Delays::Clear() {
  const std::lock_guard lock(mutex_);
  milliseconds_.clear();
}

std::chrono::milliseconds Delays::Of(std::uint32_t message) const {
  const std::lock_guard lock(mutex_);
  const auto ownOf = [this](std::uint32_t number) {
    const auto found = milliseconds_.find(number);
    return std::chrono::milliseconds(found == milliseconds_.end() ? 0 : found->second);
  };
  const bool isRelays = message == message::kRelayResolve || message == message::kRelayConnect;
  return ownOf(message) + (isRelays ? std::chrono::milliseconds(0) : ownOf(0));
}

}  // namespace updown::peer
