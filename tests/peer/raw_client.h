#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <string>
#include <string_view>

#include "peer/stand_in.h"
#include "tests/support/temporary_folder.h"
#include "tests/wire/loopback.h"
#include "tests/wire/wire_bytes.h"

namespace updown::peer::test {

// All bytes are written out here, or read off, without the stand-in's own reader and writer.

using testing::Attribute;
using testing::Framed;
using testing::Number;
using testing::Wire;
using updown::test::ReadFile;
using updown::test::TemporaryFolder;
using updown::test::WriteFile;

inline std::string Request(std::uint32_t code, std::string_view data = {},
                           std::string_view behind = {}) {
  return Framed(Attribute(1, Number(code)) + (data.empty() ? "" : Attribute(2, data)) +
                Wire("0A 0004 01000000 FF") + std::string(behind));
}

inline std::string BlockList(std::uint32_t offset, std::uint32_t length, std::string_view path) {
  return Attribute(193, Number(offset)) + Attribute(194, Number(length)) + Attribute(195, path) +
         '\xFF';
}

inline std::uint32_t NumberIn(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes) {
    number = (number << 8) | static_cast<unsigned char>(byte);
  }
  return number;
}

struct ReplyFrame {
  std::uint32_t code = 0;
  std::string data;
  bool version = false;

  explicit ReplyFrame(std::string_view frame) {
    for (std::size_t at = 4; at + 3 <= frame.size() && frame[at] != '\xFF';) {
      const std::string_view value = frame.substr(at + 3, NumberIn(frame.substr(at + 1, 2)));
      if (frame[at] == 1) {
        code = NumberIn(value);
      } else if (frame[at] == 2) {
        data = value;
      } else if (frame[at] == 10) {
        version = value == Wire("01000000");
      }
      at += 3 + value.size();
    }
  }
};

// A socket to the stand-in. Every wait ends after ten seconds.
class RawClient {
 public:
  explicit RawClient(std::uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval bound{10, 0};
    setsockopt(fd_.Get(), SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = testing::Loopback();
    EXPECT_EQ(0, connect(fd_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  }

  void Send(std::string_view bytes) const {
    EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
              send(fd_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
  }
  // Shorter if the stand-in closes first.
  std::string Receive(std::size_t size) const {
    std::string bytes(size, '\0');
    const ssize_t count = size == 0 ? 0 : recv(fd_.Get(), bytes.data(), size, MSG_WAITALL);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
  }
  // Waits for the end, or for a byte.
  bool IsClosed() const {
    char byte = 0;
    const ssize_t count = recv(fd_.Get(), &byte, 1, 0);
    return count == 0 || (count < 0 && errno == ECONNRESET);
  }
  std::string ReceiveFrame() const {
    const std::string length = Receive(4);
    return length.size() < 4 ? length : length + Receive(NumberIn(length));
  }
  ReplyFrame Exchange(std::uint32_t code, std::string_view data = {},
                      std::string_view behind = {}) const {
    Send(Request(code, data, behind));
    return ReplyFrame(ReceiveFrame());
  }

 private:
  UniqueFd fd_;
};

// 134: joined without a word. Attributes 99 "12", 100 "127.0.0.1:8100", 110 the number 7.
inline const std::string kConnectPacket = Wire(
    "02 12 002A 01000000 00 86 0000 63 0002 '12' 64 000E '127.0.0.1:8100' 6E 0004 00000007 FF");

// Joined, with a session opened; wants a stand-in without a login.
class WithSession : public RawClient {
 public:
  explicit WithSession(const StandIn& standIn) : RawClient(standIn.RelayPort()) {
    Send(kConnectPacket);
    Exchange(4352);
  }
};

}  // namespace updown::peer::test
