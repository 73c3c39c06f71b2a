#pragma once

#include <string>

namespace updown {

// Address of the desktop's session bus in the notation of D-Bus; empty if there is none.
std::string SessionBusAddress();

// Before there is a QApplication: the toolkit connects to the session bus on the main thread, and
// would wait without end for one that takes connections and never answers. Looks for an answer, a
// second at most, and leaves such a bus out of this process's environment.
void LeaveOutSilentBus();

}  // namespace updown
