#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wire/attributes.h"

// Whatever decodes must stay inside the input and survive encoding and decoding once more.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace updown;
  AttributeTable table;
  const int consumed = DecodeAttributes(table, {data, size});
  if (consumed < 0) {
    return 0;
  }
  std::vector<std::uint8_t> encoded(size + 1);
  const int written = EncodeAttributes(table, encoded);
  AttributeTable again;
  if (written < 1 || written > consumed + 1 ||
      DecodeAttributes(again, Bytes(encoded).first(static_cast<std::size_t>(written))) != written) {
    std::abort();
  }
  for (unsigned tag = 1; tag < kEndMark; ++tag) {
    const auto narrowTag = static_cast<std::uint8_t>(tag);
    if (again.Text(narrowTag) != table.Text(narrowTag)) {
      std::abort();
    }
  }
  return 0;
}
