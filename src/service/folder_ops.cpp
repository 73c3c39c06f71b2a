#include "platform/debug_stream.h"
#include "service/dialect.h"
#include "service/nested_list.h"
#include "wire/tags.h"

namespace updown {

int Exchange(Dialect dialect, Connection& connection, std::uint32_t code, Bytes data,
             MessageBuffer& buffer, ServiceReply& reply, std::size_t most) {
  return dialect == Dialect::First ? ExchangeChecked(connection, code, data, buffer, reply, most)
                                   : ExchangeRaw(connection, code, data, buffer, reply, most);
}

int ExchangeStatus(Dialect dialect, Connection& connection, std::uint32_t code, Bytes data,
                   MessageBuffer& buffer) {
  ServiceReply reply;
  const int result = Exchange(dialect, connection, code, data, buffer, reply);
  if (dialect == Dialect::First || result < 0) {
    return result;
  }
  return ReplyFailed(reply) ? result::kAccessRefused : result::kOk;
}

int SendPath(Dialect dialect, Connection& connection, std::uint32_t code, std::string_view path) {
  MessageBuffer buffer(kExchangeCapacity);
  return ExchangeStatus(dialect, connection, code, AsBytes(path), buffer);
}

int RenameEntry(Dialect dialect, Connection& connection, std::string_view newPath,
                std::string_view oldPath) {
  AttributeTable table;
  table.Set(tag::kOldPath, oldPath);
  table.Set(tag::kNewPath, newPath);
  const NestedList list(table);
  DebugLine("gen authenticate string return %d\n", list.Size());
  if (!list.Fits()) {
    return result::kNotEncodable;
  }
  MessageBuffer buffer(kExchangeCapacity);
  return ExchangeStatus(dialect, connection, message::kRename, list.Data(), buffer);
}

}  // namespace updown
