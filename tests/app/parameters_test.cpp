// Command line and identity: what the parent application hands over.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/earlier_data.h"
#include "app/launch_identity.h"
#include "app/launch_variables.h"
#include "platform/environment.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

TEST(CommandLineTest, OutcomesOfTheWalk) {
  const std::string longPort = std::string(259, '0') + "81";
  const struct {
    std::vector<std::string> arguments;
    bool accepted;
    std::string name;
    std::uint32_t port;
  } cases[] = {
      {{"-s", "fileserver", "-p", "8100"}, true, "fileserver", 8100},
      {{"-s", "fileserver"}, true, "fileserver", 8080},
      {{"-p", "8100"}, false, "", 8100},
      {{}, false, "", 8080},
      {{"-s"}, false, "", 8080},
      {{"-s", "fileserver", "-p"}, true, "fileserver", 8080},
      {{"-s", "fileserver", "-p", "80a"}, false, "fileserver", 0},
      {{"-s", "fileserver", "-p", "0"}, false, "fileserver", 0},
      {{"-s", "fileserver", "-p", "0", "-p", "8100"}, true, "fileserver", 8100},
      {{"-s", "fileserver", "-p", "80a", "-p", "8100"}, false, "fileserver", 0},
      {{"-s", "fileserver", "-p", "81 00"}, true, "fileserver", 81},
      {{"-s", "fileserver", "-p", "65616"}, true, "fileserver", 65616},
      {{"-s", "fileserver", "-p", longPort}, true, "fileserver", 8},
      {{"-s", "a", "-s", "b"}, true, "b", 8080},
      {{"-s", "-p", "8100"}, true, "-p", 8080},
      {{"-S", "fileserver", "-P", "8100"}, true, "fileserver", 8100},
      {{"extra", "-s", "fileserver"}, true, "fileserver", 8080},
      {{"-s", "d\xC3\xA9p\xC3\xB4t"}, true, "d\xE9p\xF4t", 8080},
  };
  for (const auto& c : cases) {
    const CommandLine got = ParseCommandLine(c.arguments, AnsiCodePage::Western);
    EXPECT_EQ(got.Accepted(), c.accepted) << testing::PrintToString(c.arguments);
    EXPECT_EQ(got.serverName, c.name) << testing::PrintToString(c.arguments);
    EXPECT_EQ(got.serverPort, c.port) << testing::PrintToString(c.arguments);
  }
}

// Digests worked out with md5sum.
TEST(LaunchIdentityTest, HashesWhateverTheLanguage) {
  EXPECT_EQ(JoinLaunchIdentity({"", "B", ""}), "B-");
  const std::pair<const char*, const char*> cases[] = {
      {"", "8833f67c0f8e2339c154ffc91e15eb8c"},
      {"A--C", "3d8c564cc16000bfc5a38cd82de2bad2"},
      {"d\u00e9p\u00f4t", "ac01a1883ed913ad7cd5889ebd0ca80f"},
      {"\u4e2d--DBDC", "b8b78cacd9feb00cd911b6e8db5cbc3c"},
  };
  for (const auto& [identity, hash] : cases) {
    EXPECT_EQ(IdentityHashOf(identity), hash) << identity;
  }
}

TEST(LaunchIdentityTest, NamesOfEarlierVersions) {
  const auto names = [](const char* identity, AnsiCodePage codePage) {
    std::string text;
    for (const EarlierName& name : EarlierNamesOf(identity, codePage)) {
      text += name.identityHash.substr(0, 4) + (name.lossy ? "? " : " ");
    }
    return text;
  };
  EXPECT_EQ(names("A--C", AnsiCodePage::TraditionalChinese), "");
  EXPECT_EQ(names("\u4e2d--DBDC", AnsiCodePage::Western), "4e7c? 0894 4356 ");
  EXPECT_EQ(names("\u4e2d--DBDC", AnsiCodePage::TraditionalChinese), "4356 4e7c? 0894 ");
}

