#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>

#include "peer/arguments.h"
#include "peer/stand_in.h"
#include "tests/support/temporary_folder.h"

namespace updown::peer {
namespace {

namespace fs = std::filesystem;

// Each entry by its path: when it was modified, and its bytes.
using Contents = std::map<std::string, std::pair<fs::file_time_type, std::string>>;

Contents Make(int packages, std::uint32_t seed, int languageId) {
  const test::TemporaryFolder folder;
  MakeArea({folder.Path(), packages, seed, languageId});
  Contents contents;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    contents[fs::relative(entry.path(), folder.Path()).string()] = {
        fs::last_write_time(entry.path()),
        entry.is_directory() ? "(folder)" : test::ReadFile(entry.path())};
  }
  return contents;
}

TEST(MakeArea, HasEveryKindOfPackageAndTheSameForTheSameSeed) {
  std::map<std::string, int> kinds;
  std::set<std::size_t> sizes;
  const Contents contents = Make(12, 1, 1033);
  for (const auto& [name, entry] : contents) {
    sizes.insert(entry.second.size());
    if (name.find_first_not_of("0123456789#") == std::string::npos) {
      const std::string header = name + "/" + name;
      const bool start = contents.contains(header + "_Start.ini");
      ++kinds[contents.contains(header + ".ini") ? "complete" : start ? "half arrived" : "empty"];
    }
  }
  EXPECT_GE(kinds["complete"], 6);
  EXPECT_GE(kinds["half arrived"], 2);
  EXPECT_EQ(kinds["empty"], 1);
  EXPECT_TRUE(sizes.contains(0) && *sizes.rbegin() >= std::size_t{1} << 20);
  EXPECT_TRUE(contents == Make(12, 1, 1033));
  EXPECT_FALSE(contents == Make(12, 2, 1033));
}

Arguments Parse(std::vector<std::string> words) { return ParseArguments(words); }

TEST(ParseArguments, RefusesWhatMakesNoSense) {
  const std::vector<std::string> bad[] = {
      {},
      {"--root"},
      {"--nothing"},
      {"--root", "d", "--dialect", "3"},
      {"--root", "d", "--block", "12k"},
      {"--root", "d", "--port", "65536"},
      {"--root", "d", "--login", "ann"},
      {"--root", "d", "--fault", "explode:1"},
      {"--root", "d", "--fault", "stall:1:skip=-1"},
  };
  for (const auto& words : bad) {
    EXPECT_THROW(Parse(words), std::invalid_argument);
  }
}

}  // namespace
}  // namespace updown::peer
