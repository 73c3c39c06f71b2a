#pragma once

#include <string>

#include "tests/wire/wire_bytes.h"

namespace updown::testing {

// Replies of the service, framed. The first dialect's carry the version attribute 10.
inline std::string Framed(const std::string& list) { return Number(list.size()) + list; }

inline std::string Attribute(char tag, const std::string& value) {
  return std::string(1, tag) + Number(value.size()).substr(2) + value;
}

inline std::string Reply(std::size_t code, const std::string& data, bool version) {
  return Framed(Attribute(1, Number(code)) + (data.empty() ? "" : Attribute(2, data)) +
                (version ? Wire("0A 0004 01000000") : "") + '\xFF');
}
inline std::string First(std::size_t code, const std::string& data = {}) {
  return Reply(code, data, true);
}
inline std::string Second(std::size_t code, const std::string& data = {}) {
  return Reply(code, data, false);
}

}  // namespace updown::testing
