#pragma once

#include <QString>
#include <QWidget>

#include "engine/tasks.h"
#include "resources/string_id.h"

namespace updown {

// The program's message boxes. All wait for the user; `owner` may be null. Object names for tests
// and screen readers: "messageBox".

enum class BoxIcon { Information, Exclamation, Stop, Question };

void ShowBox(QWidget* owner, const QString& text, const QString& caption, BoxIcon icon);

// The string with the program's title as caption and the information icon.
void ShowNotice(QWidget* owner, StringId text);

// OK and Cancel with the question icon; true unless Cancel.
bool Confirm(QWidget* owner, const QString& question);
bool Confirm(QWidget* owner, StringId question);

// True if the limit of user tasks is reached; the user has been told then.
bool CheckStreamLimit(const TaskStore& tasks, QWidget* owner);

// A text of the string table as the windows use it.
QString Text(StringId id);

}  // namespace updown
