#include "wire/relay.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>

#include "platform/environment.h"
#include "wire/attributes.h"
#include "wire/tags.h"
#include "wire/text_coding.h"

namespace updown {

namespace {

// Head of a relay packet:
//
//   version 2 | code | total length (2, big-endian) | client id (4, little-endian)
//   | 0 | kind | status (2, big-endian)
constexpr std::size_t kHeadSize = 12;
constexpr std::uint8_t kRelayVersion = 2;
constexpr std::uint8_t kRequestCode = 18;
constexpr std::uint8_t kReplyCode = 19;

constexpr std::size_t kResolveRequestSize = 1024;
constexpr std::size_t kConnectRequestSize = 512;
constexpr std::size_t kReplyStart = 4;  // version, code and length: what tells the rest's size

constexpr std::size_t kVariableSize = 260;

Ipv4Address AddressOf(std::string_view text) {
  return inet_addr(std::string(text.substr(0, text.find('\0'))).c_str());
}

std::string DottedText(Ipv4Address address) {
  std::array<char, INET_ADDRSTRLEN> text{};
  inet_ntop(AF_INET, &address, text.data(), text.size());
  return text.data();
}

// Puts the attribute list and the head before it into `packet`. Returns the packet's size, or a
// negative code if the list does not fit.
int BuildRequest(const AttributeTable& table, std::uint32_t clientId, std::uint8_t kind,
                 std::span<std::uint8_t> packet) {
  const int listSize = EncodeAttributes(table, packet.subspan(kHeadSize));
  if (listSize < 0) {
    return listSize;
  }
  const std::size_t total = kHeadSize + static_cast<std::size_t>(listSize);
  std::fill_n(packet.begin(), kHeadSize, std::uint8_t{0});
  packet[0] = kRelayVersion;
  packet[1] = kRequestCode;
  packet[2] = static_cast<std::uint8_t>(total >> 8);
  packet[3] = static_cast<std::uint8_t>(total & 0xFF);
  for (unsigned byte = 0; byte < 4; ++byte) {
    packet[4 + byte] = static_cast<std::uint8_t>(clientId >> (8 * byte));
  }
  packet[9] = kind;
  return static_cast<int>(total);
}

bool IsReplyHead(const std::uint8_t* head) {
  return head[0] == kRelayVersion && head[1] == kReplyCode;
}

// 0, or the code of a transfer of `wanted` bytes that did not move them all.
int WholeOrCode(int moved, std::size_t wanted) {
  if (moved < 0) {
    return moved;
  }
  return static_cast<std::size_t>(moved) == wanted ? 0 : kPeerClosed;
}

int ReceiveAll(int socket, std::span<std::uint8_t> bytes, std::uint32_t deadline) {
  return WholeOrCode(RecvDeadline(socket, bytes, 0, true, deadline), bytes.size());
}

int SendAll(int socket, Bytes bytes, std::uint32_t deadline) {
  return WholeOrCode(SendDeadline(socket, bytes, 0, true, deadline), bytes.size());
}

// Walks "a.b.c.d,a.b.c.d\0". `text` reaches to the end of the zeroed packet buffer, `valueSize` to
// the end of the attribute: a last address that is not closed inside it takes in what lies behind.
void AppendAddresses(std::string_view text, std::size_t valueSize,
                     std::vector<Ipv4Address>& addressList) {
  std::size_t at = 0;
  while (at < valueSize && text[at] != '\0') {
    const std::string_view rest = text.substr(at);
    const std::string_view token = rest.substr(0, rest.find_first_of(std::string_view(",\0", 2)));
    addressList.push_back(AddressOf(token));
    at += token.size() + 1;
  }
}

// As its first bytes tell; 0 for what is no reply or too long.
std::size_t ResolveReplySize(const std::uint8_t* packet) {
  const std::size_t total = ReadBigEndian16(packet + 2);
  return IsReplyHead(packet) && total >= kHeadSize && total < kResolveReplySize ? total : 0;
}

int ReadResolveReply(int socket, std::vector<Ipv4Address>& addressList, std::uint32_t deadline) {
  std::array<std::uint8_t, kResolveReplySize> packet{};
  if (ReceiveAll(socket, std::span(packet).first(kReplyStart), deadline) != 0) {
    return -1;
  }
  const std::size_t total = ResolveReplySize(packet.data());
  if (total == 0 || ReceiveAll(socket, std::span(packet).subspan(kReplyStart, total - kReplyStart),
                               deadline) != 0) {
    return -1;
  }
  return DecodeResolveReply(packet, addressList);
}

int ResolveOn(int socket, std::string_view name, std::vector<Ipv4Address>& addressList,
              const RelayParameters& relay, std::uint32_t deadline) {
  const std::string application = std::to_string(relay.applicationNumber);
  AttributeTable table;
  table.Set(tag::kCommand, "Resolve");
  table.Set(tag::kResolveName, name);
  table.Set(tag::kApplication, application);
  std::array<std::uint8_t, kResolveRequestSize> packet;
  const int size = BuildRequest(table, relay.clientId, kKindResolve, packet);
  if (size < 0) {
    return -1;
  }
  if (SendAll(socket, std::span(packet).first(static_cast<std::size_t>(size)), deadline) != 0) {
    return 0;
  }
  return ReadResolveReply(socket, addressList, deadline);
}

int BuildConnectRequest(const RelayParameters& relay, std::string_view extraText,
                        const ServiceTarget& target, std::uint8_t kind,
                        std::span<std::uint8_t> packet) {
  const std::string application = std::to_string(relay.applicationNumber);
  const std::string targetText = DottedText(target.address) + ":" + std::to_string(target.port);
  const auto number110 = BigEndian32(relay.attribute110);
  AttributeTable table;
  table.Set(tag::kApplication, application);
  table.Set(tag::kTarget, targetText);
  table.Set(tag::kExtraText, extraText);
  table.Set(tag::kNumber110, number110);
  return BuildRequest(table, relay.clientId, kind, packet);
}

int ReadConnectReply(int socket, std::uint32_t deadline) {
  std::array<std::uint8_t, kHeadSize> head{};
  const int received = ReceiveAll(socket, head, deadline);
  return received == 0 ? RelayReplyResult(head) : received;
}

}  // namespace

std::optional<RelayParameters> ReadRelayParameters() {
  const auto read = [](const char* name) {
    return ReadVariable(name, kVariableSize).value_or(std::string());
  };
  const std::string port = read(kVariableRelayPort);
  if (port.empty()) {
    return std::nullopt;
  }
  RelayParameters relay;
  relay.relayPort = static_cast<std::uint16_t>(LeadingNumber(port));
  relay.relayAddress = AddressOf(read(kVariableRelayAddress));
  relay.clientId = static_cast<std::uint32_t>(LeadingNumber(read(kVariableRelayClientId)));
  relay.attribute110 = static_cast<std::uint32_t>(LeadingNumber(read(kVariableAttribute110)));
  relay.applicationNumber =
      LeadingNumber(LetterDecode(read(kVariableApplication), kVariableSize).bytes);
  return relay;
}

int DecodeResolveReply(std::span<const std::uint8_t, kResolveReplySize> packet,
                       std::vector<Ipv4Address>& addressList) {
  const std::size_t total = ResolveReplySize(packet.data());
  if (total == 0) {
    return -1;
  }
  AttributeTable table;
  const Bytes list(packet.data() + kHeadSize, total - kHeadSize);
  if (DecodeAttributes(table, list) <= 0 || table.length[tag::kAddresses] == 0) {
    return -1;
  }
  const std::uint8_t* value = table.value[tag::kAddresses];
  const auto toEnd = static_cast<std::size_t>(packet.data() + packet.size() - value);
  AppendAddresses(AsText({value, toEnd}), table.length[tag::kAddresses], addressList);
  return 0;
}

int RelayReplyResult(std::span<const std::uint8_t> head) {
  if (head.size() != kHeadSize || !IsReplyHead(head.data()) ||
      ReadBigEndian16(&head[2]) != kHeadSize) {
    return kWrongRelayHead;
  }
  return -static_cast<int>(ReadBigEndian16(&head[10]));
}

int ServiceConnect(std::string_view serverName, std::uint16_t port, const RelayLimits& limits) {
  const std::optional<RelayParameters> relay = ReadRelayParameters();
  if (!relay) {
    return 0;
  }
  const ServiceTarget target{ResolveServiceAddress(serverName, limits), port};
  return RelayConnect(*relay, {}, target, kTransportTcp, kKindConnect, limits);
}

Ipv4Address ResolveServiceAddress(std::string_view serverName, const RelayLimits& limits) {
  const std::optional<RelayParameters> relay = ReadRelayParameters();
  std::vector<Ipv4Address> addressList;
  if (!relay || ResolveThroughRelay(serverName, addressList, *relay, limits) != 0 ||
      addressList.empty()) {
    return 0;
  }
  return addressList.front();
}

int ResolveThroughRelay(std::string_view name, std::vector<Ipv4Address>& addressList,
                        const RelayParameters& relay, const RelayLimits& limits) {
  const int socket =
      ConnectDeadline(relay.relayAddress, relay.relayPort, limits.deadline, limits.group);
  if (socket < 0) {
    return -1;
  }
  const int result = ResolveOn(socket, name, addressList, relay, limits.deadline);
  CloseSocket(socket, limits.group);
  return result;
}

int RelayConnect(const RelayParameters& relay, std::string_view extraText,
                 const ServiceTarget& target, int transport, std::uint8_t kind,
                 const RelayLimits& limits) {
  if (transport != kTransportTcp) {
    return -EPROTONOSUPPORT;
  }
  std::array<std::uint8_t, kConnectRequestSize> packet;
  const int size = BuildConnectRequest(relay, extraText, target, kind, packet);
  if (size < 0) {
    return -EMSGSIZE;
  }
  const int socket =
      ConnectDeadline(relay.relayAddress, relay.relayPort, limits.deadline, limits.group);
  if (socket < 0) {
    return socket;
  }
  int result =
      SendAll(socket, std::span(packet).first(static_cast<std::size_t>(size)), limits.deadline);
  if (result == 0 && kind != kKindConnect) {
    result = ReadConnectReply(socket, limits.deadline);
  }
  if (result != 0) {
    CloseSocket(socket, limits.group);
    return result;
  }
  return socket;
}

}  // namespace updown
