#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "peer/stand_in.h"

namespace updown::peer {

// A stand-in, and the commands that change it while it runs. One thread.
class Control {
 public:
  explicit Control(Options options);  // throws as StandIn does

  const StandIn& Service() const { return *service_; }  // not while it is away

  // Carries out one line, and gives the answer: "ok", "bad" and why, or what was asked for.
  std::string Obey(std::string_view line);

  // What is left of an absence, in milliseconds as poll takes them; -1 while the service is there.
  int Patience() const;
  // Brings the service back when its absence is over. Throws as StandIn does.
  void ReturnIfDue();

 private:
  std::string ObeyWords(std::string_view command, std::string_view rest);
  void GoAway(std::chrono::seconds absence);

  Options options_;
  std::unique_ptr<StandIn> service_;  // null while it is away
  std::optional<std::chrono::steady_clock::time_point> returns_;
};

extern const char* const kControlHelpText;

}  // namespace updown::peer
