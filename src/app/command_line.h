#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "engine/launch_state.h"
#include "platform/text.h"

namespace updown {

inline constexpr char kUsage[] = "Usage: updown -s SERVICE [-p PORT]\n";
inline constexpr int kUsageError = 2;  // exit status of a start that is refused

struct CommandLine {
  std::string serverName;  // in the ANSI code page
  std::uint32_t serverPort = kDefaultServerPort;
  bool help = false;     // --help
  bool version = false;  // --version

  bool Accepted() const { return !serverName.empty() && serverPort != 0; }
};

// Takes `-s NAME` and `-p PORT` (in either case, the last one stands) and the two long options out
// of the process's arguments, the program's path included; steps over everything else. Arguments
// are UTF-8. A port that is no number is 0 and ends the walk; one above 16 bits is kept and cut by
// whoever connects.
CommandLine ParseCommandLine(std::span<const std::string> arguments, AnsiCodePage codePage);

}  // namespace updown
