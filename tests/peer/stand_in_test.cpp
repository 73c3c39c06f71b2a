#include "peer/stand_in.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/peer/raw_client.h"

namespace updown::peer::test {
namespace {

namespace fs = std::filesystem;

class StandInTest : public ::testing::TestWithParam<int> {
 protected:
  StandInTest() {
    options.root = root;
    options.dialect = GetParam();
    fs::create_directories(root / "p");
    WriteFile(root / "p/a.txt", "0123456789");
    WriteFile(area.File("secret"), "x");
  }

  bool First() const { return options.dialect == 1; }

  // Whether a reply that carries no data of its own says yes.
  bool Agrees(const ReplyFrame& reply, std::uint32_t message) const {
    EXPECT_EQ(First(), reply.version);
    if (First()) {
      return reply.code == 32768;
    }
    EXPECT_EQ(message, reply.code);
    EXPECT_TRUE(reply.data == "200" || reply.data == "500") << reply.data;
    return reply.data == "200";
  }

  TemporaryFolder area;
  const fs::path root = area.File("root");
  Options options;
};

TEST_P(StandInTest, RelayResolvesItsServiceAndJoinsWhatItCanReach) {
  const StandIn standIn(options);
  const std::string unreachable = "63 0002 '12' 64 000C '0.0.0.0:8100' 6E 0004 00000007 FF";
  const std::string resolve = "02 12 0029 05000000 00 81 0000 60 0007 'Resolve' 63 0002 '12' ";
  std::string withReply = kConnectPacket;
  withReply[9] = '\x85';
  struct Case {
    std::string packet;
    const char* reply;
    bool joined;
  };
  const Case cases[] = {
      {Wire(resolve + "61 000B 'fileservice' FF"),
       "02 13 001A 05000000 00 81 0000 62 000A '127.0.0.1' 00 FF", false},
      {Wire(resolve + "61 000B 'elsewhere--' FF"), "02 13 0011 05000000 00 81 0000 62 0001 00 FF",
       false},
      {kConnectPacket, "", true},
      {withReply, "02 13 000C 01000000 00 85 0000", true},
      {Wire("02 12 0028 01000000 00 86 0000" + unreachable), "", false},
      {Wire("02 12 0028 01000000 00 85 0000" + unreachable), "02 13 000C 01000000 00 85 0005",
       false},
      {"GET / HTTP/1.0", "", false},
  };
  for (const auto& [packet, reply, joined] : cases) {
    const RawClient client(standIn.RelayPort());
    client.Send(packet);
    EXPECT_EQ(Wire(reply), client.Receive(Wire(reply).size()));
    if (joined) {
      EXPECT_NE(0U, client.Exchange(4352).code);
    } else {
      EXPECT_TRUE(client.IsClosed()) << packet;
    }
  }
}

TEST_P(StandInTest, SessionReplyByteForByte) {
  const StandIn standIn(options);
  const RawClient client(standIn.RelayPort());
  client.Send(kConnectPacket);
  client.Send(Wire("00000017 01 0004 00001100 02 0006 A5 0002 '12' FF 0A 0004 01000000 FF"));
  const char* const expected =
      First() ? "00000024 01 0004 00008000 02 0012 'S00000001-9e3779b1' 0A 0004 01000000 FF"
              : "0000002A 01 0004 00008005 02 001F 07 0001 02 A5 0002 '12'"
                "A6 0012 'S00000001-9e3779b1' FF FF";
  EXPECT_EQ(Wire(expected), client.ReceiveFrame());
}

TEST_P(StandInTest, ListsInOrderWithAllAttributes) {
  fs::create_directory(root / "b");
  WriteFile(root / "a", "12345");
  fs::create_symlink(area.File("secret"), root / "link");
  ASSERT_EQ(0, ::mkfifo((root / "pipe").c_str(), 0600));
  const timespec times[2] = {{1225699920, 0}, {1225699920, 0}};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, (root / "a").c_str(), times, 0));
  ::chmod((root / "a").c_str(), 0640);

  const StandIn standIn(options);
  const WithSession client(standIn);
  EXPECT_TRUE(Agrees(client.Exchange(4099, "/"), 4099));
  for (const char* name : {".", "..", "a", "b", "p"}) {
    const std::string entry = client.ReceiveFrame();
    EXPECT_EQ(Attribute(16, name), entry.substr(4, 3 + std::string_view(name).size()));
    if (name == std::string_view("a")) {
      EXPECT_EQ(Wire("0000002B 10 0001 'a' 11 0004 490EB250 12 0004 490EB250 13 0004 490EB250"
                     "14 0004 00000005 15 0002 01A0 16 0002 0008 FF"),
                entry);
    }
  }
  EXPECT_EQ(Number(0), client.ReceiveFrame());
}

