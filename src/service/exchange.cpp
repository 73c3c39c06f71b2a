#include "service/exchange.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "platform/debug_stream.h"
#include "service/messages.h"
#include "service/result_codes.h"

namespace updown {

namespace {

ssize_t SendOnce(int socket, Bytes bytes) {
  ssize_t sent;
  do {
    sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent;
}

}  // namespace

int ReceiveMore(int socket, MessageBuffer& buffer) {
  const auto space = buffer.FreeBytes();
  if (space.empty()) {
    return result::kConnection;
  }
  for (;;) {
    const ssize_t received = recv(socket, space.data(), space.size(), 0);
    if (received > 0) {
      buffer.AdvanceWrite(static_cast<std::uint32_t>(received));
      return result::kOk;
    }
    if (received < 0 && errno == EINTR) {
      continue;
    }
    if (received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      pollfd waited{socket, POLLIN, 0};
      poll(&waited, 1, -1);
      continue;
    }
    return result::kConnection;
  }
}

int SendBuffered(int socket, MessageBuffer& buffer) {
  while (buffer.Unread() > 0) {
    const ssize_t sent = SendOnce(socket, buffer.UnreadBytes());
    DebugLine("send message. return %d\n", static_cast<int>(sent));
    if (sent <= 0) {
      return result::kConnection;
    }
    buffer.AdvanceRead(static_cast<std::uint32_t>(sent));
  }
  return result::kOk;
}

int ReceiveReply(int socket, MessageBuffer& buffer, ServiceReply& reply) {
  int size = 0;
  while (size == 0) {
    const int received = ReceiveMore(socket, buffer);
    if (received != result::kOk) {
      return received;
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

int ExchangeRaw(int socket, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                ServiceReply& reply) {
  const int size = EncodeMessage(buffer.FreeBytes(), code, data);
  DebugLine("encode message. return %d\n", size);
  if (size < 0) {
    return result::kNotEncodable;
  }
  buffer.AdvanceWrite(static_cast<std::uint32_t>(size));
  const int sent = SendBuffered(socket, buffer);
  if (sent != result::kOk) {
    return sent;
  }
  buffer.Reset();
  return ReceiveReply(socket, buffer, reply);
}

int ExchangeChecked(int socket, std::uint32_t code, Bytes data, MessageBuffer& buffer,
                    ServiceReply& reply) {
  constexpr std::uint8_t kHighestVersion = 1;
  constexpr std::uint8_t kNoVersionByte = 255;
  const int result = ExchangeRaw(socket, code, data, buffer, reply);
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
