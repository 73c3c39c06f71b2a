#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "service/operations.h"

namespace updown {

// How a request on the shared session ended.
struct SessionResult {
  enum class End {
    Done,
    Failed,     // `report` tells why
    Cancelled,  // by Session::Cancel or Stop, or by the stop of the worker that asked
    NoLogin,    // somebody gave up the login prompt; nothing to tell
  };
  End end = End::Done;
  // Failed only, as ReportText takes it: a result code without its sign, or the id of a text where
  // no session could be opened.
  std::uint32_t report = 0;

  bool Done() const { return end == End::Done; }
};

// The files of a folder, "." and ".." among them. A listing that broke off is Failed and has none.
struct ListingAnswer {
  SessionResult result;
  std::vector<DirectoryEntry> entries;
};

// What became of a removal or a renaming.
struct ChangeAnswer {
  SessionResult result;
  // The service may or may not have carried out a part of it: only a listing can tell.
  bool uncertain = false;
  // The file or folder at which it ended; empty when all of it was done, or nothing was begun.
  std::string failedName;
};

// Who wants a request. Only what a person does may bring up a login prompt again that was given up.
enum class AskedBy { Person, Program };

// One answer of the service to an opening, and what a transfer presents on a connection of its own.
struct SessionKey {
  std::string sessid;
  std::uint64_t grant = 0;  // counts the openings that the service granted; 0: none so far
};

}  // namespace updown
