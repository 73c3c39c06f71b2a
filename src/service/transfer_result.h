#pragma once

#include <string>

namespace updown {

// How a transfer ended, with what a person needs to know why.
struct TransferResult {
  int code = 0;         // of result_codes.h
  int systemError = 0;  // the errno behind the code; 0 if the system had no part in it
  std::string path;     // the local or the service's path that `code` is about; empty on success
};

}  // namespace updown
