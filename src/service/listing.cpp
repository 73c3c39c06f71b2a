#include "service/listing.h"

#include <sys/socket.h>

#include "service/dialect.h"
#include "service/exchange.h"
#include "service/nested_list.h"
#include "wire/tags.h"

namespace updown {

namespace {

constexpr std::size_t kEntryLengthSize = 4;

std::unique_ptr<DirectoryEntry> DecodeEntry(Bytes list) {
  AttributeTable table;
  if (DecodeAttributes(table, list) < 0 || !table.Has(tag::kName)) {
    return nullptr;
  }
  const auto field17 = Number32(table, tag::kField17);
  const auto field18 = Number32(table, tag::kField18);
  const auto time = Number32(table, tag::kTime);
  const auto size = Number32(table, tag::kSize);
  const auto field21 = Number16(table, tag::kField21);
  const auto type = Number16(table, tag::kType);
  if (!field17 || !field18 || !time || !size || !field21 || !type) {
    return nullptr;
  }
  auto entry = std::make_unique<DirectoryEntry>();
  entry->name = table.Text(tag::kName);
  entry->field17 = *field17;
  entry->field18 = *field18;
  entry->modificationTime = *time;
  entry->size = *size;
  entry->field21 = *field21;
  entry->type = *type;
  return entry;
}

// Reads entries behind the reply until the listing ends. Bad bytes end it like the end frame: what
// came before them is a usable listing.
int ReadEntries(int socket, MessageBuffer& buffer, DirectoryList& chain) {
  std::size_t used = 0;
  for (;;) {
    TakenEntry taken = TakeEntry(buffer.UnreadBytes());
    switch (taken.kind) {
      case EntryKind::Entry:
        used += sizeof(DirectoryEntry) + taken.entry->name.size();
        if (used > kMostListingBytes) {
          chain.Clear();
          shutdown(socket, SHUT_RDWR);
          return result::kConnection;
        }
        chain.Append(std::move(taken.entry));
        buffer.AdvanceRead(taken.consumed);
        break;
      case EntryKind::End:
      case EntryKind::Bad:
        return result::kOk;
      case EntryKind::Incomplete:
        buffer.CompactUnread();
        if (const int received = ReceiveMore(socket, buffer); received != result::kOk) {
          return received;
        }
        break;
    }
  }
}

}  // namespace

TakenEntry TakeEntry(Bytes bytes) {
  TakenEntry taken;
  if (bytes.size() < kEntryLengthSize) {
    return taken;
  }
  const std::size_t length = ReadBigEndian32(bytes.data());
  if (bytes.size() - kEntryLengthSize < length) {
    return taken;
  }
  taken.consumed = static_cast<std::uint32_t>(kEntryLengthSize + length);
  if (length == 0) {
    taken.kind = EntryKind::End;
    return taken;
  }
  taken.entry = DecodeEntry(bytes.subspan(kEntryLengthSize, length));
  taken.kind = taken.entry ? EntryKind::Entry : EntryKind::Bad;
  return taken;
}

FolderListing ListFolder(Dialect dialect, int socket, std::string_view path) {
  FolderListing listing;
  MessageBuffer buffer(kExchangeCapacity);
  ServiceReply reply;
  const int result = Exchange(dialect, socket, message::kList, AsBytes(path), buffer, reply);
  if (dialect == Dialect::First) {
    listing.error = result;
  } else if (result < 0) {
    listing.error = result::kConnection;
  } else if (ReplyFailed(reply)) {
    listing.error = result::kAccessRefused;
  }
  if (listing.error == result::kOk) {
    listing.error = ReadEntries(socket, buffer, listing.chain);
  }
  return listing;
}

}  // namespace updown
