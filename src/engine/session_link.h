#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "engine/launch_state.h"
#include "engine/session_answers.h"
#include "service/connection.h"
#include "service/limits.h"
#include "service/operations.h"

namespace updown {

// What a person types into the login prompt; both UTF-16.
struct LoginAnswer {
  std::u16string user;  // "name" or "name@realm"
  std::u16string password;
};

// What the prompt shows.
struct LoginRequest {
  bool refused = false;  // the last credentials were
  std::u16string user;   // as it was typed last time
};

// Asks for user name and password: called on the main thread, answers there, at once or later;
// nothing when the person gives up.
using LoginAsked = std::function<void(std::optional<LoginAnswer>)>;
using LoginQuestion = std::function<void(const LoginRequest&, LoginAsked)>;

// How long the session waits for the service; tests shorten it.
struct SessionLimits {
  std::chrono::milliseconds opening = kOpeningLimit;
  std::chrono::milliseconds silence = kRequestSilence;
};

// The connection of the shared session, and what opens it: connects through the relay, negotiates,
// logs in. Belongs to the session's thread, but for Cut and End.
class SessionLink {
 public:
  // Asks and waits, on the session's thread; nothing also when the link is cut meanwhile.
  using AskAndWait = std::function<std::optional<LoginAnswer>(const LoginRequest&)>;
  using KeyGranted = std::function<void(const std::string& sessid)>;

  SessionLink(FileService& service, const LaunchState& launch, SessionLimits limits, AskAndWait ask,
              KeyGranted granted);

  // Before each request: forgets an earlier cut.
  void Begin();

  // Done at once if the connection stands and is in step. Else opens it, as often logging in as the
  // person is willing to try. Takes `limits.opening` at most, without the time in the prompt.
  SessionResult Open(AskedBy by);
  // True if the last Open found a connection that stood idle until then.
  bool StoodIdle() const { return stoodIdle_; }

  void Close() { connection_->Close(); }
  Connection& Wire() { return *connection_; }
  const ServiceOps& Ops() const { return service_.Ops(); }

  // The result of a request that gave `code`: Cancelled if the link was cut.
  SessionResult ResultOf(int code) const;

  // Any thread: whatever waits here fails at once, up to the next Begin.
  void Cut();
  bool WasCut() const;

 private:
  struct Attempt;

  bool InStep() const;
  bool Connect(const Attempt& attempt);
  std::optional<SessionResult> TryOnce(Attempt& attempt);
  bool AskLogin(Attempt& attempt, bool refused);
  SessionResult Failed(std::uint32_t report) const;
  SessionResult GivenUp();

  FileService& service_;
  const LaunchState& launch_;
  const SessionLimits limits_;
  const AskAndWait ask_;
  const KeyGranted granted_;

  mutable std::mutex mutex_;  // guards cut_, and connection_ against Cut while it is replaced
  bool cut_ = false;
  std::unique_ptr<Connection> connection_ = std::make_unique<Connection>();  // never null
  bool stoodIdle_ = false;
  bool loginGivenUp_ = false;
  std::string sessid_;
  std::u16string typedUser_;
  std::string userName_;  // credentials: UTF-8, for this run only, stored nowhere
  std::string password_;
  std::string realm_;
};

}  // namespace updown
