#pragma once

#include <QMessageBox>
#include <QString>
#include <QWidget>

#include "resources/string_id.h"

namespace updown {

// The program's message boxes; `owner` may be null. All but TellBox wait for the user. Object names
// for tests and screen readers: "messageBox".

enum class BoxIcon { Information, Exclamation, Stop, Question };

void ShowBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon);

// Returns at once, with the box before its owner; it is deleted when it is closed.
QMessageBox* TellBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon);

// The string with the program's title as caption and the information icon.
void ShowNotice(QWidget* owner, StringId text);

// Asks before something is lost or ended: true for the button that carries the verb, `acceptText`
// (& marks its key). Cancel is the other one, the default and what Escape does.
bool Confirm(QWidget* owner, const QString& question, const QString& acceptText);

}  // namespace updown
