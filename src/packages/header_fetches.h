#pragma once

#include <string>

namespace updown {

// Brings header files of packages into the cache, by transfers that nobody sees. Main thread only.
class HeaderFetches {
 public:
  virtual ~HeaderFetches() = default;

  // Begins to fetch `file` of the folder "/" + `package`; the end is told to the area with
  // HeaderEnded, later. False if no transfer can be made for it. Names are those of the service.
  virtual bool FetchHeader(const std::string& package, const std::string& file) = 0;
};

}  // namespace updown
