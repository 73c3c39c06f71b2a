#include "peer/listing.h"

#include "peer/dialects.h"

namespace updown::peer {

namespace {

constexpr std::uint16_t kFolderType = 7;
constexpr std::uint16_t kFileType = 8;
constexpr std::size_t kEntriesBeforeCut = 2;

Bytes EncodeEntry(const FolderEntry& entry) {
  return Framed(ListWriter()
                    .PutText(tag::kName, entry.name)
                    .Put32(tag::kFirstTime, entry.time)
                    .Put32(tag::kSecondTime, entry.time)
                    .Put32(tag::kModified, entry.time)
                    .Put32(tag::kSize, entry.size)
                    .Put16(tag::kMode, entry.mode)
                    .Put16(tag::kType, entry.isFolder ? kFolderType : kFileType)
                    .End());
}

}  // namespace

Bytes EncodeListing(const std::vector<FolderEntry>& entries, const std::optional<Fault>& fault) {
  Bytes listing;
  std::size_t written = 0;
  for (const FolderEntry& entry : entries) {
    if (fault && fault->kind == Fault::Kind::CutListing && written == kEntriesBeforeCut) break;
    PutBytes(listing, EncodeEntry(entry));
    ++written;
  }
  if (fault && fault->kind == Fault::Kind::CutListing) return listing;
  if (fault && fault->kind == Fault::Kind::BadEntry) {
    PutBytes(listing, Framed(ListWriter().PutText(tag::kName, "bare").End()));
  }
  PutNumber32(listing, fault && fault->kind == Fault::Kind::LongEntry ? 0xFFFFFFFF : 0);
  return listing;
}

}  // namespace updown::peer
