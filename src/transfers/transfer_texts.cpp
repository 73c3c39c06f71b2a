#include "transfers/transfer_texts.h"

#include <algorithm>

#include "widgets/size_texts.h"

namespace updown {
namespace {

std::string TwoDigits(std::uint64_t value) {
  std::string text = std::to_string(value);
  return text.size() < 2 ? "0" + text : text;
}

}  // namespace

std::string FormatRate(float rate) {
  constexpr float kStep = 1.0F / 1024;
  if (rate < 1024) {
    return FormatFixed(rate, 0) + " B/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return FormatFixed(rate, 2) + " KB/s";
  }
  rate *= kStep;
  if (rate < 1024) {
    return FormatFixed(rate, 2) + " MB/s";
  }
  return FormatFixed(rate * kStep, 2) + " GB/s";
}

std::string FormatRemaining(double seconds) {
  constexpr double kMost = 1e15;
  const auto whole = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, kMost));
  return TwoDigits(whole / 3600) + " : " + TwoDigits(whole % 3600 / 60) + " : " +
         TwoDigits(whole % 60) + " ";
}

}  // namespace updown
