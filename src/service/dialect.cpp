#include "service/dialect.h"

#include "service/nested_list.h"

namespace updown {

namespace {

int CodeOf(int code) { return code; }
int CodeOf(const FolderListing& listing) { return listing.error; }
int CodeOf(const TransferResult& result) { return result.code; }

// An operation in one dialect. It closes a connection whose place in the stream is unknown.
template <Dialect kDialect, auto kOperation>
struct Bound;

template <Dialect kDialect, typename Result, typename... Arguments,
          Result (*kOperation)(Dialect, Connection&, Arguments...)>
struct Bound<kDialect, kOperation> {
  static Result Call(Connection& connection, Arguments... arguments) {
    Result result = kOperation(kDialect, connection, arguments...);
    if (CodeOf(result) == result::kConnection || CodeOf(result) == result::kNotDecodable) {
      connection.Close();
    }
    return result;
  }
};

template <std::uint32_t kCode>
int PathOperation(Dialect dialect, Connection& connection, std::string_view path) {
  return SendPath(dialect, connection, kCode, path);
}

template <Dialect kDialect>
constexpr ServiceOps kOps = {
    .OpenSession = Bound<kDialect, &OpenSession>::Call,
    .Authenticate = Bound<kDialect, &Authenticate>::Call,
    .ListFolder = Bound<kDialect, &ListFolder>::Call,
    .CreateFolder = Bound<kDialect, &PathOperation<message::kCreateFolder>>::Call,
    .RemoveFolder = Bound<kDialect, &PathOperation<message::kRemoveFolder>>::Call,
    .RemoveFile = Bound<kDialect, &PathOperation<message::kRemoveFile>>::Call,
    .RenameEntry = Bound<kDialect, &RenameEntry>::Call,
    .DownloadFile = Bound<kDialect, &DownloadFile>::Call,
    .UploadFile = Bound<kDialect, &UploadFile>::Call,
};

// Whether a result of OpenSession comes from a reply.
bool Answered(int result) {
  return result != result::kConnection && result != result::kNotEncodable &&
         result != result::kNotDecodable;
}

}  // namespace

const ServiceOps& FirstDialect() { return kOps<Dialect::First>; }
const ServiceOps& SecondDialect() { return kOps<Dialect::Second>; }

int FileService::NegotiateSession(Connection& connection, std::string& sessid,
                                  std::string_view appid, std::uint32_t code) {
  const int result = Ops().OpenSession(connection, sessid, appid, code);
  if (negotiated_) {
    return result;
  }
  negotiated_ = Answered(result);
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
