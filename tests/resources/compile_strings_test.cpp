#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

namespace fs = std::filesystem;

class CompileStringsTest : public testing::Test {
 protected:
  CompileStringsTest() {
    std::string pattern = (fs::temp_directory_path() / "compile-strings-XXXXXX").string();
    folder_ = ::mkdtemp(pattern.data());
  }
  ~CompileStringsTest() override { fs::remove_all(folder_); }

  // Exit code of the tool for a table and the two names Yes = 5 and No = 7.
  int Run(const std::string& table) {
    fs::remove(folder_ / "out.cpp");
    std::ofstream(folder_ / "table") << table;
    std::ofstream(folder_ / "names") << "enum class Id {\n  Yes = 5,  // note\n  No = 7,\n};\n";
    const std::string command = std::string(COMPILE_STRINGS) + " '" + (folder_ / "table").string() +
                                "' '" + (folder_ / "names").string() + "' '" +
                                (folder_ / "out.cpp").string() + "' 2> '" +
                                (folder_ / "faults").string() + "'";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string Read(const char* name) const {
    std::ifstream file(folder_ / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  fs::path folder_;
};

constexpr const char* kYes = "5\tYes\tstring\tYes\t是\t是\tnote\n";
constexpr const char* kNo = "7\tNo\tmenu\tNo\t否\t否\n";

TEST_F(CompileStringsTest, AcceptsACompleteTable) {
  ASSERT_EQ(Run(std::string("# comment\n\n") + kNo + "5\tYes\tstring\t\\sa\"\\r\\n\\\\\t是\t是\n"),
            0);
  const std::string out = Read("out.cpp");
  EXPECT_NE(out.find(R"({5U, true, {u" a\"\r\n\\"sv, u"是"sv, u"是"sv, }},)"), std::string::npos)
      << out;
  EXPECT_LT(out.find("{5U"), out.find("{7U"));
}

TEST_F(CompileStringsTest, RefusesAFaultyTableWithFileAndLine) {
  struct Case {
    const char* fault;
    std::string table;
    const char* message;
  };
  const std::string yes = kYes;
  const Case cases[] = {
      {"missing", yes, "names:3: No has no row"},
      {"doubled", yes + kNo + kYes, "table:3: id 5 stands in line 1 too"},
      {"unknown", yes + kNo + "8\tMaybe\tstring\ta\tb\tc\n",
       "table:3: string_id.h has no Maybe = 8"},
      {"wrong id", yes + "8\tNo\tmenu\tNo\tb\tc\n", "table:2: string_id.h has no No = 8"},
      {"no id", yes + kNo + "7x\tNo\tmenu\tNo\tb\tc\n", "table:3: '7x' is no id"},
      {"empty", yes + "7\tNo\tmenu\tNo\t\tc\n", "table:2: empty text (field 5)"},
      {"fields", yes + "7\tNo\tmenu\tNo\tb\n", "table:2: a row has 6 or 7 fields, this one 5"},
      {"kind", yes + "7\tNo\tword\tNo\tb\tc\n", "table:2: unknown kind 'word'"},
      {"blank", yes + "7\tNo\tmenu\tNo \tb\tc\n", "table:2: a blank"},
      {"escape", yes + "7\tNo\tmenu\tN\\o\tb\tc\n", "table:2: unknown escape \\o"},
      {"encoding", yes + "7\tNo\tmenu\tN\xE6\x98\tb\tc\n", "table:2: text is not UTF-8"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Run(c.table), 1) << c.fault;
    EXPECT_NE(Read("faults").find(c.message), std::string::npos) << c.fault << '\n'
                                                                 << Read("faults");
    EXPECT_FALSE(fs::exists(folder_ / "out.cpp")) << c.fault;
  }
}

}  // namespace
