#include <algorithm>
#include <array>
#include <utility>

#include "service/block_pipe.h"
#include "service/block_transfer.h"
#include "service/download_target.h"
#include "service/exchange.h"

namespace updown {

namespace {

// A block's reply head and what its path may take. All further heads of a file are as long as the
// first one turns out to be, so that nothing but the head is taken out of the socket by hand.
constexpr std::size_t kMostHeadBytes = 512;
// Less than this passes through the buffer, which costs no pipe.
constexpr std::uint32_t kWorthAPipe = 65536;

// One download. The service decides how long the blocks are.
class Download {
 public:
  Download(Dialect dialect, Connection& connection, TransferRecord& record)
      : dialect_(dialect), connection_(connection), record_(record), buffer_(kExchangeCapacity) {}

  TransferResult Run(TransferProgress* progress);

 private:
  int Prepare();
  void DecideOffset(const FileInformation& information);
  int OpenTarget();
  int MoveBlocks(TransferProgress* progress);
  int MoveBlock();
  int RequestBlock(BlockRequest& block);
  int DecodeBlockReply(const ServiceReply& reply, BlockRequest& block) const;
  int StoreBlock(std::uint32_t length);
  int StoreThroughBuffer(std::uint32_t& remaining);
  int StoreThroughPipe(std::uint32_t& remaining);
  int WriteUnread(std::uint32_t& remaining);
  int Sync();
  int Close(int result);
  int FailLocally(int result, int error);

