#pragma once

#include <cstdint>
#include <string>

namespace updown {

// Texts of the status window's cells. Numbers are written the same in every locale.

// `rate` in bytes per second: "0 B/s", "1.00 KB/s", up to GB/s. The unit is chosen before rounding,
// so that 1023.9 gives "1024 B/s".
std::string FormatRate(float rate);

// "01 : 02 : 03 ", hours without an upper limit, parts of a second cut off.
std::string FormatRemaining(double seconds);

}  // namespace updown
