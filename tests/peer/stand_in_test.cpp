#include "peer/stand_in.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <list>

#include "tests/peer/raw_client.h"

namespace updown::peer::test {
namespace {

namespace fs = std::filesystem;

class StandInTest : public ::testing::TestWithParam<int> {
 protected:
  StandInTest() {
    options.root = (area.path / "root").string();
    options.dialect = GetParam();
    root = options.root;
    fs::create_directories(root / "p");
    WriteFile(root / "p/a.txt", "0123456789");
    WriteFile(area.path / "secret", "x");
  }

  bool First() const { return options.dialect == 1; }
  std::uint32_t Code(std::uint32_t first, std::uint32_t second) const {
    return First() ? first : second;
  }

  // Whether a reply that carries no data of its own says yes.
  bool Agrees(const ReplyFrame& reply, std::uint32_t message) const {
    EXPECT_EQ(First(), reply.version);
    if (First()) return reply.code == 32768;
    EXPECT_EQ(message, reply.code);
    EXPECT_TRUE(reply.data == "200" || reply.data == "500") << reply.data;
    return reply.data == "200";
  }

  TemporaryFolder area;
  Options options;
  fs::path root;
};

std::string BlockList(std::uint32_t offset, std::uint32_t length, std::string_view path) {
  return Attribute(193, Number(offset)) + Attribute(194, Number(length)) + Attribute(195, path) +
         '\xFF';
}

TEST_P(StandInTest, RelayResolvesItsServiceOnly) {
  const StandIn standIn(options);
  const auto resolve = [&](const std::string& name) {
    const RawClient client(standIn.RelayPort());
    const std::string body =
        Attribute(96, "Resolve") + Attribute(97, name) + Attribute(99, "12") + '\xFF';
    client.Send(Hex("02 12") + Number(static_cast<std::uint32_t>(12 + body.size()), 2) +
                Hex("05 00 00 00 00 81 00 00") + body);
    return ToHex(client.Receive(1000));
  };
  EXPECT_EQ(ToHex(Hex("02 13 00 1A 05 00 00 00 00 81 00 00 62 00 0A") + "127.0.0.1" + Hex("00 FF")),
            resolve("fileservice"));
  EXPECT_EQ(ToHex(Hex("02 13 00 11 05 00 00 00 00 81 00 00 62 00 01 00 FF")), resolve("elsewhere"));
}

TEST_P(StandInTest, RelayJoinsWhatItCanReach) {
  const StandIn standIn(options);
  std::string unreachable = kConnectPacket;
  unreachable.replace(unreachable.find("127"), 3, "0.0");
  std::string withReply = kConnectPacket;
  withReply[9] = '\x85';
  std::string refused = unreachable;
  refused[9] = '\x85';
  struct Case {
    std::string packet;
    std::string reply;
    bool joined;
  };
  for (const Case& one : {Case{kConnectPacket, "", true}, Case{unreachable, "", false},
                          Case{withReply, Hex("02 13 00 0C 01 00 00 00 00 85 00 00"), true},
                          Case{refused, Hex("02 13 00 0C 01 00 00 00 00 85 00 05"), false},
                          Case{"GET / HTTP/1.0", "", false}}) {
    const RawClient client(standIn.RelayPort());
    client.Send(one.packet);
    EXPECT_EQ(ToHex(one.reply), ToHex(client.Receive(one.reply.size())));
    if (one.joined) {
      EXPECT_NE(0U, client.Exchange(4352).code);
    } else {
      EXPECT_TRUE(client.IsClosed());
    }
  }
}

TEST_P(StandInTest, SessionReplyByteForByte) {
  const StandIn standIn(options);
  const Joined client(standIn);
  client.Send(Hex("00 00 00 17 01 00 04 00 00 11 00 02 00 06 A5 00 02 31 32 FF") +
              Hex("0A 00 04 01 00 00 00 FF"));
  const std::string sessid = "S00000001-9e3779b1";
  const std::string expected =
      First() ? Hex("00 00 00 24 01 00 04 00 00 80 00 02 00 12") + sessid +
                    Hex("0A 00 04 01 00 00 00 FF")
              : Hex("00 00 00 2A 01 00 04 00 00 80 05 02 00 1F 07 00 01 02 A5 00 02 31 32") +
                    Hex("A6 00 12") + sessid + Hex("FF FF");
  EXPECT_EQ(ToHex(expected), ToHex(client.ReceiveFrame()));
}

TEST_P(StandInTest, LoginGuardsEverything) {
  options.login = Login{"ann", "secret", "north"};
  StandIn standIn(options);
  const Joined client(standIn);
  const ReplyFrame opened = client.Exchange(4352);
  EXPECT_EQ(Code(32774, 32773), opened.code);
  const std::string state = First() ? "" : Hex("07 00 01 01");
  EXPECT_EQ(state, opened.data.substr(0, state.size()));
  const std::string sessid = opened.data.substr(opened.data.find('S'), 18);

  EXPECT_FALSE(Agrees(client.Exchange(4100, "/new"), 4100));
  EXPECT_FALSE(fs::exists(root / "new"));
  const auto login = [&](const std::string& password, const std::string& realm) {
    return client.Exchange(4098, Attribute(160, "ann") + Attribute(161, password) +
                                     (realm.empty() ? "" : Attribute(162, realm)) + '\xFF');
  };
  const std::string attachData = First() ? Attribute(166, sessid) + '\xFF' : sessid;
  const auto attach = [&] { return Joined(standIn).Exchange(4353, attachData).code; };
  EXPECT_FALSE(Agrees(login("wrong", "north"), 4098));
  EXPECT_FALSE(Agrees(login("secret", ""), 4098));
  EXPECT_EQ(32774U, attach());
  EXPECT_TRUE(Agrees(login("secret", "north"), 4098));
  EXPECT_TRUE(Agrees(client.Exchange(4100, "/new"), 4100));
  EXPECT_TRUE(fs::is_directory(root / "new"));
  EXPECT_EQ(Code(32768, 4096), attach());
  standIn.ForgetSessions();
  EXPECT_EQ(32774U, attach());
}

TEST_P(StandInTest, ListsInOrderWithAllAttributes) {
  fs::create_directory(root / "b");
  WriteFile(root / "a", "12345");
  fs::create_symlink(area.path / "secret", root / "link");
  ASSERT_EQ(0, ::mkfifo((root / "pipe").c_str(), 0600));
  const timespec time{1225699920, 0};
  const timespec times[2] = {time, time};
  ASSERT_EQ(0, ::utimensat(AT_FDCWD, (root / "a").c_str(), times, 0));
  ::chmod((root / "a").c_str(), 0640);

  const StandIn standIn(options);
  const WithSession client(standIn);
  EXPECT_TRUE(Agrees(client.Exchange(4099, "/"), 4099));
  std::vector<std::string> names;
  std::string entry;
  while ((entry = client.ReceiveFrame()).size() > 4) {
    ASSERT_EQ('\x10', entry[4]);
    names.push_back(entry.substr(7, static_cast<std::size_t>(entry[6])));
    if (names.back() != "a") continue;
    EXPECT_EQ(
        ToHex(Hex("00 00 00 2B 10 00 01 61 11 00 04 49 0E B2 50 12 00 04 49 0E B2 50") +
              Hex("13 00 04 49 0E B2 50 14 00 04 00 00 00 05 15 00 02 01 A0 16 00 02 00 08 FF")),
        ToHex(entry));
  }
  EXPECT_EQ(ToHex(Hex("00 00 00 00")), ToHex(entry));
  EXPECT_EQ((std::vector<std::string>{".", "..", "a", "b", "p"}), names);
}

TEST_P(StandInTest, BlocksByteForByte) {
  options.blockLength = 6;
  const StandIn standIn(options);
  const WithSession client(standIn);
  const auto read = [&](std::uint32_t offset, std::string_view block) {
    client.Send(Request(4104, BlockList(offset, 0, "/p/a.txt")));
    const auto length = static_cast<std::uint32_t>(block.size());
    const std::string list = BlockList(offset, length, "/p/a.txt");
    const std::string expected =
        First() ? Hex("00 00 00 16 01 00 04 00 00 80 00 02 00 04") + Number(length) +
                      Hex("0A 00 04 01 00 00 00 FF")
                : Hex("00 00 00 25 01 00 04 00 00 10 08 02 00 1A") + list + '\xFF';
    EXPECT_EQ(ToHex(expected + std::string(block)),
              ToHex(client.Receive(expected.size() + block.size())));
  };
  read(0, "012345");
  read(6, "6789");
  read(10, "");
  read(4'000'000'000U, "");
  EXPECT_TRUE(Agrees(client.Exchange(4105, BlockList(8, 4, "/p/a.txt"), "abcd"), 4105));
  EXPECT_FALSE(Agrees(client.Exchange(4105, BlockList(8, 5, "/p/a.txt"), "abcd"), 4105));
  EXPECT_EQ("01234567abcd", ReadFile(root / "p/a.txt"));
  EXPECT_TRUE(Agrees(client.Exchange(4105, BlockList(0, 0, "/p/empty"), ""), 4105));
  EXPECT_TRUE(fs::exists(root / "p/empty"));
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
  const std::vector<Step> steps{
      {4100, "/p/sub", 32768},
      {4100, "/p/sub", 32775},
      {4101, "/p", 32775},
      {4101, "/p/sub", 32768},
      {4101, "/", 32775},
      {4101, "/gone", 32775},
      {4099, "/gone", 32775},
      {4103, "/p", 32787},
      {4103, "/gone", 32787},
      {4103, std::string(300, 'n'), 32788},
      {4102, rename("/gone", "/p/x"), 32787},
      {4100, "/q", 32768},
      {4102, rename("/p", "/q"), 32775},
      {4102, rename("/p", "/q/r"), 32768},
      {4103, "/q/r/a.txt", 32768},
      {4106, "/q/r/a.txt", 32787},
      {4106, "/q", 32787},
      {4104, BlockList(0, 0, "/gone"), 32787},
      {4107, "", 32792},
  };
  for (const Step& step : steps) {
    const ReplyFrame reply = client.Exchange(step.message, step.data);
    EXPECT_EQ(step.code == 32768, Agrees(reply, step.message)) << step.message << step.data;
    if (First()) {
      EXPECT_EQ(step.code, reply.code) << step.message << step.data;
    }
  }
  EXPECT_TRUE(fs::is_empty(root / "q/r"));
}

TEST_P(StandInTest, NothingLeavesTheRoot) {
  fs::create_directory_symlink(area.path, root / "out");
  fs::create_symlink(area.path / "secret", root / "link");
  const StandIn standIn(options);
  const WithSession client(standIn);
  const std::string outside = area.path.string();
  for (const std::string& path :
       {std::string("/../secret"), std::string("/p/../../secret"), std::string("/out/secret"),
        std::string("/link"), outside + "/secret", std::string("/p/a.txt\0x", 10)}) {
    for (const std::uint32_t message : {4099U, 4100U, 4101U, 4103U, 4106U}) {
      EXPECT_FALSE(Agrees(client.Exchange(message, path), message)) << message << path;
    }
    for (const std::uint32_t message : {4104U, 4105U}) {
      EXPECT_FALSE(Agrees(client.Exchange(message, BlockList(0, 0, path)), message)) << path;
    }
    const std::string out = Attribute(177, "/p/a.txt") + Attribute(178, path) + '\xFF';
    const std::string in = Attribute(177, path) + Attribute(178, "/stolen") + '\xFF';
    EXPECT_FALSE(path != "/link" && Agrees(client.Exchange(4102, out), 4102)) << path;
    EXPECT_FALSE(Agrees(client.Exchange(4102, in), 4102)) << path;
  }
  EXPECT_EQ("x", ReadFile(area.path / "secret"));
  EXPECT_EQ("0123456789", ReadFile(root / "p/a.txt"));
}

TEST_P(StandInTest, FragmentedBytesAreTheSame) {
  std::string content;
  for (int i = 0; i < 50'000; ++i) content += std::to_string(i);
  WriteFile(root / "p/big", content);
  options.fragment = true;
  options.blockLength = 1U << 20;
  const StandIn standIn(options);
  const WithSession client(standIn);
  client.Send(Request(4104, BlockList(0, 0, "/p/big")));
  client.ReceiveFrame();
  EXPECT_TRUE(content == client.Receive(content.size()));
}

TEST_P(StandInTest, EndsAtOnceWithConnectionsOpen) {
  options.blockDelayMs = 600'000;
  options.faults = {{Fault::Kind::Stall, 4099, 0, 0, 0}};
  std::list<WithSession> clients;
  auto standIn = std::make_unique<StandIn>(options);
  for (int i = 0; i < 9; ++i) clients.emplace_back(*standIn);
  std::uint32_t number = 0;
  for (const WithSession& client : clients) {
    if (++number % 3 == 0) client.Send(Request(4104, BlockList(0, 0, "/p/a.txt")));
    if (number % 3 == 1) client.Send(Request(4099, "/"));
  }
  EXPECT_EQ(9U, standIn->OpenConnections());
  const auto start = std::chrono::steady_clock::now();
  standIn.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  for (const WithSession& client : clients) EXPECT_TRUE(client.IsClosed());
}

TEST_P(StandInTest, ShowsWhatCameIn) {
  StandIn standIn(options);
  const WithSession client(standIn);
  client.Exchange(4106, "/p/a.txt");
  const std::vector<SeenRequest> seen = standIn.Requests();
  ASSERT_EQ(3U, seen.size());
  EXPECT_EQ(2U, seen[0].message);
  EXPECT_EQ(kConnectPacket, std::string(seen[0].bytes.begin(), seen[0].bytes.end()));
  EXPECT_EQ(4352U, seen[1].message);
  EXPECT_EQ(Request(4106, "/p/a.txt"), std::string(seen[2].bytes.begin(), seen[2].bytes.end()));
  EXPECT_EQ(1U, standIn.MostConnections());
  standIn.ForgetRequests();
  EXPECT_TRUE(standIn.Requests().empty());
}

INSTANTIATE_TEST_SUITE_P(Dialects, StandInTest, ::testing::Values(1, 2));

}  // namespace
}  // namespace updown::peer::test
