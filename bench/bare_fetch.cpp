// The least that a download of the service can be: one thread, no engine, no checks. Asks the
// service for one block after the other and puts what comes into a file.
//
//   bare_fetch recv|splice PORT REMOTE BYTES LOCAL
//
// recv: recv into one buffer of 32 KiB, and write. splice: through a pipe of 1 MiB, not through
// this process.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/unique_fd.h"
#include "tests/wire/loopback.h"
#include "tests/wire/wire_bytes.h"

namespace updown::bench {
namespace {

using testing::Attribute;
using testing::Framed;
using testing::Number;
using testing::Wire;

void Must(bool holds, const char* what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

std::size_t NumberAt(const std::string& bytes, std::size_t at) {
  std::size_t number = 0;
  for (std::size_t end = at + 4; at < end; ++at) {
    number = number << 8 | static_cast<unsigned char>(bytes.at(at));
  }
  return number;
}

class BareFetch {
 public:
  BareFetch(std::uint16_t port, const char* local)
      : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)),
        file_(open(local, O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0600)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = testing::Loopback();
    Must(connect(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
         "no connection");
    Send(
        Wire("02 12 002A 01000000 00 86 0000 63 0002 '12' 64 000E '127.0.0.1:8100' "
             "6E 0004 00000007 FF"));
    Exchange(4352, {});
  }

  // The length of the block that follows.
  std::size_t AskForBlock(std::size_t offset, const std::string& path) {
    const std::string list =
        Attribute(193, Number(offset)) + Attribute(194, Number(0)) + Attribute(195, path) + '\xFF';
    // code (7 bytes with its head), then the data: the block's length
    return NumberAt(Exchange(4104, list), 10);
  }

  void Receive(std::size_t bytes) {
    while (bytes > 0) {
      const ssize_t got = recv(socket_.Get(), buffer_.data(), std::min(bytes, buffer_.size()), 0);
      Must(got > 0, "the service is gone");
      Must(write(file_.Get(), buffer_.data(), static_cast<std::size_t>(got)) == got, "no write");
      bytes -= static_cast<std::size_t>(got);
    }
  }

  void Splice(std::size_t bytes) {
    if (!pipeIn_) {
      std::array<int, 2> ends{};
      Must(pipe2(ends.data(), O_CLOEXEC) == 0, "no pipe");
      pipeOut_.Reset(ends[0]);
      pipeIn_.Reset(ends[1]);
      fcntl(pipeIn_.Get(), F_SETPIPE_SZ, 1 << 20);
    }
    while (bytes > 0) {
      const ssize_t got =
          splice(socket_.Get(), nullptr, pipeIn_.Get(), nullptr, bytes, SPLICE_F_MOVE);
      Must(got > 0, "the service is gone");
      for (ssize_t left = got; left > 0;) {
        const ssize_t moved = splice(pipeOut_.Get(), nullptr, file_.Get(), nullptr,
                                     static_cast<std::size_t>(left), SPLICE_F_MOVE);
        Must(moved > 0, "no write");
        left -= moved;
      }
      bytes -= static_cast<std::size_t>(got);
    }
  }

 private:
  void Send(const std::string& bytes) {
    Must(send(socket_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
             static_cast<ssize_t>(bytes.size()),
         "no request");
  }
  std::string ReceiveExact(std::size_t size) {
    std::string bytes(size, '\0');
    Must(recv(socket_.Get(), bytes.data(), size, MSG_WAITALL) == static_cast<ssize_t>(size),
         "no reply");
    return bytes;
  }
  std::string Exchange(std::size_t code, const std::string& data) {
    Send(Framed(Attribute(1, Number(code)) + (data.empty() ? "" : Attribute(2, data)) +
                Wire("0A 0004 01000000 FF")));
    return ReceiveExact(NumberAt(ReceiveExact(4), 0));
  }

  UniqueFd socket_;
  UniqueFd file_;
  UniqueFd pipeIn_;
  UniqueFd pipeOut_;
  std::vector<char> buffer_ = std::vector<char>(32768);
};

void Fetch(bool spliced, char** arguments) {
  const std::size_t bytes = std::strtoull(arguments[2], nullptr, 10);
  BareFetch fetch(static_cast<std::uint16_t>(std::atoi(arguments[0])), arguments[3]);
  for (std::size_t done = 0; done < bytes;) {
    const std::size_t block = fetch.AskForBlock(done, arguments[1]);
    spliced ? fetch.Splice(block) : fetch.Receive(block);
    done += block;
  }
}

}  // namespace
}  // namespace updown::bench

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs("bare_fetch recv|splice PORT REMOTE BYTES LOCAL\n", stderr);
    return 2;
  }
  try {
    updown::bench::Fetch(std::string(argv[1]) == "splice", argv + 2);
  } catch (const std::exception& failed) {
    std::printf("failed: %s\n", failed.what());
    return 1;
  }
  return 0;
}