TEST_P(StandInTest, BlocksByteForByte) {
  options.blockLength = 6;
  const StandIn standIn(options);
  const WithSession client(standIn);
  const std::pair<std::uint32_t, std::string> blocks[] = {
      {0, "012345"}, {6, "6789"}, {10, ""}, {4'000'000'000U, ""}};
  for (const auto& [offset, block] : blocks) {
    const auto length = static_cast<std::uint32_t>(block.size());
    const std::string list = BlockList(offset, length, "/p/a.txt");
    const std::string expected = First()
                                     ? Wire("00000016 01 0004 00008000 02 0004") + Number(length) +
                                           Wire("0A 0004 01000000 FF")
                                     : Wire("00000025 01 0004 00001008 02 001A") + list + '\xFF';
    client.Send(Request(4104, BlockList(offset, 0, "/p/a.txt")));
    EXPECT_EQ(expected + block, client.Receive(expected.size() + block.size()));
  }
  EXPECT_TRUE(Agrees(client.Exchange(4105, BlockList(8, 4, "/p/a.txt"), "abcd"), 4105));
  EXPECT_FALSE(Agrees(client.Exchange(4105, BlockList(8, 5, "/p/a.txt"), "abcd"), 4105));
  EXPECT_EQ("01234567abcd", ReadFile(root / "p/a.txt"));
}

TEST_P(StandInTest, ChangesTheFolderOrRefuses) {
  const StandIn standIn(options);
  const WithSession client(standIn);
  const auto rename = [](std::string_view from, std::string_view to) {
    return Attribute(177, from) + Attribute(178, to) + '\xFF';
  };
  struct Step {
    std::uint32_t message;
    std::string data;
    std::uint32_t code;  // of the first dialect
  };
  const Step steps[] = {
      {4100, "/p/sub", 32768},
      {4100, "/p/sub", 32775},
      {4101, "/p", 32775},
      {4101, "/p/sub", 32768},
      {4101, "/", 32775},
      {4099, "/gone", 32775},
      {4103, "/p", 32787},
      {4103, std::string(300, 'n'), 32788},
      {4102, rename("/gone", "/p/x"), 32787},
      {4100, "/q", 32768},
      {4102, rename("/p", "/q"), 32775},
      {4102, rename("/p", "/q/r"), 32768},
      {4103, "/q/r/a.txt", 32768},
      {4106, "/q/r/a.txt", 32787},
      {4104, BlockList(0, 0, "/gone"), 32787},
      {4107, "", 32792},
  };
  for (const auto& [message, data, code] : steps) {
    const ReplyFrame reply = client.Exchange(message, data);
    EXPECT_EQ(code == 32768, Agrees(reply, message)) << message << data;
    EXPECT_TRUE(!First() || code == reply.code) << message << data;
  }
  EXPECT_TRUE(fs::is_empty(root / "q/r"));
}

TEST_P(StandInTest, NothingLeavesTheRoot) {
  fs::create_directory_symlink(area.Path(), root / "out");
  fs::create_symlink(area.File("secret"), root / "link");
  const StandIn standIn(options);
  const WithSession client(standIn);
  for (const std::string& path :
       {std::string("/../secret"), std::string("/p/../../secret"), std::string("/out/secret"),
        std::string("/link"), area.File("secret"), std::string("/p/a.txt\0x", 10)}) {
    for (const std::uint32_t message : {4099U, 4100U, 4101U, 4103U, 4106U}) {
      EXPECT_FALSE(Agrees(client.Exchange(message, path), message)) << message << path;
    }
    for (const std::uint32_t message : {4104U, 4105U}) {
      EXPECT_FALSE(Agrees(client.Exchange(message, BlockList(0, 0, path)), message)) << path;
    }
    const std::string in = Attribute(177, path) + Attribute(178, "/stolen") + '\xFF';
    EXPECT_FALSE(Agrees(client.Exchange(4102, in), 4102)) << path;
    const std::string out = Attribute(177, "/p/a.txt") + Attribute(178, path) + '\xFF';
    EXPECT_FALSE(path != "/link" && Agrees(client.Exchange(4102, out), 4102)) << path;
  }
  EXPECT_EQ("x", ReadFile(area.File("secret")));
  EXPECT_EQ("0123456789", ReadFile(root / "p/a.txt"));
}

INSTANTIATE_TEST_SUITE_P(Dialects, StandInTest, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown::peer::test
