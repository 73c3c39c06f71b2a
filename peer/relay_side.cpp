#include "peer/relay_side.h"

#include <array>
#include <string>
#include <string_view>

namespace updown::peer {

namespace {

// A packet: version, code, total length in two bytes, client id in four (low byte first; not looked
// at), a reserved byte, the kind, the status in two bytes, and a list of attributes.
constexpr std::size_t kHeadSize = 12;
constexpr std::uint8_t kVersion = 2;
constexpr std::uint8_t kRequest = 18;
constexpr std::uint8_t kReplyCode = 19;
constexpr std::uint8_t kResolve = 129;
constexpr std::uint8_t kConnectSilently = 134;

constexpr std::uint8_t kCommandTag = 96;
constexpr std::uint8_t kNameTag = 97;
constexpr std::uint8_t kAddressesTag = 98;
constexpr std::uint8_t kApplicationTag = 99;
constexpr std::uint8_t kTargetTag = 100;
constexpr std::uint8_t kNumberTag = 110;

constexpr std::string_view kServiceAddress{"127.0.0.1\0", 10};
constexpr std::string_view kNoAddress{"\0", 1};
constexpr std::string_view kTargetStart = "127.0.0.1:";
constexpr std::uint16_t kUnreachable = 5;
constexpr std::size_t kOversizedReply = 4096;  // a client takes less than 2048 bytes
constexpr std::chrono::milliseconds kPatience{60'000};

struct Packet {
  Bytes bytes;
  std::uint8_t Kind() const { return bytes[9]; }
  View Body() const { return View(bytes).subspan(kHeadSize); }
};

std::optional<Packet> ReceivePacket(Connection& connection) {
  Packet packet;
  packet.bytes.resize(kHeadSize);
  if (!connection.ReceiveExact(packet.bytes.data(), kHeadSize, kPatience)) return std::nullopt;
  const std::size_t total = Number16At(packet.bytes, 2);
  if (packet.bytes[0] != kVersion || packet.bytes[1] != kRequest || total < kHeadSize) {
    return std::nullopt;
  }
  packet.bytes.resize(total);
  if (!connection.ReceiveExact(packet.bytes.data() + kHeadSize, total - kHeadSize, kPatience)) {
    return std::nullopt;
  }
  return packet;
}

Bytes ReplyPacket(const Packet& request, std::uint8_t code, std::uint16_t status, View list) {
  Bytes reply{kVersion, code};
  PutNumber16(reply, static_cast<std::uint16_t>(kHeadSize + list.size()));
  PutBytes(reply, View(request.bytes).subspan(4, 4));
  reply.push_back(0);
  reply.push_back(request.Kind());
  PutNumber16(reply, status);
  PutBytes(reply, list);
  return reply;
}

bool IsDecimal(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

Bytes AddressList(const World& world, const List& request, const std::optional<Fault>& fault) {
  if (fault && fault->kind == Fault::Kind::BadList) return {kAddressesTag, 0xFF, 0xFF, '1'};
  if (fault && fault->kind == Fault::Kind::NoCode) return ListWriter().End();
  if (fault && fault->kind == Fault::Kind::Oversized) {
    return ListWriter().PutText(kAddressesTag, std::string(kOversizedReply, '1')).End();
  }
  const bool known = request.Text(kNameTag) == world.options.serviceName;
  return ListWriter().PutText(kAddressesTag, known ? kServiceAddress : kNoAddress).End();
}

void ServeResolve(World& world, Connection& connection, const Packet& packet, const List& request) {
  const auto fault = world.faults.Meet(message::kRelayResolve);
  if (request.Text(kCommandTag) != "Resolve" || !IsDecimal(request.Text(kApplicationTag))) return;
  if (fault && fault->kind == Fault::Kind::DropBefore) return;
  if (fault && fault->kind == Fault::Kind::Stall) return connection.WaitForClose();
  if (!connection.Pause(world.delays.Of(message::kRelayResolve))) return;
  const bool wrong = fault && fault->kind == Fault::Kind::WrongCode;
  const auto code = wrong ? static_cast<std::uint8_t>(fault->code) : kReplyCode;
  const Bytes reply = ReplyPacket(packet, code, 0, AddressList(world, request, fault));
  const bool half = fault && fault->kind == Fault::Kind::DropInside;
  connection.Send(View(reply).first(half ? reply.size() / 2 : reply.size()));
}

std::uint16_t ConnectStatus(const List& request) {
  const std::string target = request.Text(kTargetTag);
  const bool reachable =
      target.starts_with(kTargetStart) && IsDecimal(target.substr(kTargetStart.size()));
  const bool complete =
      IsDecimal(request.Text(kApplicationTag)) && request.Number32(kNumberTag).has_value();
  return reachable && complete ? 0 : kUnreachable;
}

// Only the kind that a client uses today gets no reply: the service's bytes follow at once.
bool ServeConnect(World& world, Connection& connection, const Packet& packet, const List& request) {
  const auto fault = world.faults.Meet(message::kRelayConnect);
  std::uint16_t status = ConnectStatus(request);
  if (fault && fault->kind == Fault::Kind::Stall) {
    connection.WaitForClose();
    return false;
  }
  if (!connection.Pause(world.delays.Of(message::kRelayConnect))) return false;
  if (fault && fault->kind == Fault::Kind::WrongCode) {
    status = static_cast<std::uint16_t>(fault->code);
  } else if (fault) {
    return false;
  }
  if (packet.Kind() != kConnectSilently &&
      !connection.Send(ReplyPacket(packet, kReplyCode, status, {}))) {
    return false;
  }
  return status == 0;
}

}  // namespace

bool ServeRelay(World& world, Connection& connection) {
  const auto packet = ReceivePacket(connection);
  if (!packet) return false;
  const auto request = List::Read(packet->Body());
  if (!request) return false;
  const bool resolve = packet->Kind() == kResolve;
  world.requests.Add(resolve ? message::kRelayResolve : message::kRelayConnect, packet->bytes);
  if (!resolve) return ServeConnect(world, connection, *packet, *request);
  ServeResolve(world, connection, *packet, *request);
  return false;
}

}  // namespace updown::peer
