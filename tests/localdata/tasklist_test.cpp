#include "localdata/tasklist.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using test::TemporaryFolder;

StoredRecord Record(std::uint32_t id, const std::string& remotePath, TransferState state) {
  StoredRecord record;
  record.recordId = id;
  record.paths = {remotePath, "/l"};
  record.state = state;
  return record;
}

RecordChain ChainOf(const std::vector<StoredRecord>& records) {
  RecordChain chain;
  for (const StoredRecord& record : records) {
    chain.Append(std::make_shared<TransferRecord>(record));
  }
  return chain;
}

std::vector<std::uint32_t> Ids(const RecordChain& chain) {
  std::vector<std::uint32_t> ids;
  for (const TransferRecord& record : chain) {
    ids.push_back(record.recordId);
  }
  return ids;
}

std::vector<std::uint32_t> IdsLoadedFrom(const std::string& bytes) {
  const TemporaryFolder folder;
  test::WriteFile(folder.File("list"), bytes);
  return Ids(LoadTaskList(folder.File("list")));
}

template <std::size_t N>
std::string Literal(const char (&bytes)[N]) {
  return {bytes, N - 1};
}

TEST(TaskList, ARecordHasTheseBytes) {
  const std::string bytes = Literal(
      "\x01\0\x04\x01\0\0\0"
      "\x02\0\x02/r"
      "\x03\0\0"
      "\x04\0\x04\x78\x56\x34\x12"
      "\x05\0\x04\x01\0\0\0"
      "\x06\0\x04\xFF\xFF\xFF\xFF"
      "\x07\0\x04\x09\0\0\0"
      "\x08\0\x04\x07\0\0\0"
      "\x09\0\x04\x01\0\0\0"
      "\x0A\0\x04\x01\0\0\0"
      "\xFF");
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  const StoredRecord stored{
      1, {"/r", ""}, 0x12345678, 1, 0xFFFFFFFF, 9, 7, 1, TransferState::Stopped};
  SaveTaskList(ChainOf({stored}), path);
  EXPECT_EQ(test::ReadFile(path), bytes);

  const RecordChain loaded = LoadTaskList(path);
  ASSERT_EQ(loaded.Size(), 1U);
  const StoredRecord back = loaded.First()->Store();
  EXPECT_EQ(back.paths.remotePath, "/r");
  EXPECT_EQ(back.paths.localPath, "");
  EXPECT_EQ(back.totalBytes, 0x12345678U);
  EXPECT_EQ(back.doneBytes, 1U);
  EXPECT_EQ(back.remoteTime, 0xFFFFFFFFU);
  EXPECT_EQ(back.parentRecordId, 7U);
  EXPECT_EQ(back.isFolder, 1U);
  EXPECT_EQ(back.direction, 1U);
  EXPECT_EQ(back.state, TransferState::Stopped);
  EXPECT_EQ(loaded.First()->keepAcrossRestart, 0U);
}

TEST(TaskList, FinishedAndOversizedRecordsAreLeftOut) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  EXPECT_TRUE(LoadTaskList(path).Empty());
  EXPECT_TRUE(std::filesystem::exists(path));
  const std::string longest(961 - 2, 'p');  // beside the "/l" of the local path
  SaveTaskList(
      ChainOf({Record(1, "/a", TransferState::Finished), Record(2, longest, TransferState::Failed),
               Record(3, longest + "p", TransferState::Queued),
               Record(4, std::string(70000, 'p'), TransferState::Queued),
               Record(5, "/b", static_cast<TransferState>(77))}),
      path);
  EXPECT_EQ(Ids(LoadTaskList(path)), (std::vector<std::uint32_t>{2, 5}));
  SaveTaskList(ChainOf({Record(1, "/a", TransferState::Finished)}), path);
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

// The reader takes 1024 bytes at a time. Paths and numbers end in the end mark's byte, and each
// padding moves the cuts to another place in the records.
TEST(TaskList, RecordsAreWholeWhereverTheBufferCutsThem) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  for (std::size_t padding = 0; padding < 100; ++padding) {
    std::vector<StoredRecord> records = {
        Record(1, std::string(padding, 'p'), TransferState::Queued)};
    std::vector<std::uint32_t> ids = {1};
    for (std::uint32_t id = 0xFFFFFFF0U; id < 0xFFFFFFFFU; ++id) {
      records.push_back(Record(id, "/r\xFF\xFF", static_cast<TransferState>(0xFFFFFFFF)));
      ids.push_back(id);
    }
    SaveTaskList(ChainOf(records), path);
    const RecordChain loaded = LoadTaskList(path);
    ASSERT_EQ(Ids(loaded), ids) << padding;
    for (const TransferRecord& record : loaded) {
      ASSERT_EQ(record.LocalPath(), "/l") << padding;
    }
  }
}

TEST(TaskList, AFileCutInItsLastRecordLosesOnlyThat) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  SaveTaskList(ChainOf({Record(1, "/\xFF", TransferState::Queued)}), path);
  const std::string one = test::ReadFile(path);
  for (std::size_t cut = 0; cut < one.size(); ++cut) {
    EXPECT_EQ(IdsLoadedFrom(one + one.substr(0, cut)), (std::vector<std::uint32_t>{1})) << cut;
  }
}

TEST(TaskList, BadBytesEndTheReadingWithTheRecordsSoFar) {
  const std::string good = Literal("\x07\0\x04\x05\0\0\0\xFF");
  const std::string cases[] = {
      good + Literal("\x02\xFF\xFF") + std::string(5000, 'x') + good,  // no record is that long
      good + std::string(5000, '\0'),
      good + Literal("\x07\0\x05"),
  };
  for (const std::string& bytes : cases) {
    EXPECT_EQ(IdsLoadedFrom(bytes), (std::vector<std::uint32_t>{5}));
  }
  // A number of another length counts as absent; a list may lack everything.
  EXPECT_EQ(IdsLoadedFrom(Literal("\x07\0\x02\x05\0\xFF\xFF\0\0") + good),
            (std::vector<std::uint32_t>{0, 0, 5}));
  EXPECT_EQ(IdsLoadedFrom(std::string(200000, '\xFF')).size(), 100000U);
}

}  // namespace
}  // namespace updown
