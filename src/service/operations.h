#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "localdata/transfer_record.h"
#include "service/connection.h"
#include "service/result_codes.h"
#include "service/transfer_result.h"

namespace updown {

inline constexpr std::uint16_t kEntryFolder = 7;
inline constexpr std::uint16_t kEntryFile = 8;

// One entry of a folder listing, in the order received, "." and ".." included.
struct DirectoryEntry {
  std::string name;  // UTF-8 as the service sent it: check it before building a path from it
  std::uint32_t field17 = 0;
  std::uint32_t field18 = 0;
  std::uint32_t modificationTime = 0;  // seconds
  std::uint32_t size = 0;              // bytes
  std::uint16_t field21 = 0;
  std::uint16_t type = 0;  // kEntryFolder, kEntryFile
};
using DirectoryList = std::vector<DirectoryEntry>;

// Whole, or an error and no entries. The entries of one listing are bounded: see kMostListingBytes
// in listing.h.
struct FolderListing {
  DirectoryList entries;
  int error = 0;
};

// Told about each block on the transferring thread.
class TransferProgress {
 public:
  virtual ~TransferProgress() = default;
  // Before each request of a block; may wait, for a pace. False ends the transfer there, with
  // result 0 and the state as it is.
  virtual bool BeforeBlock(TransferRecord& /*record*/) { return true; }
  // At once behind each block.
  virtual void BlockDone(TransferRecord& record) = 0;
  // A failure. True leaves the record's state as it is, because the caller tries again; otherwise
  // the record becomes Failed, unless it was Stopped.
  virtual bool TriesAgain(const TransferResult& /*failure*/) { return false; }
};

// The operations of the file service in one dialect. Strings are UTF-8; results are those of
// result_codes.h. Each waits within its connection's limits; after result::kConnection and
// result::kNotDecodable the connection is closed, since whatever still comes on it would answer
// nothing.
struct ServiceOps {
  // NOLINTBEGIN(readability-identifier-naming): called as functions are
  int (*OpenSession)(Connection& connection, std::string& sessid, std::string_view appid,
                     std::uint32_t code);
  int (*Authenticate)(Connection& connection, std::string_view appid, std::string_view userName,
                      std::string_view password, std::string_view realm);
  FolderListing (*ListFolder)(Connection& connection, std::string_view path);
  int (*CreateFolder)(Connection& connection, std::string_view path);
  int (*RemoveFolder)(Connection& connection, std::string_view path);
  int (*RemoveFile)(Connection& connection, std::string_view path);
  int (*RenameEntry)(Connection& connection, std::string_view newPath, std::string_view oldPath);
  TransferResult (*DownloadFile)(Connection& connection, const std::string& sessid,
                                 TransferRecord& record, TransferProgress* progress);
  TransferResult (*UploadFile)(Connection& connection, const std::string& sessid,
                               TransferRecord& record, TransferProgress* progress);
  // NOLINTEND(readability-identifier-naming)
};

const ServiceOps& FirstDialect();
const ServiceOps& SecondDialect();

// The file service as the rest of the program sees it: one dialect, settled by the first session
// request of the process and kept until its end. Made once, at start; tests make their own.
//
// NegotiateSession runs on the session's thread. Ops() may be read by any thread at any time; all
// operations change over at once.
class FileService {
 public:
  const ServiceOps& Ops() const { return *ops_.load(std::memory_order_acquire); }

  // OpenSession for the session connection. The first reply of all that can be decoded tells the
  // dialect by its version attribute; the caller sees kOk, kAuthentication or another failure,
  // never kNoVersion from that one.
  int NegotiateSession(Connection& connection, std::string& sessid, std::string_view appid,
                       std::uint32_t code);

 private:
  std::atomic<const ServiceOps*> ops_{&FirstDialect()};
  bool negotiated_ = false;
};

}  // namespace updown
