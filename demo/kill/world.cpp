#include "demo/kill/world.h"

#include <array>
#include <fstream>
#include <stdexcept>

namespace updown::demo {
namespace {

constexpr std::array<const char*, 3> kKinds{"file", "folder", "header"};

}  // namespace

void WriteThings(const std::string& folder, const Things& things) {
  std::ofstream file(folder + "/things");
  for (const Thing& thing : things) {
    file << kKinds.at(static_cast<std::size_t>(thing.kind)) << ' ' << thing.name << '\n';
  }
  if (!file.flush()) {
    throw std::runtime_error("cannot write what there is to fetch");
  }
}

Things ReadThings(const std::string& folder) {
  std::ifstream file(folder + "/things");
  Things things;
  for (std::string kind, name; file >> kind >> name;) {
    std::size_t number = 0;
    while (number < kKinds.size() && kKinds[number] != kind) {
      ++number;
    }
    things.push_back({static_cast<Thing::Kind>(number), name});
  }
  if (things.empty()) {
    throw std::runtime_error("there is nothing to fetch");
  }
  return things;
}

}  // namespace updown::demo
