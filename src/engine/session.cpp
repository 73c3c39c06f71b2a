#include "engine/session.h"

#include <sys/socket.h>

#include <utility>

#include "localdata/file_names.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/messages.h"
#include "wire/relay.h"
#include "wire/sockets.h"

namespace updown {
namespace {

// At most what a buffer holds beside its terminator, never half a character.
std::string CredentialOf(std::u16string_view wide) { return WideToUtf8(wide, kPathCapacity - 1); }

std::uint32_t ErrorOf(StringId text) { return static_cast<std::uint32_t>(text); }

// The service speaks only when asked, so this is the rest of a reply that was given up. The next
// request would take it for its own reply, and may wait for ever for an end that never comes.
bool HasUnreadBytes(int socket) {
  char first = 0;
  return socket >= 0 && recv(socket, &first, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

}  // namespace

SharedSession::SharedSession(FileService& service, const LaunchState& launch,
                             LoginQuestion question)
    : SharedSession(service, launch, std::move(question),
                    [](std::string_view serverName, std::uint16_t port) {
                      return ServiceConnect(serverName, port);
                    }) {}

SharedSession::SharedSession(FileService& service, const LaunchState& launch,
                             LoginQuestion question, Connector connect)
    : service_(service),
      launch_(launch),
      question_(std::move(question)),
      connect_(std::move(connect)) {}

SharedSession::~SharedSession() { Close(); }

SharedSession::Opened SharedSession::OpenSharedSession() {
  if (HasUnreadBytes(sessionSocket_)) {
    Close();
  }
  if (sessionSocket_ >= 0) {
    return {true, 0};
  }
  while (Connect()) {
    const int session =
        service_.NegotiateSession(sessionSocket_, sessid_, launch_.appid, message::kOpenSession);
    if (session == result::kBusy) {
      Close();
      return {false, ErrorOf(StringId::SystemBusy)};
    }
    if (session != result::kAuthentication) {
      // Any other failure shows at the first listing.
      return {true, 0};
    }
    if (userName_.empty() && !LoginPrompt(false)) {
      Close();
      return {false, 0};
    }
    const int login =
        Ops().Authenticate(sessionSocket_, launch_.appid, userName_, password_, realm_);
    if (login == result::kOk) {
      return {true, 0};
    }
    Close();
    if (login != result::kAuthentication) {
      return {false, result::WithoutSign(login)};
    }
    if (!LoginPrompt(true)) {
      return {false, 0};
    }
  }
  return {false, ErrorOf(StringId::NetworkError)};
}

void SharedSession::Close() {
  if (sessionSocket_ >= 0) {
    CloseSocket(sessionSocket_);
    sessionSocket_ = -1;
  }
}

// 0 stands for "no relay in the environment" and is no socket either.
bool SharedSession::Connect() {
  const int socket = connect_(launch_.serverName, static_cast<std::uint16_t>(launch_.serverPort));
  sessionSocket_ = socket > 0 ? socket : -1;
  return sessionSocket_ > 0;
}

bool SharedSession::LoginPrompt(bool refused) {
  const auto answer = question_ ? question_(refused) : std::nullopt;
  if (!answer) {
    return false;
  }
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
