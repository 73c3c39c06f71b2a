#include <algorithm>
#include <array>

#include "localdata/files.h"
#include "service/block_transfer.h"
#include "service/exchange.h"

namespace updown {

namespace {

// One upload. A block is what fits behind the frame's head: it is read from the file straight into
// the buffer, and the head is put before it afterwards.
class Upload {
 public:
  Upload(Dialect dialect, Connection& connection, TransferRecord& record)
      : dialect_(dialect),
        connection_(connection),
        record_(record),
        remotePath_(record.RemotePath()),
        buffer_(kExchangeCapacity) {}

  int Run(TransferProgress* progress);

 private:
  int Prepare();
  int DecideOffset();
  int OpenSource();
  int EncodeHead(std::uint32_t length, std::span<std::uint8_t> dest) const;
  int MoveBlock();
  int FillBlock(std::uint32_t& length);
  int AwaitReply();

  const Dialect dialect_;
  Connection& connection_;
  TransferRecord& record_;
  const std::string remotePath_;
  MessageBuffer buffer_;
  UniqueFd file_;
  TransferPosition position_;
};

int Upload::Run(TransferProgress* progress) {
  int result = Prepare();
  while (result == result::kOk) {
    result = MoveBlock();
    if (result != result::kOk) {
      break;
    }
    record_.doneBytes.store(position_.offset);
    if (progress != nullptr) {
      progress->BlockDone(record_);
    }
    if (!position_.More() || IsStopped(record_)) {
      break;
    }
  }
  return EndTransfer(dialect_, position_, result, record_);
}

int Upload::Prepare() {
  const int result = DecideOffset();
  return result == result::kOk ? OpenSource() : result;
}

// Resumes only into a file that the service knows.
int Upload::DecideOffset() {
  ServiceReply reply;
  const int result = AskInformation(dialect_, connection_, record_, buffer_, reply);
  if (dialect_ == Dialect::First && result == result::kNoSuchRemoteFile) {
    return result::kOk;
  }
  if (result != result::kOk) {
    return result;
  }
  if (const auto information = DecodeFileInformation(reply.data)) {
    PrintInformation(*information);
    position_.offset = record_.doneBytes.load();
    return result::kOk;
  }
  return dialect_ == Dialect::First ? result::kNotDecodable : result::kOk;
}

int Upload::OpenSource() {
  const std::string path = record_.LocalPath();
  position_.size = LocalFileSize(path);
  record_.totalBytes.store(position_.size);
  file_ = OpenLocalFile(path, OpenMode::Read, FileDisposition::OpenExisting);
  if (!file_) {
    return result::kFileOpen;
  }
  if (FileSize(file_.Get()) > kLargestFile) {
    return result::kNotImplemented;
  }
  return SeekLocalFile(file_, position_.offset) == 0 ? result::kOk : result::kFileOpen;
}

// The frame up to its raw bytes; its size does not depend on the numbers in it.
int Upload::EncodeHead(std::uint32_t length, std::span<std::uint8_t> dest) const {
  std::array<std::uint8_t, kBlockRequestCapacity> list;
  const int size = EncodeBlockRequest({position_.offset, length, remotePath_}, list);
  if (size < 0) {
    return -1;
  }
  return EncodeMessage(dest, message::kWriteBlock,
                       Bytes(list).first(static_cast<std::size_t>(size)));
}

int Upload::MoveBlock() {
  if (dialect_ == Dialect::First) {
    buffer_.Reset();
  } else {
    // The next frame starts where the last reply ended.
    buffer_.AdvanceRead(buffer_.Unread());
  }
  std::uint32_t length = 0;
  int result = FillBlock(length);
  if (result == result::kOk) {
    result = SendBuffered(connection_, buffer_);
  }
  if (result == result::kOk) {
    buffer_.Reset();
    result = AwaitReply();
  }
  if (result == result::kOk) {
    position_.offset += length;
  }
  return result;
}

int Upload::FillBlock(std::uint32_t& length) {
  const auto frame = buffer_.FreeBytes();
  const int headSize = EncodeHead(0, frame);
  if (headSize < 0 || static_cast<std::size_t>(headSize) == frame.size()) {
    return result::kNotEncodable;
  }
  const auto head = static_cast<std::uint32_t>(headSize);
  const int read = ReadLocalFile(file_, frame.subspan(head));
  // A file cut short meanwhile would send empty blocks for ever.
  if (read < 0 || (read == 0 && position_.More())) {
    return result::kFileOpen;
  }
  length = static_cast<std::uint32_t>(read);
  EncodeHead(length, frame.first(head));
  std::ranges::copy(BigEndian32(head + length - 4), frame.begin());
  buffer_.AdvanceWrite(head + length);
  return result::kOk;
}

int Upload::AwaitReply() {
  ServiceReply reply;
  const int result = ReceiveReply(connection_, buffer_, reply);
  if (result != result::kOk) {
    return result;
  }
  if (dialect_ == Dialect::First) {
    return ResultOfCode(reply.code);
  }
  return ReplyFailed(reply) ? result::kAccessRefused : result::kOk;
}

}  // namespace

TransferResult UploadFile(Dialect dialect, Connection& connection, const std::string& sessid,
                          TransferRecord& record, TransferProgress* progress) {
  int result = AttachTransfer(dialect, connection, sessid);
  if (result == result::kOk) {
    result = Upload(dialect, connection, record).Run(progress);
  }
  return SettleFailure(ServiceResult(result, connection, record), record, progress);
}

}  // namespace updown
