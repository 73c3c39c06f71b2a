#pragma once

#include <cstdint>

namespace updown {

// Names a task in announcements and rows. Never reused in a process, so that news about a task that
// is gone find nothing. 0 names none.
using TaskId = std::uint64_t;

}  // namespace updown
