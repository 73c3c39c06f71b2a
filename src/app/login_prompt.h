#pragma once

#include <QWidget>

#include "engine/session_link.h"

namespace updown {

// Asks for user name and password, in a box before `owner`, and returns at once; `answered` is
// called when the box has closed, and never if `owner` goes first. Object names: "loginDialog",
// "loginUser", "loginPassword", "loginNotice".
void AskForLogin(QWidget* owner, const LoginRequest& request, LoginAsked answered);

}  // namespace updown
