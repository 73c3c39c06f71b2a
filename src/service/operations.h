#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "localdata/transfer_record.h"
#include "platform/chain.h"
#include "service/result_codes.h"

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
  std::unique_ptr<DirectoryEntry> next;
};
using DirectoryList = Chain<DirectoryEntry>;

// `chain` may hold entries although `error` is set (a listing that broke off). The entries of one
// listing are bounded: see kMostListingBytes in listing.h.
struct FolderListing {
  DirectoryList chain;
  int error = 0;
};

// Told after each block on the transferring thread.
class TransferProgress {
 public:
  virtual ~TransferProgress() = default;
  virtual void BlockDone(TransferRecord& record) = 0;
};

// The nine operations of the file service in one dialect. Sockets are blocking and joined to the
// service; strings are UTF-8; results are those of result_codes.h.
struct ServiceOps {
  // NOLINTBEGIN(readability-identifier-naming): called as functions are
  int (*OpenSession)(int socket, std::string& sessid, std::string_view appid, std::uint32_t code);
  int (*Authenticate)(int socket, std::string_view appid, std::string_view userName,
                      std::string_view password, std::string_view realm);
  FolderListing (*ListFolder)(int socket, std::string_view path);
  int (*CreateFolder)(int socket, std::string_view path);
  int (*RemoveFolder)(int socket, std::string_view path);
  int (*RemoveFile)(int socket, std::string_view path);
  int (*RenameEntry)(int socket, std::string_view newPath, std::string_view oldPath);
  int (*DownloadFile)(int socket, const std::string& sessid, TransferRecord& record,
                      TransferProgress* progress);
  int (*UploadFile)(int socket, const std::string& sessid, TransferRecord& record,
                    TransferProgress* progress);
  // NOLINTEND(readability-identifier-naming)
};

const ServiceOps& FirstDialect();
const ServiceOps& SecondDialect();

// The file service as the rest of the program sees it: one dialect, settled by the first session
// request of the process and kept until its end. Made once, at start; tests make their own.
//
// NegotiateSession runs on the main thread. Ops() may be read by any thread at any time; all nine
// operations change over at once.
class FileService {
 public:
  const ServiceOps& Ops() const { return *ops_.load(std::memory_order_acquire); }

  // Slot 0 for the session connection. The first call of all tells the dialect by the reply's
  // version attribute; the caller sees kOk, kAuthentication or another failure, never kNoVersion
  // from that first call.
  int NegotiateSession(int socket, std::string& sessid, std::string_view appid, std::uint32_t code);

 private:
  std::atomic<const ServiceOps*> ops_{&FirstDialect()};
  bool negotiated_ = false;
};

}  // namespace updown
