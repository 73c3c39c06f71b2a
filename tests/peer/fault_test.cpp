#include <gtest/gtest.h>

#include "peer/faults.h"
#include "tests/peer/raw_client.h"

namespace updown::peer::test {
namespace {

using Kind = Fault::Kind;

class FaultTest : public ::testing::Test {
 protected:
  FaultTest() {
    options.root = area.path.string();
    WriteFile(area.path / "f", "0123456789");
  }

  TemporaryFolder area;
  Options options;
};

const std::string kBlockData =
    Attribute(193, Number(0)) + Attribute(194, Number(0)) + Attribute(195, "/f") + '\xFF';

// What comes back for one request, up to the end of the connection or of `size` bytes.
struct Case {
  Kind kind;
  std::uint32_t message;
  std::string received;
  bool closed;
};

TEST_F(FaultTest, SpoilsTheReplyAsAsked) {
  StandIn standIn(options);
  const std::string yes = Hex("00 00 00 0F 01 00 04 00 00 80 00 0A 00 04 01 00 00 00 FF");
  const std::string blockHead =
      Hex("00 00 00 16 01 00 04 00 00 80 00 02 00 04 00 00 00 0A 0A 00 04 01 00 00 00 FF");
  std::string emptyBlock = blockHead;
  emptyBlock[17] = 0;
  const std::vector<Case> cases{
      {Kind::DropBefore, 4100, "", true},
      {Kind::DropInside, 4100, yes.substr(0, 9), true},
      {Kind::DropInside, 4104, blockHead + "01234", true},
      {Kind::DropAfter, 4104, blockHead + "0123456789", true},
      {Kind::WrongCode, 4100, Hex("00 00 00 0F 01 00 04 00 00 80 07 0A 00 04 01 00 00 00 FF"),
       false},
      {Kind::BadList, 4104, Hex("00 00 00 0A 01 00 04 00 00 80 00 02 FF FF"), false},
      {Kind::NoCode, 4101, Hex("00 00 00 08 0A 00 04 01 00 00 00 FF"), false},
      {Kind::EmptyBlock, 4104, emptyBlock, false},
  };
  for (const Case& one : cases) {
    standIn.AddFault({one.kind, one.message, 0, 1, 32775});
    const WithSession client(standIn);
    client.Send(Request(one.message, one.message == 4104 ? kBlockData : "/new"));
    EXPECT_EQ(ToHex(one.received), ToHex(client.Receive(one.received.size())));
    if (one.closed) {
      EXPECT_TRUE(client.IsClosed());
    } else {
      EXPECT_EQ(32768U, client.Exchange(4106, "/f").code);
    }
    standIn.ClearFaults();
    std::filesystem::remove(area.path / "new");
  }
}

TEST_F(FaultTest, SpoilsListings) {
  options.faults = {{Kind::BadEntry, 4099, 0, 1, 0},
                    {Kind::CutListing, 4099, 1, 1, 0},
                    {Kind::Oversized, 4099, 2, 1, 0}};
  const StandIn standIn(options);
  const WithSession client(standIn);
  client.Exchange(4099, "/");
  for (int good = 0; good < 3; ++good) EXPECT_GT(client.ReceiveFrame().size(), 40U);
  EXPECT_EQ(Hex("00 00 00 08 10 00 04") + "bare\xFF", client.ReceiveFrame());
  EXPECT_EQ(Hex("00 00 00 00"), client.ReceiveFrame());

  const WithSession second(standIn);
  second.Exchange(4099, "/");
  for (int good = 0; good < 2; ++good) EXPECT_GT(second.ReceiveFrame().size(), 40U);
  EXPECT_TRUE(second.IsClosed());
  client.Send(Request(4099, "/"));
  EXPECT_GT(client.ReceiveFrame().size(), 32768U);
}

TEST_F(FaultTest, RelayGoesWrongToo) {
  StandIn standIn(options);
  const std::string resolve = Hex("02 12 00 29 01 00 00 00 00 81 00 00") +
                              Attribute(96, "Resolve") + Attribute(97, "fileservice") +
                              Attribute(99, "7") + '\xFF';
  const auto length = [&](Kind kind) {
    standIn.AddFault({kind, 1, 0, 1, 0});
    const RawClient client(standIn.RelayPort());
    client.Send(resolve);
    return client.Receive(10'000).size();
  };
  EXPECT_EQ(0U, length(Kind::DropBefore));
  EXPECT_EQ(13U, length(Kind::DropInside));
  EXPECT_GE(length(Kind::Oversized), 2048U);
  EXPECT_EQ(26U, length(Kind::DropAfter));
  standIn.AddFault({Kind::DropBefore, 2, 0, 1, 0});
  EXPECT_TRUE(Joined(standIn).IsClosed());
}

TEST(FaultPlan, StrikesAfterSkippingAndThenSoManyTimes) {
  FaultPlan plan;
  plan.Add({Kind::Stall, 4104, 2, 2, 0});
  plan.Add({Kind::DropAfter, 0, 5, 0, 0});
  std::string struck;
  for (int i = 0; i < 8; ++i) {
    EXPECT_FALSE(plan.Meet(1));
    const auto fault = plan.Meet(4104);
    struck += !fault ? '-' : fault->kind == Kind::Stall ? 's' : 'd';
  }
  EXPECT_EQ("--ss-ddd", struck);
}

TEST(ParseFault, ReadsWhatTheHelpPromises) {
  const auto fault = ParseFault("wrong-code:4099:skip=2:times=0:code=32775");
  ASSERT_TRUE(fault);
  EXPECT_EQ(Kind::WrongCode, fault->kind);
  EXPECT_EQ(4099U, fault->message);
  EXPECT_EQ(2U, fault->skip);
  EXPECT_EQ(0U, fault->times);
  EXPECT_EQ(32775U, fault->code);
  for (const char* const bad : {"", "stall", "stall:", "stal:1", "stall:x", "stall:1:skip",
                                "stall:1:skip=-1", "stall:1:skip=1x", "stall:1:slip=1"}) {
    EXPECT_FALSE(ParseFault(bad)) << bad;
  }
}

}  // namespace
}  // namespace updown::peer::test
