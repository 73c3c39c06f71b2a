#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "service/operations.h"

// All that the service may say in one operation, which the first byte chooses with the dialect: the
// rest is what comes on the connection, and then its end.

namespace {

using namespace updown;

std::string LocalFile(const char* name) {
  return (std::filesystem::temp_directory_path() / name).string();
}

void Must(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void Download(const ServiceOps& ops, Connection& connection, std::size_t most) {
  const std::string path = LocalFile("got");
  std::filesystem::remove(path);
  TransferRecord record;
  record.SetPaths({"/file", path});
  const TransferResult result = ops.DownloadFile(connection, "session", record, nullptr);
  const std::uint32_t total = record.totalBytes;
  const std::uint32_t done = record.doneBytes;
  std::error_code missing;
  const std::uintmax_t size = std::filesystem::file_size(path, missing);
  Must(missing || (size <= most && size >= done));
  Must(done <= total);
  if (result.code == 0) {
    Must(record.state == TransferState::Finished && !missing && size == total && done == total);
  } else {
    Must(record.state == TransferState::Failed);
  }
}

void Upload(const ServiceOps& ops, Connection& connection) {
  const std::string path = LocalFile("sent");
  if (!std::filesystem::exists(path)) {
    std::ofstream(path) << std::string(40000, 'u');
  }
  TransferRecord record;
  record.SetPaths({"/file", path});
  ops.UploadFile(connection, "session", record, nullptr);
  Must(record.doneBytes <= 40000);
}

void Perform(const ServiceOps& ops, unsigned operation, Connection& connection, std::size_t most) {
  std::string sessid = "before";
  switch (operation) {
    case 0:
      ops.OpenSession(connection, sessid, "app", 4352);
      Must(sessid.size() <= std::max<std::size_t>(most, 6));
      return;
    case 1:
      ops.OpenSession(connection, sessid, "app", 4353);
      return;
    case 2:
      ops.Authenticate(connection, "app", "user", "password", "realm");
      return;
    case 3: {
      const FolderListing listing = ops.ListFolder(connection, "/");
      Must(listing.error == 0 || listing.entries.empty());
      return;
    }
    case 4:
      ops.RemoveFile(connection, "/file");
      return;
    case 5:
      ops.RenameEntry(connection, "/new", "/old");
      return;
    case 6: {
      FileService service;
      service.NegotiateSession(connection, sessid, "app", 4352);
      return;
    }
    case 7:
      Upload(ops, connection);
      return;
    default:
      Download(ops, connection, most);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::array<int, 2> ends{};
  Must(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0);
  // What is sent waits in the socket: it is less than that holds, both ways.
  const bool fits = send(ends[1], data + 1, size - 1, MSG_DONTWAIT | MSG_NOSIGNAL) ==
                    static_cast<ssize_t>(size - 1);
  shutdown(ends[1], SHUT_WR);
  {
    Connection connection;
    connection.Adopt(ends[0]);
    if (fits) {
      Perform(data[0] % 2 == 0 ? FirstDialect() : SecondDialect(), data[0] / 2 % 16, connection,
              size);
    }
  }
  close(ends[1]);
  return 0;
}
