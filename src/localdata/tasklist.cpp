#include "localdata/tasklist.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "localdata/files.h"
#include "wire/attributes.h"
#include "wire/message_buffer.h"

namespace updown {
namespace {

enum Tag : std::uint8_t {
  kDirection = 1,
  kRemotePath = 2,
  kLocalPath = 3,
  kTotalBytes = 4,
  kDoneBytes = 5,
  kRemoteTime = 6,
  kRecordId = 7,
  kParentRecordId = 8,
  kIsFolder = 9,
  kState = 10,
};

// Far beyond any real list; keeps a file of nothing but end marks from filling the memory.
constexpr std::size_t kMostRecords = 100000;

// Numbers stand in the file as the process has held them from the start: low byte first.
std::array<std::uint8_t, 4> LittleEndian32(std::uint32_t number) {
  return {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8),
          static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 24)};
}

// Leaves `field` alone unless the attribute is a number of 4 bytes.
void TakeNumber(const AttributeTable& table, Tag tag, std::uint32_t& field) {
  const Bytes bytes = table.Get(tag);
  if (table.Has(tag) && bytes.size() == 4) {
    field = static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
            static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
  }
}

class RecordWriter {
 public:
  explicit RecordWriter(MessageBuffer& buffer) : buffer_(buffer) {}

  void Number(Tag tag, std::uint32_t number) { Value(tag, LittleEndian32(number)); }
  void Text(Tag tag, const std::string& text) { Value(tag, AsBytes(text)); }

  // False if the record has not found room; the buffer is then of no use.
  bool End() {
    if (!complete_ || buffer_.Free() == 0) {
      return false;
    }
    *buffer_.WriteCursor() = kEndMark;
    buffer_.AdvanceWrite(1);
    return true;
  }

 private:
  void Value(Tag tag, Bytes value) {
    const int written = complete_ ? WriteAttribute(buffer_.FreeBytes(), tag, value) : kNoRoom;
    complete_ = written >= 0;
    if (complete_) {
      buffer_.AdvanceWrite(static_cast<std::uint32_t>(written));
    }
  }

  MessageBuffer& buffer_;
  bool complete_ = true;
};

bool EncodeRecord(const StoredRecord& record, MessageBuffer& buffer) {
  buffer.Reset();
  RecordWriter writer(buffer);
  writer.Number(kDirection, record.direction);
  writer.Text(kRemotePath, record.paths.remotePath);
  writer.Text(kLocalPath, record.paths.localPath);
  writer.Number(kTotalBytes, record.totalBytes);
  writer.Number(kDoneBytes, record.doneBytes);
  writer.Number(kRemoteTime, record.remoteTime);
  writer.Number(kRecordId, record.recordId);
  writer.Number(kParentRecordId, record.parentRecordId);
  writer.Number(kIsFolder, record.isFolder);
  writer.Number(kState, static_cast<std::uint32_t>(record.state));
  return writer.End();
}

StoredRecord RecordOf(const AttributeTable& table) {
  StoredRecord record;
  std::uint32_t state = 0;
  record.paths.remotePath = table.Text(kRemotePath);
  record.paths.localPath = table.Text(kLocalPath);
  TakeNumber(table, kDirection, record.direction);
  TakeNumber(table, kTotalBytes, record.totalBytes);
  TakeNumber(table, kDoneBytes, record.doneBytes);
  TakeNumber(table, kRemoteTime, record.remoteTime);
  TakeNumber(table, kRecordId, record.recordId);
  TakeNumber(table, kParentRecordId, record.parentRecordId);
  TakeNumber(table, kIsFolder, record.isFolder);
  TakeNumber(table, kState, state);
  record.state = static_cast<TransferState>(state);
  return record;
}

// Decodes the list at the front. Its length with its end mark, or 0 if there is no whole list.
std::size_t DecodeWholeList(AttributeTable& table, Bytes source) {
  const int result = DecodeAttributes(table, source);
  if (result < 1) {
    return 0;
  }
  const auto length = static_cast<std::size_t>(result);
  if (length < source.size()) {
    return length;  // only an end mark stops the decoder early
  }
  if (source.back() != kEndMark) {
    return 0;
  }
  // A value may end in the mark's byte. It is the mark if the list decodes without it, too.
  AttributeTable shorter;
  return DecodeAttributes(shorter, source.first(length - 1)) == result - 1 ? length : 0;
}

// Moves all whole records of the buffer to `records`. False when no more are to be read.
bool TakeRecords(MessageBuffer& buffer, RecordList& records) {
  AttributeTable table;
  while (const std::size_t length = DecodeWholeList(table, buffer.UnreadBytes())) {
    if (records.size() == kMostRecords) {
      return false;
    }
    records.push_back(std::make_shared<TransferRecord>(RecordOf(table)));
    buffer.AdvanceRead(static_cast<std::uint32_t>(length));
  }
  buffer.CompactUnread();
  return true;
}

}  // namespace

void SaveTaskList(const RecordList& records, const std::string& path) {
  DeleteLocalFile(path);
  const UniqueFd file = OpenLocalFile(path, OpenMode::ReadWrite, FileDisposition::OpenAlways);
  // A file that could not be deleted must not show its old records behind the new ones.
  if (!file || ftruncate(file.Get(), 0) != 0) {
    return;
  }
  MessageBuffer buffer(kTaskListCapacity);
  for (const auto& record : records) {
    const StoredRecord stored = record->Store();
    if (stored.state == TransferState::Finished || !EncodeRecord(stored, buffer)) {
      continue;
    }
    // A record cut short by a full disk must stay the last one.
    if (WriteLocalFile(file, buffer.UnreadBytes()) != static_cast<int>(buffer.Unread())) {
      return;
    }
  }
}

RecordList LoadTaskList(const std::string& path) {
  RecordList records;
  const UniqueFd file = OpenLocalFile(path, OpenMode::Read, FileDisposition::OpenAlways);
  if (!file) {
    return records;
  }
  MessageBuffer buffer(kTaskListCapacity);
  while (buffer.Free() > 0) {
    const int bytes = ReadLocalFile(file, buffer.FreeBytes());
    if (bytes < 1) {
      break;
    }
    buffer.AdvanceWrite(static_cast<std::uint32_t>(bytes));
    if (!TakeRecords(buffer, records)) {
      break;
    }
  }
  return records;
}

}  // namespace updown
