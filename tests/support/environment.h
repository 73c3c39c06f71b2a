#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace updown::test {

// Sets variables for the length of its scope. Made before, and gone after, any thread that reads
// them.
class ScopedEnvironment {
 public:
  explicit ScopedEnvironment(const std::vector<std::pair<std::string, std::string>>& variables) {
    for (const auto& [name, value] : variables) {
      const char* before = getenv(name.c_str());
      before_.emplace_back(name,
                           before == nullptr ? std::nullopt : std::optional<std::string>(before));
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  ~ScopedEnvironment() {
    for (const auto& [name, value] : before_) {
      value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

}  // namespace updown::test
