#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace updown::peer {

// A relay and a file service in one, on loopback, over a folder: for demo, tests and people who
// work on the client. Written against the bytes of the wire, with a codec of its own, so that a
// mistake of the client does not cancel out. Includes nothing from src/.

struct Login {
  std::string user;
  std::string password;
  std::string realm;
};

// What to do wrong, and when. DropBefore, Stall, WrongCode, BadList and Oversized leave the request
// undone; with the others it is carried out. A fault strikes when its message comes for the `skip`
// + 1st time, and then `times` times (0: for ever).
struct Fault {
  enum class Kind {
    DropBefore,   // close the connection instead of answering
    DropInside,   // close after half of the reply frame (of the block, for 4104)
    DropAfter,    // answer, then close
    Stall,        // never answer, keep the connection open until it is closed
    WrongCode,    // answer with `code`
    BadList,      // answer with a frame whose attribute list does not decode
    Oversized,    // answer with a frame longer than 32768 bytes
    NoCode,       // answer without attribute 1
    EmptyBlock,   // 4104: a block of length 0
    BadEntry,     // 4099: an entry without its attributes, behind the good ones
    CutListing,   // 4099: close after two entries
    WrongOffset,  // 4104: a block that says to lie `code` bytes ahead, modulo 2^32 (dialect 2)
    LongBlock,    // 4104: a block with `code` bytes more behind it
    LongEntry,    // 4099: an entry whose length says 0xFFFFFFFF, and nothing behind it
  };
  Kind kind = Kind::DropBefore;
  // Message code; 0: every message of the service; 1 and 2: the relay's resolve and connect.
  std::uint32_t message = 0;
  std::uint32_t skip = 0;
  std::uint32_t times = 1;
  std::uint32_t code = 0;  // WrongCode, WrongOffset, LongBlock
};

// A reply that is held back. `message` as in Fault; a delay for 0 adds to a message's own.
struct Delay {
  std::uint32_t message = 0;
  std::uint32_t milliseconds = 0;
};

struct Options {
  std::string root;  // folder served as "/"
  int dialect = 1;   // 1 or 2
  std::uint32_t blockLength = 65536;
  std::optional<Login> login;               // nothing: sessions are granted at once
  std::string serviceName = "fileservice";  // what the relay resolves
  bool fragment = false;  // every send byte by byte (first 64 bytes), then in odd pieces
  std::vector<Delay> delays;
  std::vector<Fault> faults;
  std::uint16_t port = 0;  // port to listen on; 0: any free one
  // First part of the client's identity. One instance runs for an identity on a machine, so the
  // port stands in where it is left empty: what runs side by side does not meet.
  std::string identity;
  std::uint32_t firstSession = 0;  // number of the first session, so that two lives differ
};

// One request as it came in, for tests to look at.
struct SeenRequest {
  std::uint32_t message = 0;        // message code; 1 and 2 for the relay's two
  std::vector<std::uint8_t> bytes;  // the whole frame or packet
};

// Starts listening on an ephemeral loopback port when made; stops, with all its connections and
// threads, when destroyed. Thread-safe.
class StandIn {
 public:
  // Throws std::exception if the folder is missing, the dialect unknown or the port taken.
  explicit StandIn(Options options);
  ~StandIn();
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

  std::uint16_t RelayPort() const;

  // The eight variables that a client needs, names and values; identity as told above, "user", and
  // application number 12 (coded "DBDC").
  std::vector<std::pair<std::string, std::string>> Environment(int languageId = 1033) const;

  void AddFault(const Fault& fault);
  void ClearFaults();  // and delays
  void SetDelay(const Delay& delay);
  // While it is off, new connections wait as for a service that is stuck.
  void SetAccepting(bool on);
  void SetBlockLength(std::uint32_t length);
  // Sessions issued so far are no longer known: attaching with them is refused with "login needed".
  void ForgetSessions();

  std::vector<SeenRequest> Requests() const;
  void ForgetRequests();
  std::uint32_t OpenConnections() const;  // service connections that are joined right now
  std::uint32_t MostConnections() const;  // most at a time so far

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// A package area as the sending side leaves one: complete, half-arrived and empty packages, header
// texts in the code page of the language, notes with line breaks, attachments from 0 bytes to some
// megabytes. The same seed makes the same bytes.
struct AreaOptions {
  std::string folder;
  int packages = 12;
  std::uint32_t seed = 1;
  int languageId = 1033;
};
// Throws std::exception if it cannot be written; what else lies in the folder stays.
void MakeArea(const AreaOptions& options);

}  // namespace updown::peer
