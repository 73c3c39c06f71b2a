#include "service/listing.h"

#include <cerrno>

#include "service/dialect.h"
#include "service/exchange.h"
#include "service/nested_list.h"
#include "wire/tags.h"

namespace updown {

namespace {

std::optional<DirectoryEntry> DecodeEntry(Bytes list) {
  AttributeTable table;
  if (DecodeAttributes(table, list) < 0 || !table.Has(tag::kName)) {
    return std::nullopt;
  }
  const auto field17 = Number32(table, tag::kField17);
  const auto field18 = Number32(table, tag::kField18);
  const auto time = Number32(table, tag::kTime);
  const auto size = Number32(table, tag::kSize);
  const auto field21 = Number16(table, tag::kField21);
  const auto type = Number16(table, tag::kType);
  if (!field17 || !field18 || !time || !size || !field21 || !type) {
    return std::nullopt;
  }
  return DirectoryEntry{.name = std::string(table.Text(tag::kName)),
                        .field17 = *field17,
                        .field18 = *field18,
                        .modificationTime = *time,
                        .size = *size,
                        .field21 = *field21,
                        .type = *type};
}

// Reads entries behind the reply until the listing ends.
int ReadEntries(Connection& connection, MessageBuffer& buffer, DirectoryList& entries) {
  std::size_t used = 0;
  for (;;) {
    TakenEntry taken = TakeEntry(buffer.UnreadBytes());
    switch (taken.kind) {
      case EntryKind::Entry:
        used += sizeof(DirectoryEntry) + taken.entry->name.size();
        if (used > kMostListingBytes) {
          return connection.Fail(EMSGSIZE);
        }
        entries.push_back(*std::move(taken.entry));
        buffer.AdvanceRead(taken.consumed);
        break;
      case EntryKind::End:
        return result::kOk;
      case EntryKind::Bad:
        return result::kNotDecodable;
      case EntryKind::Incomplete:
        buffer.CompactUnread();
        if (const int received = ReceiveMore(connection, buffer); received != result::kOk) {
          return received;
        }
        break;
    }
  }
}

}  // namespace

TakenEntry TakeEntry(Bytes bytes) {
  TakenEntry taken;
  if (bytes.size() < kFrameLengthSize) {
    return taken;
  }
  const std::size_t length = ReadBigEndian32(bytes.data());
  if (length > kExchangeCapacity - kFrameLengthSize) {
    taken.kind = EntryKind::Bad;
    return taken;
  }
  if (bytes.size() - kFrameLengthSize < length) {
    return taken;
  }
  taken.consumed = static_cast<std::uint32_t>(kFrameLengthSize + length);
  if (length == 0) {
    taken.kind = EntryKind::End;
    return taken;
  }
  taken.entry = DecodeEntry(bytes.subspan(kFrameLengthSize, length));
  taken.kind = taken.entry ? EntryKind::Entry : EntryKind::Bad;
  return taken;
}

FolderListing ListFolder(Dialect dialect, Connection& connection, std::string_view path) {
  FolderListing listing;
  MessageBuffer buffer(kExchangeCapacity);
  ServiceReply reply;
  const int result = Exchange(dialect, connection, message::kList, AsBytes(path), buffer, reply);
  if (dialect == Dialect::First) {
    listing.error = result;
  } else if (result < 0) {
    listing.error = result::kConnection;
  } else if (ReplyFailed(reply)) {
    listing.error = result::kAccessRefused;
  }
  if (listing.error == result::kOk) {
    listing.error = ReadEntries(connection, buffer, listing.entries);
  }
  if (listing.error != result::kOk) {
    listing.entries.clear();
  }
  return listing;
}

}  // namespace updown
