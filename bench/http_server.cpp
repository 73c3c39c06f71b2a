// Serves the files of a folder by HTTP/1.1 on loopback, for the programs that UpDown is measured
// beside: GET and HEAD, connections that stay, "Range: bytes=N-". A thread for each connection.
// Prints its port. Ends when its input ends.
//
//   http_server FOLDER
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "platform/unique_fd.h"
#include "tests/wire/loopback.h"

namespace updown::bench {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;  // as the service's blocks in the comparison

bool SendAll(int socket, const char* bytes, std::size_t size, int flags) {
  while (size > 0) {
    const ssize_t sent = send(socket, bytes, size, MSG_NOSIGNAL | flags);
    if (sent <= 0) {
      return false;
    }
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

struct Request {
  std::string method;
  std::string path;
  off_t from = 0;
};

Request Parse(const std::string& head) {
  const std::size_t first = head.find(' ');
  const std::size_t second = head.find(' ', first + 1);
  Request request{head.substr(0, first), head.substr(first + 1, second - first - 1)};
  for (std::size_t line = head.find('\n'); line != std::string::npos;
       line = head.find('\n', line + 1)) {
    constexpr char kRange[] = "Range: bytes=";
    if (strncasecmp(head.c_str() + line + 1, kRange, sizeof kRange - 1) == 0) {
      request.from = std::atoll(head.c_str() + line + sizeof kRange);
    }
  }
  return request;
}

bool Answer(int socket, const std::string& folder, const Request& request,
            std::vector<char>& buffer) {
  const UniqueFd file(open((folder + request.path).c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      request.path.find("..") != std::string::npos || request.from > status.st_size) {
    const std::string refused = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
    return SendAll(socket, refused.data(), refused.size(), 0);
  }
  std::string head = request.from > 0 ? "HTTP/1.1 206 Partial Content\r\n" : "HTTP/1.1 200 OK\r\n";
  if (request.from > 0) {
    head += "Content-Range: bytes " + std::to_string(request.from) + "-" +
            std::to_string(status.st_size - 1) + "/" + std::to_string(status.st_size) + "\r\n";
  }
  head += "Content-Length: " + std::to_string(status.st_size - request.from) +
          "\r\nAccept-Ranges: bytes\r\nContent-Type: application/octet-stream\r\n\r\n";
  const bool body = request.method != "HEAD" && status.st_size > request.from;
  if (!SendAll(socket, head.data(), head.size(), body ? MSG_MORE : 0)) {
    return false;
  }
  for (off_t at = request.from; body && at < status.st_size;) {
    const ssize_t got = pread(file.Get(), buffer.data(), buffer.size(), at);
    if (got <= 0 || !SendAll(socket, buffer.data(), static_cast<std::size_t>(got), 0)) {
      return false;
    }
    at += got;
  }
  return true;
}

void Serve(UniqueFd connection, const std::string& folder) {
  const int on = 1;
  setsockopt(connection.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  std::vector<char> buffer(kBlock);
  std::string came;
  for (;;) {
    const std::size_t end = came.find("\r\n\r\n");
    if (end != std::string::npos) {
      const Request request = Parse(came.substr(0, end + 2));
      came.erase(0, end + 4);
      if (!Answer(connection.Get(), folder, request, buffer)) {
        return;
      }
      continue;
    }
    const ssize_t got = recv(connection.Get(), buffer.data(), 4096, 0);
    if (got <= 0) {
      return;
    }
    came.append(buffer.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace
}  // namespace updown::bench

int main(int argc, char** argv) {
  using namespace updown;
  if (argc != 2) {
    std::fputs("http_server FOLDER\n", stderr);
    return 2;
  }
  std::thread([] {
    for (char byte = 0; read(STDIN_FILENO, &byte, 1) > 0;) {
    }
    std::_Exit(0);
  }).detach();
  const testing::Listener listener(1024);
  std::printf("%u\n", listener.Port());
  std::fflush(stdout);
  for (;;) {
    UniqueFd connection = listener.Accept();
    if (connection) {
      std::thread(bench::Serve, std::move(connection), std::string(argv[1])).detach();
    }
  }
}
