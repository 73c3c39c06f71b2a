#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "engine/session.h"
#include "platform/unique_fd.h"
#include "tests/service/script.h"

namespace updown::test {

using Log = std::vector<std::string>;

// A shared session, and a log of its connects. The service at the other end grants `sessid`; while
// that is empty it cannot be reached.
class GrantedSession {
 public:
  explicit GrantedSession(Log& log) : log_(log) {}

  SharedSession& Session() { return session_; }

  std::string sessid = "granted";

 private:
  int Connect(Connection& link) {
    log_.emplace_back("connect");
    int ends[2];
    if (sessid.empty() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      return result::kConnection;
    }
    service_ = UniqueFd(ends[1]);
    const std::string reply = testing::First(32768, sessid);
    EXPECT_EQ(write(ends[1], reply.data(), reply.size()), static_cast<ssize_t>(reply.size()));
    return link.Adopt(ends[0]);
  }

  Log& log_;
  UniqueFd service_;
  FileService dialect_;
  LaunchState launch_;
  SharedSession session_{
      dialect_, launch_, nullptr,
      [this](Connection& link, std::string_view, std::uint16_t) { return Connect(link); }};
};

}  // namespace updown::test
