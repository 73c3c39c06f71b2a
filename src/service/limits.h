#pragma once

#include <chrono>

namespace updown {

// How long this side waits for the service before it gives a connection up.
inline constexpr std::chrono::seconds kOpeningLimit{60};     // resolve, connect and log in, in all
inline constexpr std::chrono::seconds kRequestSilence{120};  // a request: without a further byte
inline constexpr std::chrono::seconds kTransferSilence{60};  // a transfer: without a further byte

}  // namespace updown
