#pragma once

#include <cstdint>

#include "platform/unique_fd.h"
#include "service/dialect.h"
#include "service/nested_list.h"
#include "service/operations.h"

namespace updown {

// What downloads and uploads of both dialects have in common.

// The seek takes a signed 32-bit offset.
inline constexpr std::uint32_t kLargestFile = 0x7FFFFFFF;

// Presents `sessid` on the transfer's own connection.
int AttachTransfer(Dialect dialect, Connection& connection, const std::string& sessid);

// Asks for the file's information; the reply's data stays in `buffer`.
int AskInformation(Dialect dialect, Connection& connection, const TransferRecord& record,
                   MessageBuffer& buffer, ServiceReply& reply);
void PrintInformation(const FileInformation& information);

// Where a block loop stands. `offset` may run past `size` when the service sends more than it said.
struct TransferPosition {
  std::uint32_t offset = 0;
  std::uint32_t size = 0;

  bool More() const { return offset < size; }
};

// What to tell of a transfer that ended with `code`, an answer of the service or a failure of the
// connection.
TransferResult ServiceResult(int code, const Connection& connection, const TransferRecord& record);

// Sets a good outcome and returns the transfer's result. `result` is the loop's; on 0 the position
// tells whether the file is whole, stopped half way, or overrun. In the second dialect a whole file
// is Finished even if somebody has stopped it meanwhile.
int EndTransfer(Dialect dialect, const TransferPosition& position, int result,
                TransferRecord& record);

// Sets the state of what has failed, as TransferProgress::TriesAgain says, and returns `ended`.
TransferResult SettleFailure(TransferResult ended, TransferRecord& record,
                             TransferProgress* progress);

inline bool IsStopped(const TransferRecord& record) {
  return record.state.load() == TransferState::Stopped;
}

}  // namespace updown
