#include "service/dialect.h"

#include "service/nested_list.h"

namespace updown {

namespace {

template <Dialect kDialect, std::uint32_t kCode>
int PathOperation(int socket, std::string_view path) {
  return SendPath(kDialect, socket, kCode, path);
}

template <Dialect kDialect>
constexpr ServiceOps kOps = {
    .OpenSession =
        [](int socket, std::string& sessid, std::string_view appid, std::uint32_t code) {
          return OpenSession(kDialect, socket, sessid, appid, code);
        },
    .Authenticate =
        [](int socket, std::string_view appid, std::string_view userName, std::string_view password,
           std::string_view realm) {
          return Authenticate(kDialect, socket, appid, userName, password, realm);
        },
    .ListFolder = [](int socket,
                     std::string_view path) { return ListFolder(kDialect, socket, path); },
    .CreateFolder = PathOperation<kDialect, message::kCreateFolder>,
    .RemoveFolder = PathOperation<kDialect, message::kRemoveFolder>,
    .RemoveFile = PathOperation<kDialect, message::kRemoveFile>,
    .RenameEntry =
        [](int socket, std::string_view newPath, std::string_view oldPath) {
          return RenameEntry(kDialect, socket, newPath, oldPath);
        },
    .DownloadFile =
        [](int socket, const std::string& sessid, TransferRecord& record,
           TransferProgress* progress) {
          return DownloadFile(kDialect, socket, sessid, record, progress);
        },
    .UploadFile =
        [](int socket, const std::string& sessid, TransferRecord& record,
           TransferProgress* progress) {
          return UploadFile(kDialect, socket, sessid, record, progress);
        },
};

}  // namespace

const ServiceOps& FirstDialect() { return kOps<Dialect::First>; }
const ServiceOps& SecondDialect() { return kOps<Dialect::Second>; }

int FileService::NegotiateSession(int socket, std::string& sessid, std::string_view appid,
                                  std::uint32_t code) {
  const int result = Ops().OpenSession(socket, sessid, appid, code);
  if (negotiated_) {
    return result;
  }
  negotiated_ = true;
  if (result != result::kNoVersion) {
    return result;
  }
  ops_.store(&SecondDialect(), std::memory_order_release);
  // The first dialect's OpenSession has left the reply's data in `sessid`.
  SessionGrant grant = DecodeSessionGrant(AsBytes(sessid));
  if (!grant.decodable) {
    return result::kAuthentication;
  }
  sessid = std::move(grant.sessid);
  return grant.Authenticated() ? result::kOk : result::kAuthentication;
}

}  // namespace updown
