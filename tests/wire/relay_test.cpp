#include "wire/relay.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "platform/environment.h"
#include "tests/support/environment.h"
#include "tests/wire/loopback.h"
#include "tests/wire/scripted_peer.h"
#include "tests/wire/wire_bytes.h"

namespace updown {
namespace {

using testing::Step;
using testing::Wire;

// A relay that plays one step on each connection, in the order accepted.
class FakeRelay {
 public:
  explicit FakeRelay(std::vector<Step> connections)
      : thread_([this, connections = std::move(connections)] {
          for (const Step& step : connections) {
            fault_ += testing::PlayScript(listener_.Accept().Get(), {step}, 0);
          }
        }) {}

  std::string Finish() {
    thread_.join();
    return fault_;
  }
  RelayParameters Parameters() const {
    return {listener_.Port(), testing::Loopback(), 1, 7, 0x01020304};
  }

 private:
  testing::Listener listener_;
  std::string fault_;
  std::thread thread_;
};

Ipv4Address Address(const char* dotted) { return inet_addr(dotted); }

TEST(Relay, ResolveRepliesTable) {
  const std::vector<Ipv4Address> two = {Address("1.2.3.4"), Address("5.6.7.8")};
  const struct {
    const char* reply;
    int result;
    std::vector<Ipv4Address> addresses;
  } cases[] = {
      {"02 13 0020 00000000 00 81 0000 62 0010 '1.2.3.4,5.6.7.8' 00 FF", 0, two},
      {"02 13 0020 00000000 00 81 0005 62 0010 '1.2.3.4' 00 '5.6.7.8' 00 FF", 0, two},
      {"02 13 001A 00000000 00 81 0000 62 000A 'x,1.2.3.4,' FF", 0, {INADDR_NONE, two[0]}},
      {"02 13 0017 00000000 00 81 0000 62 0007 '1.2.3.4' FF", 0, {INADDR_NONE}},
      {"02 13 0011 00000000 00 81 0000 62 0001 00 FF", 0, {}},
      {"02 13 000D 00000000 00 81 0000 FF", -1, {}},
      {"02 13 000F 00000000 00 81 0000 62 0009", -1, {}},
      {"02 13 0800", -1, {}},
      {"03 13 0020", -1, {}},
      {"02 12 0020", -1, {}},
      {"02 13 0020 00000000 00 81 0000 62 0010 '1.2", -1, {}},
  };
  const std::string request =
      Wire("02 12 0020 01000000 00 81 0000  60 0007 'Resolve'  61 0002 'fs'  63 0001 '7'  FF");
  for (const auto& example : cases) {
    SCOPED_TRACE(example.reply);
    FakeRelay relay({{request, Wire(example.reply)}});
    std::vector<Ipv4Address> addresses;
    EXPECT_EQ(ResolveThroughRelay("fs", addresses, relay.Parameters()), example.result);
    EXPECT_EQ(addresses, example.addresses);
    EXPECT_EQ(relay.Finish(), "");
  }
}

TEST(Relay, ConnectKinds) {
  const struct {
    std::uint8_t kind;
    const char* reply;
    bool joined;
  } cases[] = {
      {kKindConnect, "", true},
      {133, "02 13 000C 00000000 00 85 0000", true},
      {133, "02 13 000C 00000000 00 85 0005", false},
      {133, "02 13 000D 00000000 00 85 0000", false},
      {133, "01 13 000C 00000000 00 85 0000", false},
      {133, "02 13 000C 00", false},
  };
  const ServiceTarget target{Address("10.0.0.9"), 8080};
  for (const auto& example : cases) {
    SCOPED_TRACE(example.reply);
    const std::string head =
        Wire("02 12 002D 01000000 00") + static_cast<char>(example.kind) + Wire("0000");
    FakeRelay relay({{head + Wire("63 0001 '7' 64 000D '10.0.0.9:8080' 66 0002 'hi'"
                                  "6E 0004 01020304 FF"),
                      Wire(example.reply)}});
    const RelayParameters parameters = relay.Parameters();
    const int socket = RelayConnect(parameters, "hi", target, kTransportTcp, example.kind);
    EXPECT_EQ(socket > 0, example.joined);
    if (socket > 0) {
      CloseSocket(socket);
    }
    EXPECT_EQ(relay.Finish(), "");
    EXPECT_LT(RelayConnect(parameters, "hi", target, 2, example.kind), 0);
    EXPECT_LT(RelayConnect(parameters, std::string(500, 'x'), target, 1, example.kind), 0);
  }
}

TEST(ServiceConnect, JoinsASocketToTheResolvedAddress) {
  const struct {
    const char* reply;
    const char* target;
  } cases[] = {
      {"02 13 0018 00000000 00 81 0000 62 0008 '1.2.3.4' 00 FF", "64 000C '1.2.3.4:8080'"},
      {"02 13 0011 00000000 00 81 0000 62 0001 00 FF", "64 000C '0.0.0.0:8080'"},
      {"", "64 000C '0.0.0.0:8080'"},
  };
  for (const auto& [reply, target] : cases) {
    const std::string connect = "02 12 0028 01020304 00 86 0000 63 0002 '12'";
    FakeRelay relay(
        {{Wire("02 12 0021 01020304 00 81 0000 60 0007 'Resolve' 61 0002 'fs' 63 0002 '12' FF"),
          Wire(reply)},
         {Wire(connect + target + "6E 0004 00000102 FF"), "h"}});
    const test::ScopedEnvironment environment(
        {{kVariableRelayPort, std::to_string(relay.Parameters().relayPort)},
         {kVariableRelayAddress, "127.0.0.1"},
         {kVariableRelayClientId, "67305985"},  // 01 02 03 04 in memory
         {kVariableAttribute110, "258"},
         {kVariableApplication, "DBDC"}});
    const int socket = ServiceConnect("fs", 8080);
    ASSERT_GT(socket, 0);
    std::array<std::uint8_t, 1> first{};
    EXPECT_EQ(RecvDeadline(socket, first, 0, true, SystemTicks().Now() + kSocketSpan), 1);
    CloseSocket(socket);
    EXPECT_EQ(relay.Finish(), "");
  }
  EXPECT_EQ(ServiceConnect("fs", 8080), 0) << "no relay in the environment";
}

}  // namespace
}  // namespace updown
