#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "engine/launch_state.h"
#include "service/operations.h"

namespace updown {

// What a person types into the login box; both UTF-16.
struct LoginAnswer {
  std::u16string user;  // "name" or "name@realm"
  std::u16string password;
};

// Asks for user name and password; nothing when the person gives up. `refused`: the last ones were
// refused. The main thread waits for it.
using LoginQuestion = std::function<std::optional<LoginAnswer>(bool refused)>;

// The one long-lived connection on which all browsing runs. Main thread only, one request at a
// time. The sessid that it yields is what transfers present on connections of their own.
class SharedSession {
 public:
  // `connect` stands in for Connection::Open in tests.
  using Connector =
      std::function<int(Connection&, std::string_view serverName, std::uint16_t port)>;

  SharedSession(FileService& service, const LaunchState& launch, LoginQuestion question);
  SharedSession(FileService& service, const LaunchState& launch, LoginQuestion question,
                Connector connect);
  ~SharedSession();

  struct Opened {
    bool open = false;
    std::uint32_t error = 0;  // for ReportResult: a string id, a positive code, 0 for nothing
  };
  // Returns at once if the session is open and in step. Else connects, negotiates, and logs in as
  // often as the person is willing to try.
  Opened OpenSharedSession();

  void Close();
  Connection& Link() { return link_; }
  const std::string& Sessid() const { return sessid_; }
  const ServiceOps& Ops() const { return service_.Ops(); }

 private:
  bool Connect();
  bool LoginPrompt(bool refused);

  FileService& service_;
  const LaunchState& launch_;
  LoginQuestion question_;
  Connector connect_;
  Connection link_;
  std::string sessid_;
  std::string userName_;  // credentials: UTF-8, for this run only, stored nowhere
  std::string password_;
  std::string realm_;
};

}  // namespace updown
