#include <gtest/gtest.h>

#include "peer/faults.h"
#include "tests/peer/raw_client.h"

namespace updown::peer::test {
namespace {

using Kind = Fault::Kind;

class FaultTest : public ::testing::Test {
 protected:
  FaultTest() {
    options.root = area.Path();
    WriteFile(area.File("f"), "0123456789");
  }

  TemporaryFolder area;
  Options options;
};

TEST_F(FaultTest, SpoilsTheReplyAsAsked) {
  StandIn standIn(options);
  const std::string blockHead = "00000016 01 0004 00008000 02 0004 0000000A 0A 0004 01000000 FF";
  // What comes back for one request, up to the end of the connection or so many bytes.
  struct Case {
    Kind kind;
    std::uint32_t message;
    std::string received;
    bool closed;
  };
  const Case cases[] = {
      {Kind::DropBefore, 4100, "", true},
      {Kind::DropInside, 4100, "0000000F 01 0004 0000", true},
      {Kind::DropInside, 4104, blockHead + "'01234'", true},
      {Kind::DropAfter, 4104, blockHead + "'0123456789'", true},
      {Kind::WrongCode, 4100, "0000000F 01 0004 00008007 0A 0004 01000000 FF", false},
      {Kind::BadList, 4104, "0000000A 01 0004 00008000 02 FFFF", false},
      {Kind::NoCode, 4101, "00000008 0A 0004 01000000 FF", false},
      {Kind::EmptyBlock, 4104, "00000016 01 0004 00008000 02 0004 00000000 0A 0004 01000000 FF",
       false},
  };
  for (const auto& [kind, message, received, closed] : cases) {
    standIn.AddFault({kind, message, 0, 1, 32775});
    const WithSession client(standIn);
    client.Send(Request(message, message == 4104 ? BlockList(0, 0, "/f") : "/new"));
    EXPECT_EQ(Wire(received), client.Receive(Wire(received).size()));
    if (closed) {
      EXPECT_TRUE(client.IsClosed());
    } else {
      EXPECT_EQ(32768U, client.Exchange(4106, "/f").code);
    }
    standIn.ClearFaults();
    std::filesystem::remove(area.File("new"));
  }
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

}  // namespace
}  // namespace updown::peer::test
