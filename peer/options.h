#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace updown::peer {

// What a stand-in is to be like, and what it saw.

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

}  // namespace updown::peer
