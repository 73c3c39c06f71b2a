#include "engine/session_link.h"

#include <chrono>
#include <utility>

#include "localdata/file_names.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/messages.h"

namespace updown {
namespace {

using Clock = std::chrono::steady_clock;

// At most what a buffer holds beside its terminator, never half a character.
std::string CredentialOf(std::u16string_view wide) { return WideToUtf8(wide, kPathCapacity - 1); }

std::uint32_t ReportOf(StringId text) { return static_cast<std::uint32_t>(text); }

}  // namespace

// One opening: what it may still take, and what it has tried.
struct SessionLink::Attempt {
  Clock::time_point deadline;
};

SessionLink::SessionLink(FileService& service, const LaunchState& launch, SessionLimits limits,
                         AskAndWait ask, KeyGranted granted)
    : service_(service),
      launch_(launch),
      limits_(limits),
      ask_(std::move(ask)),
      granted_(std::move(granted)) {}

SessionResult SessionLink::Open(AskedBy by) {
  stoodIdle_ = InStep();
  if (stoodIdle_) {
    return {};
  }
  Close();
  if (loginGivenUp_ && by == AskedBy::Program) {
    return {SessionResult::End::NoLogin};
  }
  loginGivenUp_ = false;
  Attempt attempt{Clock::now() + limits_.opening};
  for (;;) {
    if (const auto ended = TryOnce(attempt)) {
      if (!ended->Done()) {
        Close();
      }
      connection_->SetDeadline(std::nullopt);
      return *ended;
    }
    Close();
  }
}

// One connection from its making to the service's yes or no; nothing if another one is to be tried.
std::optional<SessionResult> SessionLink::TryOnce(Attempt& attempt) {
  if (!Connect(attempt)) {
    return Failed(ReportOf(StringId::NetworkError));
  }
  const int session =
      service_.NegotiateSession(*connection_, sessid_, launch_.appid, message::kOpenSession);
  if (session == result::kBusy) {
    return Failed(ReportOf(StringId::SystemBusy));
  }
  if (session != result::kAuthentication) {
    if (session == result::kOk) {
      granted_(sessid_);
    }
    // Any other failure that leaves the connection open shows at the first listing.
    return connection_->IsOpen() ? SessionResult() : ResultOf(session);
  }
  const bool prompted = userName_.empty();
  if (prompted && !AskLogin(attempt, false)) {
    return GivenUp();
  }
  const int login = Ops().Authenticate(*connection_, launch_.appid, userName_, password_, realm_);
  if (login == result::kOk) {
    granted_(sessid_);
    return SessionResult();
  }
  if (login == result::kConnection && prompted && !WasCut()) {
    return std::nullopt;  // it died while the person typed: once more with what was typed
  }
  if (login != result::kAuthentication) {
    return ResultOf(login);
  }
  Close();
  userName_.clear();  // not to be sent once more if the person gives up here
  return AskLogin(attempt, true) ? std::nullopt : std::optional(GivenUp());
}

void SessionLink::Begin() {
  const std::lock_guard lock(mutex_);
  cut_ = false;
}

void SessionLink::Cut() {
  const std::lock_guard lock(mutex_);
  cut_ = true;
  connection_->Cut();
}

bool SessionLink::WasCut() const {
  const std::lock_guard lock(mutex_);
  return cut_;
}

// The service speaks only when asked: what is unread is the rest of a reply that was given up, and
// would be taken for the next one.
bool SessionLink::InStep() const {
  return connection_->IsOpen() && !WasCut() && !connection_->PeerHasClosed() &&
         !connection_->HasUnreadBytes();
}

bool SessionLink::Connect(const Attempt& attempt) {
  auto connection = std::make_unique<Connection>();
  connection->SetDeadline(attempt.deadline);
  connection->SetSilenceLimit(limits_.silence);
  {
    const std::lock_guard lock(mutex_);
    if (cut_) {
      return false;
    }
    connection_.swap(connection);
  }
  return connection_->Open(launch_.serverName, static_cast<std::uint16_t>(launch_.serverPort)) ==
         result::kOk;
}

SessionResult SessionLink::ResultOf(int code) const {
  return code == result::kOk ? SessionResult() : Failed(result::WithoutSign(code));
}

SessionResult SessionLink::Failed(std::uint32_t report) const {
  return WasCut() ? SessionResult{SessionResult::End::Cancelled}
                  : SessionResult{SessionResult::End::Failed, report};
}

SessionResult SessionLink::GivenUp() {
  if (WasCut()) {
    return {SessionResult::End::Cancelled};
  }
  loginGivenUp_ = true;
  return {SessionResult::End::NoLogin};
}

// The time that a person takes does not count.
bool SessionLink::AskLogin(Attempt& attempt, bool refused) {
  const Clock::time_point asked = Clock::now();
  const std::optional<LoginAnswer> answer = ask_({refused, typedUser_});
  attempt.deadline += Clock::now() - asked;
  connection_->SetDeadline(attempt.deadline);
  if (!answer) {
    return false;
  }
  typedUser_ = answer->user;
  std::u16string_view user = answer->user;
  if (const std::size_t at = user.rfind(u'@'); at != std::u16string_view::npos) {
    realm_ = CredentialOf(user.substr(at + 1));
    user = user.substr(0, at);
  }
  userName_ = CredentialOf(user);
  password_ = CredentialOf(answer->password);
  return true;
}

}  // namespace updown
