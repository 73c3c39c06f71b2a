#include "service/block_transfer.h"

#include "platform/debug_stream.h"

namespace updown {

int AttachTransfer(Dialect dialect, int socket, const std::string& sessid, TransferRecord& record) {
  std::string presented = sessid;
  const int result = OpenSession(dialect, socket, presented, {}, message::kAttachSession);
  if (result != result::kOk) {
    record.state.store(TransferState::Failed);
  }
  return result;
}

int AskInformation(Dialect dialect, int socket, const TransferRecord& record, MessageBuffer& buffer,
                   ServiceReply& reply) {
  const std::string path = record.RemotePath();
  return Exchange(dialect, socket, message::kFileInformation, AsBytes(path), buffer, reply);
}

void PrintInformation(const FileInformation& information) {
  DebugLine("get infomation:\n\tsize:\t%d\n\tmtime:\t%d\n", static_cast<int>(information.size),
            static_cast<int>(information.modificationTime));
}

int EndTransfer(Dialect dialect, const TransferPosition& position, int result,
                TransferRecord& record) {
  if (result != result::kOk) {
    record.SetStateUnlessStopped(TransferState::Failed);
    return result;
  }
  if (position.More()) {
    return result::kOk;
  }
  if (dialect == Dialect::First) {
    record.SetStateUnlessStopped(TransferState::Finished);
    return result::kOk;
  }
  const bool overrun = position.offset > position.size;
  record.state.store(overrun ? TransferState::Failed : TransferState::Finished);
  return overrun ? result::kNotDecodable : result::kOk;
}

}  // namespace updown
