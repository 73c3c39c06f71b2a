#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wire/relay.h"

// What a relay answers: to a name, in a buffer of zeros as it is received, and to a connection.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace updown;
  std::array<std::uint8_t, kResolveReplySize> packet{};
  std::copy_n(data, std::min(size, packet.size()), packet.begin());
  std::vector<Ipv4Address> addresses;
  const int result = DecodeResolveReply(packet, addresses);
  // An address takes a byte and what parts it from the next one.
  if ((result != 0 && (result != -1 || !addresses.empty())) || addresses.size() > packet.size()) {
    std::abort();
  }
  const int joined = RelayReplyResult({data, size});
  if (joined > 0 || (joined < -65535 && joined != kWrongRelayHead)) {
    std::abort();
  }
  return 0;
}
