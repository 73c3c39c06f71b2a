#include "localdata/tasklist.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <utility>

#include "localdata/files.h"
#include "platform/file_replacement.h"
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
  kResultCode = 11,
  kSystemError = 12,
};

// Far beyond any real list; keeps a file of nothing but end marks from filling the memory.
constexpr std::size_t kMostRecords = 100000;

constexpr mode_t kTaskListMode = 0600;

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

enum class Reason { Stored, LeftOut };

bool EncodeRecord(const StoredRecord& record, Reason reason, MessageBuffer& buffer) {
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
  if (reason == Reason::Stored) {
    writer.Number(kResultCode, record.resultCode);
    writer.Number(kSystemError, record.systemError);
  }
  return writer.End();
}

// A record that is too long with its reason goes without it.
bool EncodeRecord(const StoredRecord& record, MessageBuffer& buffer) {
  const bool failed = record.state == TransferState::Failed;
  return (failed && EncodeRecord(record, Reason::Stored, buffer)) ||
         EncodeRecord(record, Reason::LeftOut, buffer);
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
  TakeNumber(table, kResultCode, record.resultCode);
  TakeNumber(table, kSystemError, record.systemError);
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

// Takes all whole records out of the buffer. False when no more are to be read.
bool TakeRecords(MessageBuffer& buffer, std::vector<StoredRecord>& records) {
  AttributeTable table;
  while (const std::size_t length = DecodeWholeList(table, buffer.UnreadBytes())) {
    if (records.size() == kMostRecords) {
      return false;
    }
    if (StoredRecord record = RecordOf(table); !record.paths.remotePath.empty()) {
      records.push_back(std::move(record));
    }
    buffer.AdvanceRead(static_cast<std::uint32_t>(length));
  }
  buffer.CompactUnread();
  return true;
}

// False if there may be more in the file than the records.
bool ReadWholeList(const std::string& path, std::vector<StoredRecord>& records) {
  const UniqueFd file =
      OpenFile(path, FileAccess::Read, FileDisposition::OpenAlways, kTaskListMode);
  MessageBuffer buffer(kTaskListCapacity);
  while (file && buffer.Free() > 0) {
    const int bytes = ReadLocalFile(file, buffer.FreeBytes());
    if (bytes < 1) {
      return bytes == 0 && buffer.Unread() == 0;
    }
    buffer.AdvanceWrite(static_cast<std::uint32_t>(bytes));
    if (!TakeRecords(buffer, records)) {
      break;
    }
  }
  return false;
}

// A second name, so that the list stays in its place until the next save. A file system without
// such names gives it the new name alone.
void KeepBeside(const std::string& path) {
  const std::string kept = path + ".bad";
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) {
    return;
  }
  unlink(kept.c_str());
  if (link(path.c_str(), kept.c_str()) != 0) {
    std::rename(path.c_str(), kept.c_str());
  }
}

}  // namespace

int SaveTaskList(std::span<const StoredRecord> records, const std::string& path) {
  FileReplacement file(path);
  MessageBuffer buffer(kTaskListCapacity);
  for (const StoredRecord& record : records) {
    if (record.state != TransferState::Finished && EncodeRecord(record, buffer)) {
      file.Write(buffer.UnreadBytes());
    }
  }
  return file.Commit();
}

std::vector<StoredRecord> LoadTaskList(const std::string& path) {
  std::vector<StoredRecord> records;
  if (!ReadWholeList(path, records)) {
    KeepBeside(path);
  }
  return records;
}

}  // namespace updown
