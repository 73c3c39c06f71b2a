#pragma once

#include <string>
#include <vector>

namespace updown::demo {

// What a client that is killed and the one who kills it agree on. On the service all things lie
// right below "/"; on the client's side, in the folder that it is given:
//
//   things      what there is to fetch, a line for each: its kind and its name
//   list        the task list
//   got/f0      what the user's tasks fetch, files and folders
//   cache/h0.ini
struct Thing {
  enum class Kind { File, Folder, Header };
  Kind kind = Kind::File;
  std::string name;

  std::string Remote() const { return "/" + name; }
  std::string Local(const std::string& folder) const {
    return folder + (kind == Kind::Header ? "/cache/" : "/got/") + name;
  }
  bool IsUsers() const { return kind != Kind::Header; }
};
using Things = std::vector<Thing>;

// Throws std::runtime_error if the file cannot be had.
void WriteThings(const std::string& folder, const Things& things);
Things ReadThings(const std::string& folder);

}  // namespace updown::demo
