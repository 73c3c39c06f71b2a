#include "peer/arguments.h"

#include <limits>
#include <map>
#include <stdexcept>

#include "peer/faults.h"
#include "peer/numbers.h"

namespace updown::peer {

const char* const kHelpText =
    R"(updown-peer: a relay and a file service in one, on loopback, over a folder.

  --root DIR            serve DIR
  --make-area DIR       make a package area in DIR, and end
  --serve               with --make-area: go on and serve DIR
  --packages N          packages of the area (12)
  --seed S              the same seed makes the same area (1)
  --language ID         texts of the area, and the client's language: 1033, 2052, 1028 (1033)
  --dialect 1|2         dialect that the service speaks (1)
  --block BYTES         length of a block (65536)
  --login USER:PASSWORD[:REALM]   ask for a login (granted at once)
  --name SERVICENAME    the one name that the relay resolves (fileservice)
  --identity TEXT       first part of the identity in the printed environment (port-N)
  --port N              port of the relay, 0 for any free one (0)
  --fragment            send everything in small pieces
  --delay MESSAGE:MS    hold each reply to MESSAGE back; MESSAGE as in --fault. May be given
                        several times.
  --fault KIND:MESSAGE[:skip=N][:times=N][:code=N]
                        go wrong when MESSAGE comes for the skip + 1st time, then as many times
                        (0: for ever). MESSAGE: the code; 0 all of the service's; 1 and 2 the
                        relay's resolve and connect. KIND: drop-before, drop-inside, drop-after,
                        stall, wrong-code, bad-list, oversized, no-code, empty-block, bad-entry,
                        cut-listing, wrong-offset, long-block, long-entry. May be given several times.
  --print-command       print one line that a shell takes instead of one line for each variable
  --until-eof           end when standard input ends
  --control             take commands from standard input, and end with it; "help" lists them
  --help                this text

Prints the environment that a client needs, one NAME=value to a line, in the form that env takes,
then the client's command line, then "ready". The names are no identifiers: a shell's export does not
take them, and some shells do not pass them on. SIGTERM and SIGINT end it.
)";

namespace {

std::uint32_t Number(const std::string& text, std::uint32_t most) {
  const auto number = ParseNumber(text);
  if (!number || *number > most) {
    throw std::invalid_argument("'" + text + "' is no number from 0 to " + std::to_string(most));
  }
  return *number;
}

Login ParseLogin(const std::string& text) {
  const std::size_t first = text.find(':');
  if (first == std::string::npos || first == 0) {
    throw std::invalid_argument("a login is USER:PASSWORD or USER:PASSWORD:REALM");
  }
  const std::size_t second = text.find(':', first + 1);
  Login login{text.substr(0, first), text.substr(first + 1, second - first - 1), {}};
  if (second != std::string::npos) login.realm = text.substr(second + 1);
  return login;
}

using Setter = void (*)(Arguments&, const std::string&);

const std::map<std::string, Setter>& ValueOptions() {
  constexpr std::uint32_t kAny = std::numeric_limits<std::uint32_t>::max();
  static const std::map<std::string, Setter> kOptions{
      {"--root", [](Arguments& a, const std::string& v) { a.service.root = v; }},
      {"--make-area",
       [](Arguments& a, const std::string& v) {
         a.makeArea = true;
         a.area.folder = v;
       }},
      {"--packages",
       [](Arguments& a, const std::string& v) {
         a.area.packages = static_cast<int>(Number(v, 1'000'000));
       }},
      {"--seed", [](Arguments& a, const std::string& v) { a.area.seed = Number(v, kAny); }},
      {"--language",
       [](Arguments& a, const std::string& v) {
         a.area.languageId = static_cast<int>(Number(v, 65535));
       }},
      {"--dialect",
       [](Arguments& a, const std::string& v) {
         a.service.dialect = static_cast<int>(Number(v, 2));
         if (a.service.dialect == 0) throw std::invalid_argument("there are dialects 1 and 2");
       }},
      {"--block",
       [](Arguments& a, const std::string& v) {
         a.service.blockLength = Number(v, kAny);
         if (a.service.blockLength == 0) throw std::invalid_argument("a block needs a byte");
       }},
      {"--login", [](Arguments& a, const std::string& v) { a.service.login = ParseLogin(v); }},
      {"--identity", [](Arguments& a, const std::string& v) { a.service.identity = v; }},
      {"--name", [](Arguments& a, const std::string& v) { a.service.serviceName = v; }},
      {"--port",
       [](Arguments& a, const std::string& v) {
         a.service.port = static_cast<std::uint16_t>(Number(v, 65535));
       }},
      {"--delay",
       [](Arguments& a, const std::string& v) {
         const auto delay = ParseDelay(v);
         if (!delay) throw std::invalid_argument("'" + v + "' is no delay");
         a.service.delays.push_back(*delay);
       }},
      {"--fault",
       [](Arguments& a, const std::string& v) {
         const auto fault = ParseFault(v);
         if (!fault) throw std::invalid_argument("'" + v + "' is no fault");
         a.service.faults.push_back(*fault);
       }},
  };
  return kOptions;
}

const std::map<std::string, bool Arguments::*>& Switches() {
  static const std::map<std::string, bool Arguments::*> kSwitches{
      {"--serve", &Arguments::serve},     {"--until-eof", &Arguments::untilEof},
      {"--control", &Arguments::control}, {"--print-command", &Arguments::printCommand},
      {"--help", &Arguments::help},
  };
  return kSwitches;
}

void CheckTogether(const Arguments& arguments) {
  if (arguments.help) return;
  if (arguments.makeArea ? arguments.area.folder.empty() : arguments.service.root.empty()) {
    throw std::invalid_argument("--root or --make-area must name a folder");
  }
  if (arguments.serve && !arguments.makeArea) {
    throw std::invalid_argument("--serve goes with --make-area");
  }
}

}  // namespace

Arguments ParseArguments(std::span<const std::string> words) {
  Arguments arguments;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const auto found = Switches().find(word);
    if (found != Switches().end()) {
      arguments.*(found->second) = true;
      continue;
    }
    if (word == "--fragment") {
      arguments.service.fragment = true;
      continue;
    }
    const auto option = ValueOptions().find(word);
    if (option == ValueOptions().end()) throw std::invalid_argument("no option '" + word + "'");
    if (++i == words.size()) throw std::invalid_argument(word + " needs a value");
    option->second(arguments, words[i]);
  }
  CheckTogether(arguments);
  if (arguments.serve && arguments.service.root.empty()) {
    arguments.service.root = arguments.area.folder;
  }
  return arguments;
}

}  // namespace updown::peer
