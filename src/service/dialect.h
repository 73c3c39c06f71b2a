#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "service/messages.h"
#include "service/operations.h"

namespace updown {

// The two dialects of the file service share frames, message codes and the steps of every
// operation; they differ in how a reply says yes or no and in how a session is granted. The
// operations are therefore written once, with the dialect as their first argument, and
// dialect.cpp makes the two tables of them.
enum class Dialect { First, Second };

// One exchange of the dialect. 0 or a result code; in the second dialect the reply is not judged.
int Exchange(Dialect dialect, Connection& connection, std::uint32_t code, Bytes data,
             MessageBuffer& buffer, ServiceReply& reply, std::size_t most = kExchangeCapacity);

// An exchange whose reply carries no more than yes or no.
int ExchangeStatus(Dialect dialect, Connection& connection, std::uint32_t code, Bytes data,
                   MessageBuffer& buffer);

int OpenSession(Dialect dialect, Connection& connection, std::string& sessid,
                std::string_view appid, std::uint32_t code);
int Authenticate(Dialect dialect, Connection& connection, std::string_view appid,
                 std::string_view userName, std::string_view password, std::string_view realm);
FolderListing ListFolder(Dialect dialect, Connection& connection, std::string_view path);
int SendPath(Dialect dialect, Connection& connection, std::uint32_t code, std::string_view path);
int RenameEntry(Dialect dialect, Connection& connection, std::string_view newPath,
                std::string_view oldPath);
TransferResult DownloadFile(Dialect dialect, Connection& connection, const std::string& sessid,
                            TransferRecord& record, TransferProgress* progress);
TransferResult UploadFile(Dialect dialect, Connection& connection, const std::string& sessid,
                          TransferRecord& record, TransferProgress* progress);

}  // namespace updown
