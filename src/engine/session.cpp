#include "engine/session.h"

#include <utility>

#include "engine/tasks.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/messages.h"
#include "wire/relay.h"
#include "wire/sockets.h"

namespace updown {
namespace {

// At most what a buffer holds beside its terminator, never half a character.
std::string CredentialOf(std::u16string_view wide) {
  std::string utf8 = WideToUtf8(wide);
  if (utf8.size() < kPathCapacity) {
    return utf8;
  }
  std::size_t end = kPathCapacity - 1;
  while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xC0U) == 0x80U) {
    --end;
  }
  utf8.resize(end);
  return utf8;
}

std::uint32_t ErrorOf(StringId text) { return static_cast<std::uint32_t>(text); }

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
