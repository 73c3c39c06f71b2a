#include "peer/control.h"

#include <algorithm>
#include <vector>

#include "peer/faults.h"
#include "peer/numbers.h"

namespace updown::peer {

const char* const kControlHelpText =
    R"(Commands, one to a line, each answered by "ok", "bad" with a reason, or what it asks for:

  fault KIND:MESSAGE... as --fault         delay MESSAGE:MS  as --delay
  clear                 no faults and delays from now on; what stalls goes on stalling
  forget                sessions issued so far are no longer known
  accept off|on         new connections wait, or are served
  away SECONDS          close the port and every connection, come back on the same port after that
                        long, with no session known and no fault
  block BYTES           length of a block
  count MESSAGE         how often the message has come (0: anything)
  connections           how many service connections are open
)";

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Sessions of one life of the service never look like those of the next.
constexpr std::uint32_t kSessionsPerLife = 1'000'000;
constexpr const char* kOk = "ok";

std::string Count(const StandIn& service, std::uint32_t message) {
  const std::vector<SeenRequest> seen = service.Requests();
  return std::to_string(std::count_if(seen.begin(), seen.end(), [message](const SeenRequest& one) {
    return message == 0 || one.message == message;
  }));
}

}  // namespace

Control::Control(Options options)
    : options_(std::move(options)), service_(std::make_unique<StandIn>(options_)) {
  options_.port = service_->RelayPort();
}

std::string Control::Obey(std::string_view line) {
  if (!service_) {
    return "bad: the service is away";
  }
  const std::size_t blank = std::min(line.find(' '), line.size());
  const std::string_view rest = line.substr(std::min(blank + 1, line.size()));
  const std::string answer = ObeyWords(line.substr(0, blank), rest);
  return answer.empty() ? "bad: " + std::string(line) : answer;
}

std::string Control::ObeyWords(std::string_view command, std::string_view rest) {
  const auto number = ParseNumber(rest);
  if (command == "fault") {
    const auto fault = ParseFault(rest);
    if (!fault) return {};
    service_->AddFault(*fault);
  } else if (command == "delay") {
    const auto delay = ParseDelay(rest);
    if (!delay) return {};
    service_->SetDelay(*delay);
  } else if (command == "clear") {
    service_->ClearFaults();
  } else if (command == "forget") {
    service_->ForgetSessions();
  } else if (command == "accept" && (rest == "on" || rest == "off")) {
    service_->SetAccepting(rest == "on");
  } else if (command == "away" && number) {
    GoAway(std::chrono::seconds(*number));
  } else if (command == "block" && number.value_or(0) > 0) {
    service_->SetBlockLength(*number);
  } else if (command == "count" && number) {
    return Count(*service_, *number);
  } else if (command == "connections") {
    return std::to_string(service_->OpenConnections());
  } else {
    return {};
  }
  return kOk;
}

void Control::GoAway(std::chrono::seconds absence) {
  service_.reset();
  returns_ = steady_clock::now() + absence;
  options_.firstSession += kSessionsPerLife;
  options_.faults.clear();
  options_.delays.clear();
}

int Control::Patience() const {
  if (!returns_) return -1;
  const auto left = std::chrono::ceil<milliseconds>(*returns_ - steady_clock::now());
  return static_cast<int>(std::max<milliseconds::rep>(left.count(), 0));
}

void Control::ReturnIfDue() {
  if (returns_ && steady_clock::now() >= *returns_) {
    service_ = std::make_unique<StandIn>(options_);
    returns_.reset();
  }
}

}  // namespace updown::peer
