#include <algorithm>
#include <array>

#include "localdata/files.h"
#include "service/block_transfer.h"
#include "service/exchange.h"

namespace updown {

namespace {

// One download. Blocks run through the one buffer straight into the local file; the service decides
// how long they are.
class Download {
 public:
  Download(Dialect dialect, Connection& connection, TransferRecord& record)
      : dialect_(dialect), connection_(connection), record_(record), buffer_(kExchangeCapacity) {}

  int Run(TransferProgress* progress);

 private:
  int Prepare();
  void DecideOffset(const FileInformation& information);
  int OpenTarget();
  int MoveBlock();
  int RequestBlock(BlockRequest& block);
  int DecodeBlockReply(const ServiceReply& reply, BlockRequest& block) const;
  int StoreBlock(const BlockRequest& block);
  int WriteUnread(std::uint32_t& remaining);

  const Dialect dialect_;
  Connection& connection_;
  TransferRecord& record_;
  MessageBuffer buffer_;
  UniqueFd file_;
  TransferPosition position_;
};

int Download::Run(TransferProgress* progress) {
  int result = Prepare();
  while (result == result::kOk && position_.More()) {
    if (IsStopped(record_)) {
      return result::kOk;
    }
    result = MoveBlock();
    if (result != result::kOk) {
      break;
    }
    record_.doneBytes.store(position_.offset);
    if (progress != nullptr) {
      progress->BlockDone(record_);
    }
  }
  return EndTransfer(dialect_, position_, result, record_);
}

// Everything up to the first block.
int Download::Prepare() {
  ServiceReply reply;
  const int result = AskInformation(dialect_, connection_, record_, buffer_, reply);
  if (result != result::kOk) {
    return result;
  }
  const auto information = DecodeFileInformation(reply.data);
  if (!information) {
    return result::kNotDecodable;
  }
  PrintInformation(*information);
  if (information->size > kLargestFile) {
    return result::kNotImplemented;
  }
  DecideOffset(*information);
  return OpenTarget();
}

void Download::DecideOffset(const FileInformation& information) {
  if (record_.remoteTime.load() == information.modificationTime &&
      record_.totalBytes.load() == information.size) {
    position_.offset = record_.doneBytes.load();
  } else {
    // In this order: a list saved in between never has the new file's stamp with the old progress.
    record_.doneBytes.store(0);
    record_.remoteTime.store(information.modificationTime);
    record_.totalBytes.store(information.size);
  }
  position_.size = information.size;
}

int Download::OpenTarget() {
  const std::string path = record_.LocalPath();
  if (position_.offset > LocalFileSize(path)) {
    position_.offset = 0;
  }
  file_ = OpenLocalFile(path, OpenMode::ReadWrite, FileDisposition::OpenAlways);
  return file_ ? result::kOk : result::kFileOpen;
}

int Download::MoveBlock() {
  BlockRequest block{position_.offset, 0, record_.RemotePath()};
  const int result = RequestBlock(block);
  if (result != result::kOk) {
    return result;
  }
  if (SeekLocalFile(file_, block.offset) != 0) {
    return result::kFileWrite;
  }
  position_.offset = block.offset;
  return StoreBlock(block);
}

// Replaces offset and length by what the service is about to send.
int Download::RequestBlock(BlockRequest& block) {
  std::array<std::uint8_t, kBlockRequestCapacity> list;
  const int size = EncodeBlockRequest(block, list);
  if (size < 0) {
    return result::kNotEncodable;
  }
  buffer_.Reset();
  ServiceReply reply;
  const int result = Exchange(dialect_, connection_, message::kReadBlock,
                              Bytes(list).first(static_cast<std::size_t>(size)), buffer_, reply);
  return result == result::kOk ? DecodeBlockReply(reply, block) : result;
}

int Download::DecodeBlockReply(const ServiceReply& reply, BlockRequest& block) const {
  if (dialect_ == Dialect::First) {
    if (reply.data.size() != 4) {
      return result::kNotDecodable;
    }
    block.length = ReadBigEndian32(reply.data.data());
    return result::kOk;
  }
  const auto sent = DecodeBlockRequest(reply.data);
  // A block behind the file's end is refused before it makes a hole in the local file, and before
  // doneBytes claims the hole as good.
  if (reply.code != message::kReadBlock || !sent || sent->offset > position_.size) {
    return result::kNotDecodable;
  }
  block.offset = sent->offset;
  block.length = sent->length;
  return result::kOk;
}

int Download::StoreBlock(const BlockRequest& block) {
  std::uint32_t remaining = block.length;
  while (remaining > 0) {
    const int written = WriteUnread(remaining);
    if (written != result::kOk) {
      return written;
    }
    buffer_.CompactUnread();
    if (remaining == 0 || buffer_.Unread() > 0) {
      continue;
    }
    if (const int received = ReceiveMore(connection_, buffer_); received != result::kOk) {
      return received;
    }
  }
  return result::kOk;
}

// Writes what has arrived of the block, or as much of it as the file takes in one go.
int Download::WriteUnread(std::uint32_t& remaining) {
  const std::uint32_t count = std::min(remaining, buffer_.Unread());
  if (count == 0) {
    return result::kOk;
  }
  if (count > kLargestFile - position_.offset) {
    return result::kFileWrite;
  }
  const int written = WriteLocalFile(file_, buffer_.UnreadBytes().first(count));
  if (written < 1) {
    return result::kFileWrite;
  }
  const auto advanced = static_cast<std::uint32_t>(written);
  buffer_.AdvanceRead(advanced);
  position_.offset += advanced;
  remaining -= advanced;
  return result::kOk;
}

}  // namespace

TransferResult DownloadFile(Dialect dialect, Connection& connection, const std::string& sessid,
                            TransferRecord& record, TransferProgress* progress) {
  int result = AttachTransfer(dialect, connection, sessid, record);
  if (result == result::kOk) {
    result = Download(dialect, connection, record).Run(progress);
  }
  return ServiceResult(result, connection, record);
}

}  // namespace updown
