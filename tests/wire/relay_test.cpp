#include "wire/relay.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "platform/environment.h"
#include "tests/wire/loopback.h"
#include "tests/wire/scripted_peer.h"
#include "tests/wire/wire_bytes.h"

namespace updown {
namespace {

using testing::Listener;
using testing::Loopback;
using testing::PlayScript;
using testing::Step;
using testing::Wire;

// A relay that plays one step on each connection, in the order accepted.
class FakeRelay {
 public:
  explicit FakeRelay(std::vector<Step> connections)
      : thread_([this, connections = std::move(connections)] {
          for (const Step& step : connections) {
            const UniqueFd socket = listener_.Accept();
            fault_ += PlayScript(socket.Get(), {step}, 0);
          }
        }) {}
  ~FakeRelay() { Finish(); }
  FakeRelay(const FakeRelay&) = delete;
  FakeRelay& operator=(const FakeRelay&) = delete;

  std::string Finish() {
    if (thread_.joinable()) {
      thread_.join();
    }
    return fault_;
  }
  RelayParameters Parameters() const {
    return {.relayPort = listener_.Port(),
            .relayAddress = Loopback(),
            .clientId = 1,
            .applicationNumber = 7,
            .attribute110 = 0x01020304};
  }

 private:
  Listener listener_;
  std::string fault_;
  std::thread thread_;
};

const std::string kResolveFs =
    Wire("02 12 0020 01000000 00 81 0000  60 0007 'Resolve'  61 0002 'fs'  63 0001 '7'  FF");

Ipv4Address Address(const char* dotted) { return inet_addr(dotted); }

TEST(Relay, ResolveRepliesTable) {
  struct Case {
    const char* reply;
    int result;
    std::vector<Ipv4Address> addresses;
  };
  const Ipv4Address none = INADDR_NONE;
  const Case cases[] = {
      {"02 13 0020 00000000 00 81 0000 62 0010 '1.2.3.4,5.6.7.8' 00 FF",
       0,
       {Address("1.2.3.4"), Address("5.6.7.8")}},
      {"02 13 0020 00000000 00 81 0005 62 0010 '1.2.3.4' 00 '5.6.7.8' 00 FF",
       0,
       {Address("1.2.3.4"), Address("5.6.7.8")}},
      {"02 13 001A 00000000 00 81 0000 62 000A 'x,1.2.3.4,' FF", 0, {none, Address("1.2.3.4")}},
      {"02 13 0017 00000000 00 81 0000 62 0007 '1.2.3.4' FF", 0, {none}},
      {"02 13 0011 00000000 00 81 0000 62 0001 00 FF", 0, {}},
      {"02 13 000D 00000000 00 81 0000 FF", -1, {}},
      {"02 13 000C 00000000 00 81 0000", -1, {}},
      {"02 13 000F 00000000 00 81 0000 62 0009", -1, {}},
      {"02 13 0800", -1, {}},
      {"02 13 000B", -1, {}},
      {"03 13 0020", -1, {}},
      {"02 12 0020", -1, {}},
      {"02 13 00", -1, {}},
      {"02 13 0020 00000000 00 81 0000 62 0010 '1.2", -1, {}},
  };
  for (const Case& example : cases) {
    FakeRelay relay({{kResolveFs, Wire(example.reply)}});
    std::vector<Ipv4Address> addresses;
    EXPECT_EQ(ResolveThroughRelay("fs", addresses, relay.Parameters()), example.result)
        << example.reply;
    EXPECT_EQ(addresses, example.addresses) << example.reply;
    EXPECT_EQ(relay.Finish(), "") << example.reply;
  }
}

TEST(Relay, ResolveRefusesALongName) {
  std::vector<Ipv4Address> addresses;
  FakeRelay relay(std::vector<Step>(1));
  EXPECT_EQ(ResolveThroughRelay(std::string(1000, 'n'), addresses, relay.Parameters()), -1);
}

TEST(Relay, ConnectKinds) {
  const ServiceTarget target{Address("10.0.0.9"), 8080};
  const std::string list = "63 0001 '7' 64 000D '10.0.0.9:8080' 66 0002 'hi' 6E 0004 01020304 FF";
  const std::string request = Wire("02 12 002D 01000000 00 86 0000" + list);
  FakeRelay relay(
      {{request, ""},
       {Wire("02 12 002D 01000000 00 85 0000" + list), Wire("02 13 000C 00000000 00 85 0000")},
       {"", Wire("02 13 000C 00000000 00 85 0005")},
       {"", Wire("02 13 000C 00")}});
  const auto connect = [&](int transport, std::uint8_t kind) {
    return RelayConnect(relay.Parameters(), "hi", target, transport, kind);
  };
  for (const std::uint8_t kind : {kKindConnect, std::uint8_t{133}}) {
    const int socket = connect(kTransportTcp, kind);
    ASSERT_GT(socket, 0);
    EXPECT_NE(fcntl(socket, F_GETFL) & O_NONBLOCK, 0);
    CloseSocket(socket);
  }
  EXPECT_EQ(connect(kTransportTcp, 133), -1);
  EXPECT_EQ(connect(kTransportTcp, 133), -1);
  EXPECT_EQ(connect(2, kKindConnect), -1);
  EXPECT_EQ(relay.Finish(), "");
  EXPECT_EQ(
      RelayConnect(relay.Parameters(), std::string(500, 'x'), target, kTransportTcp, kKindConnect),
      -1);
}

TEST(Relay, ReplyHeads) {
  const auto judged = [](const char* head) {
    const std::string bytes = Wire(head);
    return RelayReplyResult(AsBytes(bytes));
  };
  EXPECT_EQ(judged("02 13 000C 00000000 00 86 0000"), 0);
  EXPECT_EQ(judged("02 13 000C 00000000 00 86 0005"), -5);
  EXPECT_EQ(judged("02 13 000D 00000000 00 86 0000"), kWrongRelayHead);
  EXPECT_EQ(judged("01 13 000C 00000000 00 86 0000"), kWrongRelayHead);
  EXPECT_EQ(judged("02 12 000C 00000000 00 86 0000"), kWrongRelayHead);
}

void SetEnvironment(const RelayParameters& relay) {
  setenv(kVariableRelayPort, std::to_string(relay.relayPort).c_str(), 1);
  setenv(kVariableRelayAddress, "127.0.0.1", 1);
  setenv(kVariableRelayClientId, "67305985", 1);  // 01 02 03 04 in memory
  setenv(kVariableAttribute110, "258", 1);
  setenv(kVariableApplication, "DBDC", 1);
}

TEST(ServiceConnect, WithoutARelayPortThereIsNoRelay) {
  unsetenv(kVariableRelayPort);
  EXPECT_EQ(ServiceConnect("fs", 21), 0);
  EXPECT_EQ(ResolveServiceAddress("fs"), 0U);
  setenv(kVariableRelayPort, "", 1);
  EXPECT_EQ(ServiceConnect("fs", 21), 0);
}

TEST(ServiceConnect, JoinsABlockingSocketToTheResolvedAddress) {
  struct Case {
    const char* reply;
    const char* request;
  };
  const Case cases[] = {
      {"02 13 0018 00000000 00 81 0000 62 0008 '1.2.3.4' 00 FF",
       "02 12 0028 01020304 00 86 0000 63 0002 '12' 64 000C '1.2.3.4:8080'"},
      {"02 13 0011 00000000 00 81 0000 62 0001 00 FF",
       "02 12 0028 01020304 00 86 0000 63 0002 '12' 64 000C '0.0.0.0:8080'"},
      {"", "02 12 0028 01020304 00 86 0000 63 0002 '12' 64 000C '0.0.0.0:8080'"},
  };
  for (const Case& example : cases) {
    FakeRelay relay(
        {{Wire("02 12 0021 01020304 00 81 0000 60 0007 'Resolve' 61 0002 'fs' 63 0002 '12' FF"),
          Wire(example.reply)},
         {Wire(std::string(example.request) + "6E 0004 00000102 FF"), "hello"}});
    SetEnvironment(relay.Parameters());
    const int socket = ServiceConnect("fs", 8080);
    ASSERT_GT(socket, 0);
    EXPECT_EQ(fcntl(socket, F_GETFL) & O_NONBLOCK, 0);
    char first = 0;
    EXPECT_EQ(recv(socket, &first, 1, 0), 1);
    EXPECT_EQ(first, 'h');
    CloseSocket(socket);
    EXPECT_EQ(relay.Finish(), "");
  }
}

}  // namespace
}  // namespace updown
