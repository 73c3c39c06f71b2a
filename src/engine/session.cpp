#include "engine/session.h"

#include <utility>

#include "localdata/file_names.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/messages.h"

namespace updown {
namespace {

// At most what a buffer holds beside its terminator, never half a character.
std::string CredentialOf(std::u16string_view wide) { return WideToUtf8(wide, kPathCapacity - 1); }

std::uint32_t ErrorOf(StringId text) { return static_cast<std::uint32_t>(text); }

}  // namespace

SharedSession::SharedSession(FileService& service, const LaunchState& launch,
                             LoginQuestion question)
    : SharedSession(service, launch, std::move(question),
                    [](Connection& link, std::string_view serverName, std::uint16_t port) {
                      return link.Open(serverName, port);
                    }) {}

SharedSession::SharedSession(FileService& service, const LaunchState& launch,
                             LoginQuestion question, Connector connect)
    : service_(service),
      launch_(launch),
      question_(std::move(question)),
      connect_(std::move(connect)) {}

SharedSession::~SharedSession() { Close(); }

SharedSession::Opened SharedSession::OpenSharedSession() {
  // Unread bytes are the rest of a reply that was given up; the next request would take them for
  // its own.
  if (link_.HasUnreadBytes()) {
    Close();
  }
  if (link_.IsOpen()) {
    return {true, 0};
  }
  while (Connect()) {
    const int session =
        service_.NegotiateSession(link_, sessid_, launch_.appid, message::kOpenSession);
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
    const int login = Ops().Authenticate(link_, launch_.appid, userName_, password_, realm_);
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

void SharedSession::Close() { link_.Close(); }

bool SharedSession::Connect() {
  return connect_(link_, launch_.serverName, static_cast<std::uint16_t>(launch_.serverPort)) ==
         result::kOk;
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