// Each of list and cache moves where one stands under an earlier name and none under today's.
TEST(EarlierDataTest, IsTakenOverOnce) {
  const test::TemporaryFolder data;
  const test::ScopedEnvironment environment({{"XDG_DATA_HOME", data.Path()}});
  const std::string lists = data.File("oxapp/");
  const std::string caches = data.File("oxapp/INICache/");
  for (const char* name : {"lossy", "good", "other"}) {
    std::filesystem::create_directories(caches + name);
    test::WriteFile(lists + name + ".lst", name);
    test::WriteFile(caches + name + "/x.ini", name);
  }
  test::WriteFile(lists + "none.lst", "");
  const std::vector<EarlierName> earlier = {
      {"none", false}, {"lossy", true}, {"good", false}, {"other", false}};
  for (int start = 0; start < 2; ++start) {
    TakeOverEarlierData("now", earlier);
    EXPECT_EQ(test::ReadFile(lists + "now.lst"), "lossy");
    EXPECT_EQ(test::ReadFile(caches + "now/x.ini"), "good");
    EXPECT_EQ(test::ReadFile(lists + "good.lst"), "good");
    EXPECT_EQ(test::ReadFile(caches + "lossy/x.ini"), "lossy");
  }
}

TEST(LaunchVariablesTest, NamesWhatIsMissingOrUnusable) {
  const std::vector<std::pair<std::string, std::string>> good = {
      {kVariableIdentity1, ""},       {kVariableIdentity2, "maria"},
      {kVariableApplication, "DBDC"}, {kVariableLanguage, "1031"},
      {kVariableRelayPort, "7000"},   {kVariableRelayAddress, "127.0.0.1"},
      {kVariableRelayClientId, "0"},  {kVariableAttribute110, "1"}};
  const std::pair<const char*, std::string> bad[] = {{kVariableIdentity1, std::string(1024, 'x')},
                                                     {kVariableLanguage, "abc"},
                                                     {kVariableRelayAddress, "localhost"},
                                                     {kVariableRelayClientId, "one"}};
  const test::ScopedEnvironment environment(good);
  EXPECT_TRUE(FindLaunchFaults().empty());
  for (const auto& [name, value] : bad) {
    const test::ScopedEnvironment wrong({{name, value}});
    const auto faults = FindLaunchFaults();
    ASSERT_EQ(faults.size(), 1U) << name;
    EXPECT_EQ(faults[0].name, name);
    EXPECT_FALSE(faults[0].missing);
  }
  unsetenv(kVariableIdentity2);
  ASSERT_EQ(FindLaunchFaults().size(), 1U);
  EXPECT_TRUE(FindLaunchFaults()[0].missing);
}

TEST(LaunchVariablesTest, ThePaceIsASecondUnlessANumberSaysOtherwise) {
  const std::pair<std::string, int> cases[] = {
      {"0", 0},     {"3600000", 3600000}, {"3600001", 1000},    {"", 1000},
      {"-1", 1000}, {"1s", 1000},         {"4294967296", 1000},
  };
  EXPECT_EQ(ReadBlockPace().count(), 1000);
  for (const auto& [text, pace] : cases) {
    const test::ScopedEnvironment environment({{kVariableBlockPace, text}});
    EXPECT_EQ(ReadBlockPace().count(), pace) << text;
  }
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
  const std::pair<const char*, const char*> applications[] = {
      {"DBDC", "12"}, {"DBD", ""}, {"DBAADC", "1"}, {"DBQADC", "1"}};
  for (const auto& [text, id] : applications) {
    EXPECT_EQ(DecodeAppid(text), id) << text;
  }
  const std::pair<const char*, int> languages[] = {{"2052x", 2052}, {"1031", 1031}, {"", 1033},
                                                   {"abc", 1033},   {"0", 1033},    {"-5", 1033}};
  for (const auto& [text, id] : languages) {
    EXPECT_EQ(LanguageIdOf(text), id) << text;
  }
}

}  // namespace
}  // namespace updown
