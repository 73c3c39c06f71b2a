#include "localdata/tasklist.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tests/wire/wire_bytes.h"

namespace updown {
namespace {

using test::TemporaryFolder;
using testing::Wire;

StoredRecord Record(std::uint32_t id, const std::string& remotePath, TransferState state) {
  StoredRecord record;
  record.recordId = id;
  record.paths = {remotePath, "/l"};
  record.state = state;
  return record;
}

RecordList ListOf(const std::vector<StoredRecord>& records) {
  RecordList list;
  for (const StoredRecord& record : records) {
    list.push_back(std::make_shared<TransferRecord>(record));
  }
  return list;
}

std::vector<std::uint32_t> Ids(const RecordList& list) {
  std::vector<std::uint32_t> ids;
  for (const auto& record : list) {
    ids.push_back(record->recordId);
  }
  return ids;
}

std::vector<std::uint32_t> IdsLoadedFrom(const std::string& bytes) {
  const TemporaryFolder folder;
  test::WriteFile(folder.File("list"), bytes);
  return Ids(LoadTaskList(folder.File("list")));
}

TEST(TaskList, ARecordHasTheseBytes) {
  const std::string bytes = Wire(
      "01 0004 01000000  02 0002 '/r'      03 0000           04 0004 78563412"
      "05 0004 01000000  06 0004 FFFFFFFF  07 0004 09000000  08 0004 07000000"
      "09 0004 01000000  0A 0004 01000000  FF");
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  const StoredRecord stored{
      1, {"/r", ""}, 0x12345678, 1, 0xFFFFFFFF, 9, 7, 1, TransferState::Stopped};
  SaveTaskList(ListOf({stored}), path);
  EXPECT_EQ(test::ReadFile(path), bytes);

  const RecordList loaded = LoadTaskList(path);
  ASSERT_EQ(loaded.size(), 1U);
  EXPECT_EQ(loaded.front()->RemotePath(), "/r");
  EXPECT_EQ(loaded.front()->totalBytes, 0x12345678U);
  EXPECT_EQ(loaded.front()->remoteTime, 0xFFFFFFFFU);
  EXPECT_EQ(loaded.front()->keepAcrossRestart, 0U);
  SaveTaskList(loaded, path);
  EXPECT_EQ(test::ReadFile(path), bytes) << "nothing is lost on the way";
}

TEST(TaskList, FinishedAndOversizedRecordsAreLeftOut) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  EXPECT_TRUE(LoadTaskList(path).empty());
  EXPECT_TRUE(std::filesystem::exists(path));
  const std::string longest(961 - 2, 'p');  // beside the "/l" of the local path
  SaveTaskList(
      ListOf({Record(1, "/a", TransferState::Finished), Record(2, longest, TransferState::Failed),
              Record(3, longest + "p", TransferState::Queued),
              Record(4, std::string(70000, 'p'), TransferState::Queued),
              Record(5, "/b", static_cast<TransferState>(77))}),
      path);
  EXPECT_EQ(Ids(LoadTaskList(path)), (std::vector<std::uint32_t>{2, 5}));
  SaveTaskList(ListOf({Record(1, "/a", TransferState::Finished)}), path);
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
    SaveTaskList(ListOf(records), path);
    const RecordList loaded = LoadTaskList(path);
    ASSERT_EQ(Ids(loaded), ids) << padding;
    for (const auto& record : loaded) {
      ASSERT_EQ(record->LocalPath(), "/l") << padding;
    }
  }
}

TEST(TaskList, BadBytesEndTheReadingWithTheRecordsSoFar) {
  const std::string good = Wire("02 0002 2FFF 07 0004 05000000 FF");
  std::vector<std::string> tails = {Wire("02 FFFF") + std::string(5000, 'x') + good,
                                    std::string(5000, '\0'), Wire("07 0005")};
  for (std::size_t cut = 0; cut < good.size(); ++cut) {
    tails.push_back(good.substr(0, cut));
  }
  for (const std::string& tail : tails) {
    EXPECT_EQ(IdsLoadedFrom(good + tail), (std::vector<std::uint32_t>{5})) << tail.substr(0, 20);
  }
  // A number of another length counts as absent; a list may lack everything.
  EXPECT_EQ(IdsLoadedFrom(Wire("07 0002 0500 FF FF 00 00") + good),
            (std::vector<std::uint32_t>{0, 0, 5}));
  EXPECT_EQ(IdsLoadedFrom(std::string(200000, '\xFF')).size(), 100000U);
}

}  // namespace
}  // namespace updown