  const Dialect dialect_;
  Connection& connection_;
  TransferRecord& record_;
  MessageBuffer buffer_;
  DownloadTarget target_;
  BlockPipe pipe_;
  bool pipeWorks_ = true;
  std::size_t headBytes_ = kMostHeadBytes;  // of the next block, at most
  TransferPosition position_;
  TransferResult failure_;  // of the local file; its code is 0 as long as there is none
};

TransferResult Download::Run(TransferProgress* progress) {
  int result = Prepare();
  if (result == result::kOk) {
    result = MoveBlocks(progress);
  }
  if (result == result::kOk && !target_.IsOpen()) {
    return {};  // stopped before the file was made
  }
  result = EndTransfer(dialect_, position_, Close(result), record_);
  return failure_.code != result::kOk ? failure_ : ServiceResult(result, connection_, record_);
}

// Everything up to the first block. A task that was stopped meanwhile leaves no file behind.
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
  return IsStopped(record_) ? result::kOk : OpenTarget();
}

void Download::DecideOffset(const FileInformation& information) {
  if (record_.remoteTime.load() == information.modificationTime &&
      record_.totalBytes.load() == information.size) {
    position_.offset = record_.doneBytes.load();
  } else {
    // In this order: a list saved in between never has the new file's stamp with the old progress.
    record_.doneBytes.store(0);
    record_.unsyncedBytes.store(0);
    record_.remoteTime.store(information.modificationTime);
    record_.totalBytes.store(information.size);
  }
  position_.size = information.size;
}

int Download::OpenTarget() {
  if (const int error = target_.Open(record_.LocalPath()); error != 0) {
    return FailLocally(result::kFileOpen, error);
  }
  if (position_.offset > target_.Size() || position_.offset > position_.size) {
    position_.offset = 0;
  }
  const int error = target_.CheckRoom(position_.size, position_.offset);
  return error == 0 ? result::kOk : FailLocally(result::kFileWrite, error);
}

int Download::MoveBlocks(TransferProgress* progress) {
  while (target_.IsOpen() && position_.More()) {
    const bool goesOn = progress == nullptr || progress->BeforeBlock(record_);
    if (!goesOn || IsStopped(record_)) {
      return result::kOk;
    }
    if (const int result = MoveBlock(); result != result::kOk) {
      return result;
    }
    if (progress != nullptr) {
      progress->BlockDone(record_);
    }
    if (position_.More() && target_.SyncIsDue(DownloadTarget::Clock::now())) {
      if (const int error = Sync(); error != 0) {
        return FailLocally(result::kFileWrite, error);
      }
    }
  }
  return result::kOk;
}

int Download::MoveBlock() {
  BlockRequest block{position_.offset, 0, record_.RemotePath()};
  int result = RequestBlock(block);
  if (result == result::kOk) {
    result = StoreBlock(block.length);
  }
  if (result == result::kOk) {
    record_.unsyncedBytes += block.length;
    record_.doneBytes.store(position_.offset);
  }
  return result;
}

// Sets the length to what the service is about to send.
int Download::RequestBlock(BlockRequest& block) {
  std::array<std::uint8_t, kBlockRequestCapacity> list;
  const int size = EncodeBlockRequest(block, list);
  if (size < 0) {
    return result::kNotEncodable;
  }
  buffer_.Reset();
  ServiceReply reply;
  const int result =
      Exchange(dialect_, connection_, message::kReadBlock,
               Bytes(list).first(static_cast<std::size_t>(size)), buffer_, reply, headBytes_);
  if (result != result::kOk) {
    return result;
  }
  headBytes_ = buffer_.Capacity() - buffer_.Free() - buffer_.Unread();
  return DecodeBlockReply(reply, block);
}

// A block that lies anywhere but where it was asked for, runs past the file's end or is empty is
// refused before a byte of it is written: the file would get a hole, or never be whole.
int Download::DecodeBlockReply(const ServiceReply& reply, BlockRequest& block) const {
  if (dialect_ == Dialect::First) {
    if (reply.data.size() != 4) {
      return result::kNotDecodable;
    }
    block.length = ReadBigEndian32(reply.data.data());
  } else {
    const auto sent = DecodeBlockRequest(reply.data);
    if (reply.code != message::kReadBlock || !sent || sent->offset != block.offset) {
      return result::kNotDecodable;
    }
    block.length = sent->length;
  }
  const bool fits = block.length > 0 && block.length <= position_.size - position_.offset;
  return fits ? result::kOk : result::kNotDecodable;
}

int Download::StoreBlock(std::uint32_t length) {
  std::uint32_t remaining = length;
  int result = WriteUnread(remaining);
  while (result == result::kOk && remaining > 0) {
    result = pipeWorks_ && remaining >= kWorthAPipe ? StoreThroughPipe(remaining)
                                                    : StoreThroughBuffer(remaining);
  }
  return result;
}

int Download::StoreThroughBuffer(std::uint32_t& remaining) {
  buffer_.Reset();
  const int received = ReceiveMore(connection_, buffer_, remaining);
  return received == result::kOk ? WriteUnread(remaining) : received;
}

int Download::StoreThroughPipe(std::uint32_t& remaining) {
  const BlockPipe::Result piped = pipe_.Move(connection_, target_, position_.offset, remaining);
  position_.offset += piped.moved;
  remaining -= piped.moved;
  switch (piped.outcome) {
    case BlockPipe::Outcome::ConnectionFailed:
      return result::kConnection;
    case BlockPipe::Outcome::FileFailed:
      return FailLocally(result::kFileWrite, piped.error);
    case BlockPipe::Outcome::Unsupported:
      pipeWorks_ = false;
      break;
    case BlockPipe::Outcome::Moved:
      break;
  }
  return result::kOk;
}

// Writes what the buffer holds of the block.
int Download::WriteUnread(std::uint32_t& remaining) {
  const std::uint32_t count = std::min(remaining, buffer_.Unread());
  if (const int error = target_.Write(buffer_.UnreadBytes().first(count), position_.offset);
      error != 0) {
    return FailLocally(result::kFileWrite, error);
  }
  buffer_.AdvanceRead(count);
  position_.offset += count;
  remaining -= count;
  return result::kOk;
}

// 0 or an errno. A disk that fails to take the bytes may have dropped them, so they do not count as
// done.
int Download::Sync() {
  const int error = target_.Sync(DownloadTarget::Clock::now());
  if (error != 0) {
    const std::uint32_t done = record_.doneBytes;
    record_.doneBytes.store(done - std::min(done, record_.unsyncedBytes.load()));
  }
  record_.unsyncedBytes.store(0);
  return error;
}

// However the blocks ended. Bytes in a file that nobody can reach any more are not done, and
// another file in its place has none of them.
int Download::Close(int result) {
  if (!target_.IsOpen()) {
    return result;
  }
  if (const int error = target_.CheckPlace(); error != 0) {
    record_.doneBytes.store(0);
    record_.unsyncedBytes.store(0);
    return result == result::kOk ? FailLocally(result::kFileWrite, error) : result;
  }
  if (result == result::kOk && !position_.More()) {
    if (const int error = target_.CutTo(position_.size); error != 0) {
      result = FailLocally(result::kFileWrite, error);
    }
  }
  const int error = Sync();
  return result == result::kOk && error != 0 ? FailLocally(result::kFileWrite, error) : result;
}

int Download::FailLocally(int result, int error) {
  if (failure_.code == result::kOk) {
    failure_ = {result, error, record_.LocalPath()};
  }
  return result;
}

}  // namespace

TransferResult DownloadFile(Dialect dialect, Connection& connection, const std::string& sessid,
                            TransferRecord& record, TransferProgress* progress) {
  const int attached = AttachTransfer(dialect, connection, sessid);
  TransferResult ended = attached == result::kOk
                             ? Download(dialect, connection, record).Run(progress)
                             : ServiceResult(attached, connection, record);
  return SettleFailure(std::move(ended), record, progress);
}

}  // namespace updown
