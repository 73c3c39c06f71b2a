#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>

#include "peer/arguments.h"
#include "peer/stand_in.h"
#include "tests/peer/raw_client.h"

namespace updown::peer::test {
namespace {

namespace fs = std::filesystem;

// Each entry by its path: when it was modified, and its bytes.
using Contents = std::map<std::string, std::pair<fs::file_time_type, std::string>>;

Contents Make(int packages, std::uint32_t seed, int languageId) {
  const TemporaryFolder folder;
  MakeArea({folder.path.string(), packages, seed, languageId});
  Contents contents;
  for (const auto& entry : fs::recursive_directory_iterator(folder.path)) {
    contents[fs::relative(entry.path(), folder.path).string()] = {
        fs::last_write_time(entry.path()),
        entry.is_directory() ? "(folder)" : ReadFile(entry.path())};
  }
  return contents;
}

TEST(MakeArea, SameSeedSameBytes) {
  const Contents once = Make(12, 5, 1033);
  EXPECT_TRUE(once == Make(12, 5, 1033));
  EXPECT_FALSE(once == Make(12, 6, 1033));
}

TEST(MakeArea, HasEveryKindOfPackage) {
  int complete = 0;
  int halfArrived = 0;
  int empty = 0;
  std::set<std::size_t> sizes;
  const Contents contents = Make(12, 1, 1033);
  for (const auto& [name, entry] : contents) {
    if (name.find('/') != std::string::npos) {
      sizes.insert(entry.second.size());
      continue;
    }
    if (name.find_first_not_of("0123456789#") != std::string::npos) continue;
    const fs::path header = fs::path(name) / name;
    const bool start = contents.contains(header.string() + "_Start.ini");
    const bool full = contents.contains(header.string() + ".ini");
    complete += start && full ? 1 : 0;
    halfArrived += start && !full ? 1 : 0;
    empty += !start && !full ? 1 : 0;
  }
  EXPECT_GE(complete, 6);
  EXPECT_GE(halfArrived, 2);
  EXPECT_EQ(1, empty);
  for (const std::size_t size : {0U, 1023U, 1024U, 1536U}) EXPECT_TRUE(sizes.contains(size));
  EXPECT_GE(*sizes.rbegin(), std::size_t{1} << 20);
  EXPECT_TRUE(contents.contains("Templates"));
}

TEST(MakeArea, WritesHeadersInTheCodePage) {
  struct Case {
    int languageId;
    std::string character;  // somewhere in the headers
  };
  for (const Case& one : {Case{1033, "J\xFCrgen"}, Case{2052, "\xC1\xF5\xBD\xA8\xB9\xFA"},
                          Case{1028, "\xBC\x42\xAB\xD8\xB0\xEA"}}) {
    std::string headers;
    for (const auto& [name, entry] : Make(16, 2, one.languageId)) {
      if (!name.ends_with("_Start.ini")) continue;
      EXPECT_EQ(0U, entry.second.find("[Tallbin]\r\nTXT_From="));
      const std::size_t notes = entry.second.find("\r\nTXT_Notes=");
      ASSERT_NE(std::string::npos, notes);
      // The note is the last line, whatever breaks it holds.
      EXPECT_EQ(entry.second.size() - 2, entry.second.find("\r\n", notes + 2));
      headers += entry.second;
    }
    EXPECT_NE(std::string::npos, headers.find(one.character)) << one.languageId;
    EXPECT_NE(std::string::npos, headers.find("\xFF\xFF")) << one.languageId;
  }
}

Arguments Parse(std::vector<std::string> words) { return ParseArguments(words); }

TEST(ParseArguments, TakesWhatTheHelpPromises) {
  const Arguments arguments =
      Parse({"--make-area", "d", "--serve", "--dialect", "2", "--block", "1000", "--login",
             "ann:se:north", "--fragment", "--fault", "stall:4104", "--language", "2052"});
  EXPECT_EQ("d", arguments.service.root);
  EXPECT_EQ(2, arguments.service.dialect);
  EXPECT_EQ(1000U, arguments.service.blockLength);
  ASSERT_TRUE(arguments.service.login);
  EXPECT_EQ("se", arguments.service.login->password);
  EXPECT_EQ("north", arguments.service.login->realm);
  EXPECT_TRUE(arguments.service.fragment);
  EXPECT_EQ(1U, arguments.service.faults.size());
  EXPECT_EQ(2052, arguments.area.languageId);
  EXPECT_EQ("", Parse({"--make-area", "d"}).service.root);
  EXPECT_EQ("p", Parse({"--root", "d", "--login", "u:p"}).service.login->password);
}

TEST(ParseArguments, RefusesWhatMakesNoSense) {
  const std::vector<std::vector<std::string>> bad{
      {},
      {"--root"},
      {"--nothing"},
      {"--serve", "--root", "d"},
      {"--root", "d", "--dialect", "3"},
      {"--root", "d", "--dialect", "0"},
      {"--root", "d", "--block", "0"},
      {"--root", "d", "--block", "12k"},
      {"--root", "d", "--port", "65536"},
      {"--root", "d", "--login", "ann"},
      {"--root", "d", "--fault", "explode:1"},
      {"--make-area", "d", "--packages", "-1"},
  };
  for (const auto& words : bad) EXPECT_THROW(Parse(words), std::invalid_argument);
}

}  // namespace
}  // namespace updown::peer::test
