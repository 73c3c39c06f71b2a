// Command line and identity: what the parent application hands over.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/launch_identity.h"
#include "platform/environment.h"

namespace updown {
namespace {

struct CommandLineCase {
  std::vector<std::string> arguments;  // behind the program's name
  bool accepted;
  std::string name;
  std::uint32_t port;
};

TEST(CommandLineTest, OutcomesOfTheWalk) {
  const std::string longPort = std::string(259, '0') + "81";
  const std::vector<CommandLineCase> cases = {
      {{"-s", "fileserver", "-p", "8100"}, true, "fileserver", 8100},
      {{"-s", "fileserver"}, true, "fileserver", 8080},
      {{"-p", "8100"}, false, "", 8100},
      {{}, false, "", 8080},
      {{"-s"}, false, "", 8080},
      {{"-s", "fileserver", "-p"}, true, "fileserver", 8080},
      {{"-s", "fileserver", "-p", "80a"}, false, "fileserver", 0},
      {{"-p", "80a", "-s", "fileserver"}, false, "", 0},
      {{"-s", "fileserver", "-p", "0"}, false, "fileserver", 0},
      {{"-s", "fileserver", "-p", ""}, false, "fileserver", 0},
      {{"-s", "fileserver", "-p", "81 00"}, true, "fileserver", 81},
      {{"-s", "fileserver", "-p", "65616"}, true, "fileserver", 65616},
      {{"-s", "fileserver", "-p", longPort}, true, "fileserver", 8},
      {{"-s", "a", "-s", "b"}, true, "b", 8080},
      {{"-s", "-p", "8100"}, true, "-p", 8080},
      {{"-S", "fileserver", "-P", "8100"}, true, "fileserver", 8100},
      {{"extra", "-s", "fileserver"}, true, "fileserver", 8080},
      {{"-s", "d\xC3\xA9p\xC3\xB4t"}, true, "d\xE9p\xF4t", 8080},
  };
  for (CommandLineCase c : cases) {
    c.arguments.insert(c.arguments.begin(), "updown");
    const CommandLine got = ParseCommandLine(c.arguments, AnsiCodePage::Western);
    EXPECT_EQ(got.Accepted(), c.accepted) << testing::PrintToString(c.arguments);
    EXPECT_EQ(got.serverName, c.name) << testing::PrintToString(c.arguments);
    EXPECT_EQ(got.serverPort, c.port) << testing::PrintToString(c.arguments);
  }
  EXPECT_FALSE(ParseCommandLine({}, AnsiCodePage::Western).Accepted());
}

// Digests worked out with md5sum over the bytes of the code page.
TEST(LaunchIdentityTest, JoinsItsPartsAndHashesTheBytesOfTheCodePage) {
  EXPECT_EQ(JoinLaunchIdentity({"A", "", "C"}), "A--C");
  EXPECT_EQ(JoinLaunchIdentity({"", "B", ""}), "B-");
  EXPECT_EQ(JoinLaunchIdentity({"", "", "C"}), "C");
  EXPECT_EQ(InstanceEventNameOf("8833"), "Global\\8833");
  const std::tuple<const char*, AnsiCodePage, const char*> cases[] = {
      {"", AnsiCodePage::Western, "8833f67c0f8e2339c154ffc91e15eb8c"},
      {"A--C", AnsiCodePage::Western, "3d8c564cc16000bfc5a38cd82de2bad2"},
      {"中--DBDC", AnsiCodePage::SimplifiedChinese, "0894b00286a92da3ef548b2ab1e01448"},
      {"中--DBDC", AnsiCodePage::TraditionalChinese, "43568f3854a4d8badd4accff4729c874"},
  };
  for (const auto& [identity, codePage, hash] : cases) {
    EXPECT_EQ(IdentityHashOf(identity, codePage), hash);
  }
}

TEST(LaunchIdentityTest, DecodesTheApplication) {
  EXPECT_EQ(DecodeAppid("DBDC"), "12");
  EXPECT_EQ(DecodeAppid("DBD"), "");
  EXPECT_EQ(DecodeAppid("DBAADC"), "1") << "ends at the zero byte";
  EXPECT_EQ(DecodeAppid("DBQADC"), "1") << "ends at the foreign letter";
  EXPECT_EQ(DecodeAppid(std::string(522, 'B')), "") << "more than 260 bytes";
}

TEST(LaunchIdentityTest, ReadsTheEnvironment) {
  setenv(kVariableIdentity1, "A", 1);
  setenv(kVariableIdentity2, std::string(1024, 'x').c_str(), 1);  // too long: reads as empty
  setenv(kVariableApplication, "C", 1);
  setenv(kVariableLanguage, "1028", 1);
  const LaunchState launch = ReadLaunchState();
  EXPECT_EQ(launch.identityHash, "3d8c564cc16000bfc5a38cd82de2bad2");
  EXPECT_EQ(launch.appid, "");
  EXPECT_EQ(launch.languageId, 1028);
  const std::pair<const char*, int> languages[] = {{"2052x", 2052}, {"1031", 1031}, {"", 1033},
                                                   {"abc", 1033},   {"0", 1033},    {"-5", 1033}};
  for (const auto& [text, id] : languages) {
    EXPECT_EQ(LanguageIdOf(text), id) << text;
  }
}

}  // namespace
}  // namespace updown
