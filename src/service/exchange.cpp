#include "service/exchange.h"

#include <algorithm>
#include <cerrno>

#include "platform/debug_stream.h"
#include "service/messages.h"
#include "service/result_codes.h"

namespace updown {

namespace {

// False once a frame's length has come that leads beyond the buffer's end.
bool FrameFits(const MessageBuffer& buffer) {
  const Bytes bytes = buffer.UnreadBytes();
  return bytes.size() < kFrameLengthSize ||
         ReadBigEndian32(bytes.data()) <= buffer.Unread() + buffer.Free() - kFrameLengthSize;
}

}  // namespace

int ReceiveMore(Connection& connection, MessageBuffer& buffer, std::size_t most) {
  if (buffer.Free() == 0) {
    return connection.Fail(EMSGSIZE);
  }
  const auto space = buffer.FreeBytes().first(std::min<std::size_t>(most, buffer.Free()));
  std::size_t received = 0;
  const int result = connection.Receive(space, received);
  buffer.AdvanceWrite(static_cast<std::uint32_t>(received));
  return result;
}

int SendBuffered(Connection& connection, MessageBuffer& buffer) {
  while (buffer.Unread() > 0) {
    std::size_t sent = 0;
    const int result = connection.Send(buffer.UnreadBytes(), sent);
    DebugLine("send message. return %d\n", result == result::kOk ? static_cast<int>(sent) : -1);
    if (result != result::kOk) {
      return result;
    }
    buffer.AdvanceRead(static_cast<std::uint32_t>(sent));
  }
  return result::kOk;
}

int ReceiveReply(Connection& connection, MessageBuffer& buffer, ServiceReply& reply,
                 std::size_t most) {
  int size = 0;
  while (size == 0) {
    const int received = ReceiveMore(connection, buffer, most);
    if (received != result::kOk) {
      return received;
    }
    if (!FrameFits(buffer)) {
      return connection.Fail(EMSGSIZE);
    }
    size = DecodeMessage(buffer.UnreadBytes(), reply);
  }
  if (size < 0) {
    return result::kNotDecodable;
  }
  const std::string_view data = AsText(reply.data);
  DebugLine(
      "decode message. return %d\nmessage code: %x\nmessage data length: %d\n"
      "message data: %.*s\n",
      size, reply.code, PrintLength(data), PrintLength(data), data.data());
  buffer.AdvanceRead(static_cast<std::uint32_t>(size));
  return result::kOk;
}

int ExchangeRaw(Connection& connection, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                ServiceReply& reply, std::size_t most) {
  const int size = EncodeMessage(buffer.FreeBytes(), code, data);
  DebugLine("encode message. return %d\n", size);
  if (size < 0) {
    return result::kNotEncodable;
  }
  buffer.AdvanceWrite(static_cast<std::uint32_t>(size));
  connection.BeginRequest();
  const int sent = SendBuffered(connection, buffer);
  if (sent != result::kOk) {
    return sent;
  }
  buffer.Reset();
  return ReceiveReply(connection, buffer, reply, most);
}

int ExchangeChecked(Connection& connection, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                    ServiceReply& reply, std::size_t most) {
  constexpr std::uint8_t kHighestVersion = 1;
  constexpr std::uint8_t kNoVersionByte = 255;
  const int result = ExchangeRaw(connection, code, data, buffer, reply, most);
  if (result != result::kOk) {
    return result;
  }
  if (reply.VersionByte() == kNoVersionByte) {
    return result::kNoVersion;
  }
  if (reply.VersionByte() > kHighestVersion) {
    return result::kVersionTooHigh;
  }
  return ResultOfCode(reply.code);
}

int ResultOfCode(std::uint32_t code) {
  return code == reply::kSuccess ? result::kOk : static_cast<int>(reply::kCodeBase - code);
}

}  // namespace updown
