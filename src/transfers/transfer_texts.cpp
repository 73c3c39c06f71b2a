#include "transfers/transfer_texts.h"

#include <algorithm>
#include <array>

#include "widgets/size_texts.h"

namespace updown {
namespace {

std::string TwoDigits(std::uint64_t value) {
  std::string text = std::to_string(value);
  return text.size() < 2 ? "0" + text : text;
}

}  // namespace

std::string FormatRate(float rate) {
  constexpr float kStep = 1024;
  constexpr std::array kUnits{" B/s", " KB/s", " MB/s", " GB/s"};
  std::size_t unit = 0;
  for (; rate >= kStep && unit + 1 < kUnits.size(); ++unit) {
    rate /= kStep;
  }
  return FormatFixed(rate, unit == 0 ? 0 : 2) + kUnits[unit];
}

std::string FormatRemaining(double seconds) {
  constexpr double kMost = 1e15;
  const auto whole = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, kMost));
  return TwoDigits(whole / 3600) + " : " + TwoDigits(whole % 3600 / 60) + " : " +
         TwoDigits(whole % 60) + " ";
}

}  // namespace updown
