#pragma once

#include <string>

namespace updown::demo {

// What the killed client and the one who kills it agree on. Files of the service are "/f0" and so
// on for the user's, "/h0.ini" for headers; on the client's side, in the folder that it is given:
//
//   list        the task list
//   got/f0      what the user's tasks fetch
//   cache/h0.ini
constexpr int kUserFiles = 8;
constexpr int kHeaders = 6;

inline std::string UserFile(int n) { return "f" + std::to_string(n); }
inline std::string Header(int n) { return "h" + std::to_string(n) + ".ini"; }

}  // namespace updown::demo
