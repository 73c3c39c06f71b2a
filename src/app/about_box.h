#pragma once

#include <QWidget>

namespace updown {

// The program's name in a box with an OK button; waits for the user. Object name "aboutBox".
void ShowAboutBox(QWidget* owner);

}  // namespace updown
