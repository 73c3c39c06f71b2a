#pragma once

namespace updown::demo {

// A leg runs in a process of its own, with the client's command line and, behind it, --leg NAME,
// --pictures FOLDER, --prefix TEXT and --received FOLDER, over which the client steps.
bool IsLegProcess(int argc, char** argv);

// 0 if all that the leg expects held. Lines on standard output: what held, and requests to the
// conductor, which begin with "@".
int RunLegProcess(int argc, char** argv);

}  // namespace updown::demo
