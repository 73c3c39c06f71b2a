#pragma once

#include <string>

namespace updown {

// How a transfer ended.
struct TransferResult {
  int code = 0;         // of result_codes.h; 0: all is there
  int systemError = 0;  // errno of the file operation that failed, or 0
  std::string path;     // UTF-8, the local file or folder that it failed at; may be empty
};

}  // namespace updown
