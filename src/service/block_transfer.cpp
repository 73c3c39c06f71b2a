#include "service/block_transfer.h"

#include "platform/debug_stream.h"

namespace updown {

int AttachTransfer(Dialect dialect, Connection& connection, const std::string& sessid) {
  std::string presented = sessid;
  return OpenSession(dialect, connection, presented, {}, message::kAttachSession);
}

int AskInformation(Dialect dialect, Connection& connection, const TransferRecord& record,
                   MessageBuffer& buffer, ServiceReply& reply) {
  const std::string path = record.RemotePath();
  return Exchange(dialect, connection, message::kFileInformation, AsBytes(path), buffer, reply);
}

TransferResult ServiceResult(int code, const Connection& connection, const TransferRecord& record) {
  if (code == result::kOk) {
    return {};
  }
  const int error = code == result::kConnection ? connection.LastError() : 0;
  return {code, error, record.RemotePath()};
}

void PrintInformation(const FileInformation& information) {
  DebugLine("get infomation:\n\tsize:\t%d\n\tmtime:\t%d\n", static_cast<int>(information.size),
            static_cast<int>(information.modificationTime));
}

int EndTransfer(Dialect dialect, const TransferPosition& position, int result,
                TransferRecord& record) {
  if (result != result::kOk || position.More()) {
    return result;
  }
  if (dialect == Dialect::First) {
    record.SetStateUnlessStopped(TransferState::Finished);
    return result::kOk;
  }
  if (position.offset > position.size) {
    return result::kNotDecodable;
  }
  record.state.store(TransferState::Finished);
  return result::kOk;
}

TransferResult SettleFailure(TransferResult ended, TransferRecord& record,
                             TransferProgress* progress) {
  if (ended.code != result::kOk && (progress == nullptr || !progress->TriesAgain(ended))) {
    record.SetStateUnlessStopped(TransferState::Failed);
  }
  return ended;
}

}  // namespace updown
