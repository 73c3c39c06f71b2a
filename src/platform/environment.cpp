#include "platform/environment.h"

#include <cstdlib>

namespace updown {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

std::optional<std::string> ReadVariable(const char* name, std::size_t capacity) {
  const char* value = std::getenv(name);
  if (value == nullptr) {
    return std::nullopt;
  }
  std::string bytes(value);
  if (bytes.size() >= capacity) {
    return std::nullopt;
  }
  return bytes;
}

std::int32_t LeadingNumber(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) {
    text.remove_prefix(1);
  }
  bool negative = false;
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text.remove_prefix(1);
  }
  std::uint32_t number = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    number = number * 10 + static_cast<std::uint32_t>(text.front() - '0');
  }
  return static_cast<std::int32_t>(negative ? 0U - number : number);
}

}  // namespace updown
