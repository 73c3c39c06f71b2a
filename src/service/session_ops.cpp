#include <optional>

#include "platform/debug_stream.h"
#include "service/dialect.h"
#include "service/exchange.h"
#include "service/nested_list.h"
#include "wire/tags.h"

namespace updown {

namespace {

constexpr std::size_t kLongestSessid = 1023;

NestedList SessionList(std::string_view appid, std::string_view sessid) {
  AttributeTable table;
  table.Set(tag::kAppId, appid);
  table.Set(tag::kSessId, sessid);
  return NestedList(table);
}

// First dialect: the reply's data to 4352 is the sessid, granted or not.
int TakeSessid(int result, std::uint32_t code, const ServiceReply& reply, std::string& sessid) {
  if (code == message::kOpenSession &&
      (result == result::kOk || result == result::kAuthentication ||
       result == result::kNoVersion)) {
    sessid = AsText(reply.data);
  }
  return result;
}

int TakeGrant(const ServiceReply& reply, std::string& sessid) {
  const SessionGrant grant = DecodeSessionGrant(reply.data);
  if (!grant.sessid.empty()) {
    sessid = grant.sessid;
  }
  DebugLine("appid = %.*s, sessid = %.*s\n", PrintLength(grant.appid), grant.appid.data(),
            PrintLength(grant.sessid), grant.sessid.data());
  if (!grant.decodable) {
    sessid = AsText(reply.data);
    return result::kAuthentication;
  }
  return grant.Authenticated() ? result::kOk : result::kAuthentication;
}

// Second dialect: what the reply's code says, which the exchange has not looked at.
int JudgeSessionReply(std::uint32_t code, const ServiceReply& reply, std::string& sessid) {
  if (code == message::kAttachSession) {
    return reply.code == reply::kAttached ? result::kOk : result::kAuthentication;
  }
  switch (reply.code) {
    case reply::kSessionGranted:
      return TakeGrant(reply, sessid);
    case reply::kLoginNeeded:
      return result::kAuthentication;
    case reply::kBusy:
      return result::kBusy;
    default:
      return result::kNotDecodable;
  }
}

}  // namespace

int OpenSession(Dialect dialect, Connection& connection, std::string& sessid,
                std::string_view appid, std::uint32_t code) {
  const bool rawSessid = dialect == Dialect::Second && code == message::kAttachSession;
  const NestedList list = SessionList(appid, sessid);
  DebugLine("appid = %.*s\n", PrintLength(appid), appid.data());
  if (rawSessid ? sessid.size() > kLongestSessid : !list.Fits()) {
    return result::kNotEncodable;
  }
  const Bytes data = rawSessid ? AsBytes(sessid) : list.IsEmpty() ? Bytes() : list.Data();

  MessageBuffer buffer(kExchangeCapacity);
  ServiceReply reply;
  const int result = Exchange(dialect, connection, code, data, buffer, reply);
  if (dialect == Dialect::First) {
    return TakeSessid(result, code, reply, sessid);
  }
  return result < 0 ? result : JudgeSessionReply(code, reply, sessid);
}

int Authenticate(Dialect dialect, Connection& connection, std::string_view appid,
                 std::string_view userName, std::string_view password, std::string_view realm) {
  AttributeTable table;
  table.Set(tag::kUserName, userName);
  table.Set(tag::kPassword, password);
  table.Set(tag::kRealm, realm);
  table.Set(tag::kAppId, appid);
  const NestedList list(table);
  DebugLine("gen authenticate string return %d\n", list.Size());
  if (!list.Fits()) {
    return result::kNotEncodable;
  }
  MessageBuffer buffer(kExchangeCapacity);
  ServiceReply reply;
  const int result =
      Exchange(dialect, connection, message::kAuthenticate, list.Data(), buffer, reply);
  if (dialect == Dialect::First || result < 0) {
    return result;
  }
  return reply.code == message::kAuthenticate && !ReplyFailed(reply) ? result::kOk
                                                                     : result::kAuthentication;
}

}  // namespace updown
