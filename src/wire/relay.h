#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "wire/sockets.h"

namespace updown {

// The road to the file service leads through a relay, whose address and our identity towards it
// come from the environment at each connection. The relay resolves names in one short exchange,
// and joins a second connection to the service.

// What the environment says. Numbers are decimal texts there; a variable that is missing or does
// not fit 260 bytes reads as empty.
struct RelayParameters {
  std::uint16_t relayPort = 0;
  Ipv4Address relayAddress = 0;
  std::uint32_t clientId = 0;          // bytes 4 to 7 of the head, in this machine's order
  std::int32_t applicationNumber = 0;  // attribute 99, as decimal text
  std::uint32_t attribute110 = 0;
};
// Nothing if the variable of the relay's port yields nothing.
std::optional<RelayParameters> ReadRelayParameters();

struct ServiceTarget {
  Ipv4Address address = 0;
  std::uint16_t port = 0;  // host order
};

inline constexpr int kTransportTcp = 1;  // the only one that works
inline constexpr std::uint8_t kKindResolve = 129;
inline constexpr std::uint8_t kKindConnect = 134;

// What bounds a call below, any of them on any thread: a time for all of it, however many steps and
// connections it takes, and a group as in sockets.h, whose cut ends it at once.
struct RelayLimits {
  std::uint32_t deadline = SystemTicks().Now() + kSocketSpan;
  SocketGroup* group = nullptr;
};

// Resolves the name and has the relay connect a socket to it: a non-blocking socket joined to the
// service, a member of the group. 0 if there is no relay in the environment, a code of sockets.h on
// any other failure. A name that cannot be resolved does not end the road: the relay is asked for
// 0.0.0.0.
int ServiceConnect(std::string_view serverName, std::uint16_t port, const RelayLimits& limits = {});

// The first address of the name, 0 if there is none or anything failed.
Ipv4Address ResolveServiceAddress(std::string_view serverName, const RelayLimits& limits = {});

// One resolve exchange; appends to `addressList`. 0 or -1.
int ResolveThroughRelay(std::string_view name, std::vector<Ipv4Address>& addressList,
                        const RelayParameters& relay, const RelayLimits& limits = {});

// Returns a connected socket, still non-blocking, or a code of sockets.h. With kKindConnect no
// reply is read.
int RelayConnect(const RelayParameters& relay, std::string_view extraText,
                 const ServiceTarget& target, int transport, std::uint8_t kind,
                 const RelayLimits& limits = {});

inline constexpr std::size_t kResolveReplySize = 2048;  // a longer reply is refused

// What a resolve exchange has brought: the reply, head included, and zeros up to the buffer's end.
// Appends to `addressList`. 0 or -1.
int DecodeResolveReply(std::span<const std::uint8_t, kResolveReplySize> packet,
                       std::vector<Ipv4Address>& addressList);

// What the head of a reply to RelayConnect says, for the kinds that have one: 0, the status
// negated, or kWrongRelayHead.
int RelayReplyResult(std::span<const std::uint8_t> head);

}  // namespace updown
