#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "peer/stand_in.h"

namespace updown::peer::test {

// All bytes are written out here, or read off, without the stand-in's own reader and writer.

std::string Hex(std::string_view digits);  // blanks are passed over
std::string ToHex(std::string_view bytes);

std::string Number(std::uint32_t number, int size = 4);  // high byte first
std::string Attribute(std::uint8_t tag, std::string_view value);
std::string Request(std::uint32_t code, std::string_view data = {}, std::string_view behind = {});

struct ReplyFrame {
  std::uint32_t code = 0;
  std::string data;
  bool version = false;
};

// A socket to the stand-in. Every wait ends after ten seconds.
class RawClient {
 public:
  explicit RawClient(std::uint16_t port);
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  void Send(std::string_view bytes) const;
  std::string Receive(std::size_t size) const;  // shorter if the stand-in closes first
  bool IsClosed() const;                        // waits for the end, or for a byte
  std::string ReceiveFrame() const;             // with its length
  ReplyFrame Exchange(std::uint32_t code, std::string_view data = {},
                      std::string_view behind = {}) const;

 private:
  int fd_;
};

extern const std::string kConnectPacket;

ReplyFrame ReadFrame(std::string_view frame);

class Joined : public RawClient {
 public:
  explicit Joined(const StandIn& standIn);
};

// Joined, with a session opened; wants a stand-in without a login.
class WithSession : public Joined {
 public:
  explicit WithSession(const StandIn& standIn);
  std::string sessid;
};

// A folder of its own for each test, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path path;
};

void WriteFile(const std::filesystem::path& path, std::string_view bytes);
std::string ReadFile(const std::filesystem::path& path);

}  // namespace updown::peer::test
