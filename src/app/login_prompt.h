#pragma once

#include <QWidget>
#include <optional>

#include "engine/shared_session.h"

namespace updown {

// Asks for user name and password and waits for the person; nothing on Cancel. `owner` may be null
// (there is no frame yet); `refused` adds the notice that the last ones were refused. Object names:
// "loginDialog", "loginUser", "loginPassword", "loginNotice".
std::optional<LoginAnswer> AskForLogin(QWidget* owner, bool refused);

}  // namespace updown
