#include "localdata/files.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>

#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

TEST(LocalFiles, ReachTheNameThatThePathSpells) {
  const test::TemporaryFolder folder;
  const std::string path = folder.File("\xE4\xB8\xAD \xC3\xA4.bin");
  EXPECT_EQ(LocalFileSize(path), 0U);
  EXPECT_FALSE(OpenLocalFile(path, OpenMode::ReadWrite, FileDisposition::OpenExisting));
  const std::array<std::uint8_t, 3> bytes = {1, 2, 3};
  {
    const UniqueFd file = OpenLocalFile(path, OpenMode::ReadWrite, FileDisposition::OpenAlways);
    EXPECT_EQ(SeekLocalFile(file, 2), 0);
    EXPECT_EQ(WriteLocalFile(file, bytes), 3);
    EXPECT_EQ(SeekLocalFile(file, 0x7FFFFFFFU), 0);
    EXPECT_EQ(SeekLocalFile(file, 0x80000000U), -1);
  }
  EXPECT_EQ(LocalFileSize(path), 5U);
  const UniqueFd file = OpenLocalFile(path, OpenMode::Read, FileDisposition::OpenAlways);
  std::array<std::uint8_t, 8> buffer{};
  EXPECT_EQ(ReadLocalFile(file, buffer), 5);
  EXPECT_EQ(buffer, (std::array<std::uint8_t, 8>{0, 0, 1, 2, 3}));
  EXPECT_EQ(ReadLocalFile(file, buffer), 0);
  std::filesystem::resize_file(path, (1ULL << 32) + 6);
  EXPECT_EQ(LocalFileSize(path), 6U) << "its low 32 bits";
  EXPECT_TRUE(DeleteLocalFile(path));
  EXPECT_FALSE(DeleteLocalFile(path));
  const std::string tooLong = folder.Path() + std::string(259, '/') + "f";
  EXPECT_FALSE(OpenLocalFile(tooLong, OpenMode::ReadWrite, FileDisposition::OpenAlways));
}

}  // namespace
}  // namespace updown
