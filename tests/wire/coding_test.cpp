#include <gtest/gtest.h>

#include <vector>

#include "tests/wire/wire_bytes.h"
#include "wire/attributes.h"
#include "wire/text_coding.h"

namespace updown {
namespace {

using testing::Wire;

TEST(Attributes, EncodesAscendingWithoutEmptyOnesAndReservedTags) {
  AttributeTable table;
  const std::pair<std::uint8_t, const char*> attributes[] = {{254, "z"}, {10, "ab"}, {7, ""},
                                                             {1, "c"},   {0, "x"},   {255, "x"}};
  for (const auto& [tag, text] : attributes) {
    table.Set(tag, text);
  }
  const std::string whole = Wire("010001 'c' 0A0002 'ab' FE0001 'z' FF");
  std::vector<std::uint8_t> dest(whole.size());
  EXPECT_EQ(EncodeAttributes(table, dest), static_cast<int>(whole.size()));
  EXPECT_EQ(AsText(dest), whole);
}

TEST(Attributes, DecodesTable) {
  const struct {
    const char* bytes;
    int result;
    const char* tag5;  // nullptr: absent
  } cases[] = {
      {"", 0, nullptr},
      {"00 00 050002 'ab' 00 FF 060001 'x'", 9, "ab"},
      {"050001 FF FF", 5, "\xFF"},
      {"050001 'a' 050002 'bc' FF", 10, "bc"},
      {"050000 FF", 4, ""},
      {"050001 'a' 0500", kBadLength, "a"},
      {"050002 'a'", kBadLength, nullptr},
      {"050001 'a' 06FFFF 'abc'", kBadLength, "a"},
  };
  for (const auto& example : cases) {
    const std::string bytes = Wire(example.bytes);
    AttributeTable table;
    table.Set(200, "left over");
    EXPECT_EQ(DecodeAttributes(table, AsBytes(bytes)), example.result) << example.bytes;
    EXPECT_FALSE(table.Has(200));
    ASSERT_EQ(table.Has(5), example.tag5 != nullptr) << example.bytes;
    EXPECT_EQ(table.Text(5), example.tag5 != nullptr ? example.tag5 : "");
  }
}

TEST(TextCoding, HexAndLetters) {
  EXPECT_EQ(HexEncode(AsBytes(Wire("00FF1e"))), "00ff1e");
  EXPECT_EQ(LetterDecode("DBPP", 2).bytes, "1\xFF");
  for (const char* wrong : {"DBD", "DBDCDB", "DBdC", "DBDQ"}) {
    EXPECT_EQ(LetterDecode(wrong, 2).result, -1) << wrong;
  }
}

}  // namespace
}  // namespace updown
