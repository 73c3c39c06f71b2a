#pragma once

#include <string_view>

#include "service/connection.h"
#include "wire/message_buffer.h"

namespace updown {

// Receives once into the free bytes, at most `most`. 0, or result::kConnection when the peer is
// gone or the buffer is full, so that what is awaited can never arrive.
int ReceiveMore(Connection& connection, MessageBuffer& buffer,
                std::size_t most = kExchangeCapacity);

// The length that goes before the text of a "%.*s" in the debug lines.
inline int PrintLength(std::string_view text) { return static_cast<int>(text.size()); }

}  // namespace updown
