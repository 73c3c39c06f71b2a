#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace updown {

// What is wrong with the variables that the parent application sets. The start goes on all the
// same: each has a value that stands in, or shows as a connection that cannot be made.
struct LaunchFault {
  std::string name;
  bool missing;  // else it is there and cannot be used
};
std::vector<LaunchFault> FindLaunchFaults();

// From the request of one block to that of the next of the same file: milliseconds, 0 for no
// waiting. What is no number, or more than an hour, changes nothing.
std::chrono::milliseconds ReadBlockPace();

}  // namespace updown
