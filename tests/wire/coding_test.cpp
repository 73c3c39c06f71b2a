#include <gtest/gtest.h>

#include <vector>

#include "tests/wire/wire_bytes.h"
#include "wire/attributes.h"
#include "wire/message_buffer.h"
#include "wire/text_coding.h"

namespace updown {
namespace {

using testing::Wire;

std::string Encoded(const AttributeTable& table, std::size_t capacity, int& result) {
  std::vector<std::uint8_t> dest(capacity);
  result = EncodeAttributes(table, dest);
  return {dest.begin(), dest.begin() + std::max(result, 0)};
}

TEST(Attributes, EncodesAscendingWithoutEmptyOnesAndReservedTags) {
  AttributeTable table;
  int result = 0;
  EXPECT_EQ(Encoded(table, 1, result), Wire("FF"));
  table.Set(254, "z");
  table.Set(10, "ab");
  table.Set(7, "");
  table.Set(1, "c");
  table.Set(0, "x");
  table.Set(255, "x");
  const std::string whole = Wire("010001 'c' 0A0002 'ab' FE0001 'z' FF");
  EXPECT_EQ(Encoded(table, whole.size(), result), whole);
  for (std::size_t capacity = 0; capacity < whole.size(); ++capacity) {
    Encoded(table, capacity, result);
    EXPECT_EQ(result, kNoRoom) << capacity;
  }
}

TEST(Attributes, WritesEmptyValuesByHandAndNothingWithoutRoom) {
  std::array<std::uint8_t, 5> dest{};
  EXPECT_EQ(WriteAttribute(dest, 195, {}), 3);
  EXPECT_EQ(dest[0], 195);
  EXPECT_EQ(WriteAttribute(std::span(dest).subspan(1), 9, AsBytes("ab")), kNoRoom);
  EXPECT_EQ(dest[1], 0);
  EXPECT_EQ(WriteAttribute(dest, 9, AsBytes("ab")), 5);
}

TEST(Attributes, DecodesTable) {
  struct Case {
    const char* bytes;
    int result;
    const char* tag5;  // nullptr: absent
  };
  const Case cases[] = {
      {"", 0, nullptr},
      {"FF", 1, nullptr},
      {"050002 'ab'", 5, "ab"},
      {"00 00 050002 'ab' 00 FF 060001 'x'", 9, "ab"},
      {"050001 FF FF", 5, "\xFF"},
      {"050001 'a' 050002 'bc' FF", 10, "bc"},
      {"050000 FF", 4, ""},
      {"050001 'a' 05", kBadLength, "a"},
      {"050001 'a' 0500", kBadLength, "a"},
      {"050002 'a'", kBadLength, nullptr},
      {"050001 'a' 06FFFF 'abc'", kBadLength, "a"},
  };
  for (const Case& example : cases) {
    const std::string bytes = Wire(example.bytes);
    AttributeTable table;
    table.Set(200, "left over");
    EXPECT_EQ(DecodeAttributes(table, AsBytes(bytes)), example.result) << example.bytes;
    EXPECT_FALSE(table.Has(200));
    ASSERT_EQ(table.Has(5), example.tag5 != nullptr) << example.bytes;
    if (example.tag5 != nullptr) {
      EXPECT_EQ(table.Text(5), example.tag5);
    }
  }
}

TEST(MessageBuffer, CompactsBetweenItsCursorsOnly) {
  MessageBuffer buffer(8);
  for (int byte = 0; byte < 6; ++byte) {
    buffer.WriteCursor()[0] = static_cast<std::uint8_t>(byte);
    buffer.AdvanceWrite(1);
  }
  buffer.AdvanceRead(2);
  EXPECT_EQ(buffer.Compact(1), -1);
  EXPECT_EQ(buffer.Compact(7), -1);
  EXPECT_EQ(buffer.Unread(), 4U);
  EXPECT_EQ(buffer.Free(), 2U);
  EXPECT_EQ(buffer.Compact(3), 0);
  EXPECT_EQ(AsText(buffer.UnreadBytes()), Wire("030405"));
  EXPECT_EQ(buffer.Free(), 5U);
  buffer.AdvanceRead(1);
  EXPECT_EQ(buffer.Compact(3), 0);
  EXPECT_EQ(buffer.Unread(), 0U);
  EXPECT_EQ(buffer.Free(), 8U);
}

TEST(TextCoding, HexAndLetters) {
  EXPECT_EQ(HexEncode(AsBytes(Wire("00FF1e"))), "00ff1e");
  struct Case {
    const char* letters;
    std::size_t capacity;
    int result;
    const char* bytes;
  };
  const Case cases[] = {
      {"DBDC", 2, 2, "12"}, {"PP", 1, 1, "\xFF"}, {"", 0, 0, ""},       {"DBD", 9, -1, ""},
      {"DBDC", 1, -1, ""},  {"DBdC", 9, -1, "1"}, {"DBDQ", 9, -1, "1"},
  };
  for (const Case& example : cases) {
    const LetterDecoded decoded = LetterDecode(example.letters, example.capacity);
    EXPECT_EQ(decoded.result, example.result) << example.letters;
    EXPECT_EQ(decoded.bytes, example.bytes) << example.letters;
  }
}

}  // namespace
}  // namespace updown
