#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "localdata/transfer_record.h"
#include "service/operations.h"
#include "wire/sockets.h"

namespace updown {

// Moves one file on a connection of its own: connects through the relay, presents `sessid`,
// downloads, closes. Returns 0 or a result code and leaves the outcome in the record's `state`
// (Finished, Failed, or Stopped as somebody else set it). Worker threads; blocks as long as the
// connection does. `group` (may be null) lets an exit cut the connection.
int RunTaskTransfer(const FileService& service, std::string_view serverName,
                    std::uint16_t serverPort, const std::string& sessid, TransferRecord& record,
                    TransferProgress* progress, SocketGroup* group = nullptr);

}  // namespace updown
