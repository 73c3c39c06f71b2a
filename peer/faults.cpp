#include "peer/faults.h"

#include <array>

#include "peer/numbers.h"

namespace updown::peer {

namespace {

struct KindName {
  std::string_view name;
  Fault::Kind kind;
};

constexpr std::array<KindName, 14> kKindNames{{
    {"drop-before", Fault::Kind::DropBefore},
    {"drop-inside", Fault::Kind::DropInside},
    {"drop-after", Fault::Kind::DropAfter},
    {"stall", Fault::Kind::Stall},
    {"wrong-code", Fault::Kind::WrongCode},
    {"bad-list", Fault::Kind::BadList},
    {"oversized", Fault::Kind::Oversized},
    {"no-code", Fault::Kind::NoCode},
    {"empty-block", Fault::Kind::EmptyBlock},
    {"bad-entry", Fault::Kind::BadEntry},
    {"cut-listing", Fault::Kind::CutListing},
    {"wrong-offset", Fault::Kind::WrongOffset},
    {"long-block", Fault::Kind::LongBlock},
    {"long-entry", Fault::Kind::LongEntry},
}};

constexpr std::uint32_t kLowestServiceMessage = 4096;

bool LooksOutFor(const Fault& fault, std::uint32_t message) {
  if (fault.message == 0) return message >= kLowestServiceMessage;
  return fault.message == message;
}

std::string_view TakeField(std::string_view& text) {
  const std::size_t colon = text.find(':');
  const std::string_view field = text.substr(0, colon);
  text = colon == std::string_view::npos ? std::string_view{} : text.substr(colon + 1);
  return field;
}

bool ApplySetting(std::string_view setting, Fault& fault) {
  const std::size_t equals = setting.find('=');
  if (equals == std::string_view::npos) return false;
  const auto number = ParseNumber(setting.substr(equals + 1));
  const std::string_view name = setting.substr(0, equals);
  if (!number) return false;
  if (name == "skip") {
    fault.skip = *number;
  } else if (name == "times") {
    fault.times = *number;
  } else if (name == "code") {
    fault.code = *number;
  } else {
    return false;
  }
  return true;
}

}  // namespace

void FaultPlan::Add(const Fault& fault) {
  const std::lock_guard lock(mutex_);
  plan_.push_back({fault, 0});
}

void FaultPlan::Clear() {
  const std::lock_guard lock(mutex_);
  plan_.clear();
}

std::optional<Fault> FaultPlan::Meet(std::uint32_t message) {
  const std::lock_guard lock(mutex_);
  std::optional<Fault> strikes;
  for (Planned& planned : plan_) {
    const Fault& fault = planned.fault;
    if (!LooksOutFor(fault, message)) continue;
    const std::uint64_t earlier = planned.met++;
    const bool over = fault.times != 0 && earlier >= std::uint64_t{fault.skip} + fault.times;
    if (earlier >= fault.skip && !over && !strikes) strikes = fault;
  }
  return strikes;
}

bool ReplacesReply(Fault::Kind kind) {
  switch (kind) {
    case Fault::Kind::DropBefore:
    case Fault::Kind::Stall:
    case Fault::Kind::WrongCode:
    case Fault::Kind::BadList:
    case Fault::Kind::Oversized:
      return true;
    default:
      return false;
  }
}

std::optional<Fault> ParseFault(std::string_view text) {
  Fault fault;
  const std::string_view kind = TakeField(text);
  bool known = false;
  for (const KindName& candidate : kKindNames) {
    if (candidate.name != kind) continue;
    fault.kind = candidate.kind;
    known = true;
  }
  const auto message = ParseNumber(TakeField(text));
  if (!known || !message) return std::nullopt;
  fault.message = *message;
  while (!text.empty()) {
    if (!ApplySetting(TakeField(text), fault)) return std::nullopt;
  }
  return fault;
}

}  // namespace updown::peer
