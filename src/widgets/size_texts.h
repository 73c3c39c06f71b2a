#pragma once

#include <cstdint>
#include <string>

namespace updown {

// Sizes as the windows show them. Numbers are written the same in every locale. Any thread.

// "" for 0, "1023 B", "1 KB" (whole ones), "1.00 MB", "1.000 GB".
std::string FormatSize(std::uint64_t bytes);

// The same for a size that still grows: always whole KB.
std::string FormatKiloBytes(std::uint64_t bytes);

// `value` with so many digits behind the point.
std::string FormatFixed(float value, int digits);

}  // namespace updown
