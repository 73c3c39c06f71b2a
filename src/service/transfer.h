#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "localdata/transfer_record.h"
#include "service/limits.h"
#include "service/operations.h"
#include "wire/sockets.h"

namespace updown {

// Moves one file on a connection of its own: connects through the relay, presents `sessid`,
// downloads, closes; `silence` without a byte ends it. Leaves the outcome in the record's `state`
// too (Finished, Failed unless `progress` tries again, or Stopped as somebody else set it). Worker
// threads; waits within the limits of limits.h. `group` (may be null) lets an exit cut the
// connection. Out of memory it fails with result::kNotEncodable and ENOMEM.
TransferResult RunTaskTransfer(const FileService& service, std::string_view serverName,
                               std::uint16_t serverPort, const std::string& sessid,
                               TransferRecord& record, TransferProgress* progress,
                               SocketGroup* group = nullptr,
                               std::chrono::milliseconds silence = kTransferSilence);

}  // namespace updown
