#include "tests/peer/raw_client.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace updown::peer::test {

// 134: joined without a word. Attributes 99 "12", 100 "127.0.0.1:8100", 110 the number 7.
const std::string kConnectPacket = Hex("02 12 00 2A 01 00 00 00 00 86 00 00") +
                                   Hex("63 00 02 31 32") + Hex("64 00 0E") + "127.0.0.1:8100" +
                                   Hex("6E 00 04 00 00 00 07 FF");

std::string Hex(std::string_view digits) {
  std::string bytes;
  std::string pair;
  for (const char digit : digits) {
    if (digit == ' ') continue;
    pair += digit;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

std::string ToHex(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    digits += kDigits[static_cast<unsigned char>(byte) >> 4];
    digits += kDigits[static_cast<unsigned char>(byte) & 15];
  }
  return digits;
}

std::string Number(std::uint32_t number, int size) {
  std::string bytes;
  for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>((number >> (8 * i)) & 0xFF);
  return bytes;
}

std::string Attribute(std::uint8_t tag, std::string_view value) {
  return static_cast<char>(tag) + Number(static_cast<std::uint32_t>(value.size()), 2) +
         std::string(value);
}

std::string Request(std::uint32_t code, std::string_view data, std::string_view behind) {
  std::string body = Attribute(1, Number(code));
  if (!data.empty()) body += Attribute(2, data);
  body += Hex("0A 00 04 01 00 00 00 FF") + std::string(behind);
  return Number(static_cast<std::uint32_t>(body.size())) + body;
}

static std::uint32_t NumberIn(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes) number = (number << 8) | static_cast<unsigned char>(byte);
  return number;
}

ReplyFrame ReadFrame(std::string_view frame) {
  ReplyFrame reply;
  std::size_t at = 4;
  while (at + 3 <= frame.size() && frame[at] != '\xFF') {
    const std::string_view value = frame.substr(at + 3, NumberIn(frame.substr(at + 1, 2)));
    if (frame[at] == 1) reply.code = NumberIn(value);
    if (frame[at] == 2) reply.data = value;
    if (frame[at] == 10) reply.version = value == Hex("01 00 00 00");
    at += 3 + value.size();
  }
  return reply;
}

RawClient::RawClient(std::uint16_t port) : fd_(::socket(AF_INET, SOCK_STREAM, 0)) {
  const timeval bound{10, 0};
  ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(0, ::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
}

RawClient::~RawClient() { ::close(fd_); }

void RawClient::Send(std::string_view bytes) const {
  EXPECT_EQ(static_cast<ssize_t>(bytes.size()),
            ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

std::string RawClient::Receive(std::size_t size) const {
  std::string bytes(size, '\0');
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = ::recv(fd_, bytes.data() + done, size - done, 0);
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  bytes.resize(done);
  return bytes;
}

bool RawClient::IsClosed() const {
  char byte = 0;
  const ssize_t count = ::recv(fd_, &byte, 1, 0);
  return count == 0 || (count < 0 && errno == ECONNRESET);
}

std::string RawClient::ReceiveFrame() const {
  const std::string length = Receive(4);
  return length.size() < 4 ? length : length + Receive(NumberIn(length));
}

ReplyFrame RawClient::Exchange(std::uint32_t code, std::string_view data,
                               std::string_view behind) const {
  Send(Request(code, data, behind));
  return ReadFrame(ReceiveFrame());
}

Joined::Joined(const StandIn& standIn) : RawClient(standIn.RelayPort()) { Send(kConnectPacket); }

WithSession::WithSession(const StandIn& standIn) : Joined(standIn) {
  const ReplyFrame reply = Exchange(4352);
  const std::size_t start = reply.version ? 0 : reply.data.find('\xA6') + 3;
  sessid = reply.data.substr(start, 18);
}

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "updown-peer-XXXXXX").string();
  path = ::mkdtemp(name.data());
}

TemporaryFolder::~TemporaryFolder() { std::filesystem::remove_all(path); }

void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace updown::peer::test
