#pragma once

#include <span>
#include <string>

#include "peer/make_area.h"
#include "peer/options.h"

namespace updown::peer {

// What the command line of updown-peer asks for.
struct Arguments {
  Options service;
  AreaOptions area;
  bool makeArea = false;
  bool serve = false;
  bool untilEof = false;
  bool control = false;
  bool printCommand = false;
  bool help = false;
};

// Throws std::invalid_argument, with a text for the user, if an option or its value makes no sense.
// `words`: without the program's name.
Arguments ParseArguments(std::span<const std::string> words);

extern const char* const kHelpText;

}  // namespace updown::peer
