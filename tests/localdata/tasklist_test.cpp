#include "localdata/tasklist.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <thread>
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

std::vector<std::uint32_t> Ids(const std::vector<StoredRecord>& records) {
  std::vector<std::uint32_t> ids;
  for (const StoredRecord& record : records) {
    ids.push_back(record.recordId);
  }
  return ids;
}

std::vector<std::uint32_t> IdsLoadedFrom(const std::string& bytes) {
  const TemporaryFolder folder;
  test::WriteFile(folder.File("list"), bytes);
  return Ids(LoadTaskList(folder.File("list")));
}

TEST(TaskList, ARecordHasTheseBytes) {
  const std::string ten = Wire(
      "01 0004 01000000  02 0002 '/r'      03 0000           04 0004 78563412"
      "05 0004 01000000  06 0004 FFFFFFFF  07 0004 09000000  08 0004 07000000  09 0004 01000000");
  const std::pair<TransferState, std::string> cases[] = {
      {TransferState::Stopped, Wire("0A 0004 01000000 FF")},
      {TransferState::Failed, Wire("0A 0004 03000000 0B 0004 07200000 0C 0004 1C000000 FF")}};
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  for (const auto& [state, tail] : cases) {
    SaveTaskList({{{1, {"/r", ""}, 0x12345678, 1, 0xFFFFFFFF, 9, 7, 1, state, 8199, 28}}}, path);
    EXPECT_EQ(test::ReadFile(path), ten + tail);
    const std::vector<StoredRecord> loaded = LoadTaskList(path);
    ASSERT_EQ(loaded.size(), 1U);
    EXPECT_EQ(loaded[0].paths.remotePath, "/r");
    EXPECT_EQ(loaded[0].totalBytes, 0x12345678U);
    SaveTaskList({{TransferRecord(loaded[0]).Store()}}, path);
    EXPECT_EQ(test::ReadFile(path), ten + tail) << "nothing is lost on the way";
  }
}

// Written by version 0.1.0: Queued, Stopped, a Failed folder with its child.
TEST(TaskList, TheVersionBeforeIsRead) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  std::filesystem::copy_file(TASK_LIST_FIXTURE, path);
  const std::vector<StoredRecord> loaded = LoadTaskList(path);
  ASSERT_EQ(Ids(loaded), (std::vector<std::uint32_t>{1, 2, 3, 4}));
  EXPECT_EQ(loaded[1].paths.localPath, "/home/maria/\u4e2d\u6587.zip");
  EXPECT_EQ(loaded[1].doneBytes, 65536U);
  EXPECT_EQ(loaded[1].state, TransferState::Stopped);
  EXPECT_EQ(loaded[3].parentRecordId, 3U);
  EXPECT_EQ(loaded[3].resultCode, 0U);
}

TEST(TaskList, AFailedSaveLeavesTheOldList) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  EXPECT_EQ(SaveTaskList({{Record(1, "/old", TransferState::Queued)}}, path), 0);
  struct stat status {};
  stat(path.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);

  const std::vector<StoredRecord> many(3000, Record(2, "/new", TransferState::Queued));
  // The limit on a file's size stands in for a full disk.
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{100000, before.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  const int saved = SaveTaskList(many, path);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(saved, EFBIG);
  EXPECT_EQ(Ids(LoadTaskList(path)), (std::vector<std::uint32_t>{1}));
  EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
  // What a killed run has left is no hindrance, and nothing of it gets into the list.
  test::WriteFile(path + ".tmp", std::string(1000000, 'x'));
  EXPECT_EQ(SaveTaskList(many, path), 0);
  EXPECT_EQ(LoadTaskList(path).size(), many.size());
  EXPECT_EQ(SaveTaskList(many, folder.File("missing/list")), ENOENT);
}

TEST(TaskList, WhatCannotBeReadWhollyIsKeptBeside) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  const std::string good = Wire("02 0001 2F 07 0004 05000000 FF");
  for (const std::string& tail : {std::string(), Wire("02 FFFF 2F")}) {
    test::WriteFile(path, good + tail);
    EXPECT_EQ(LoadTaskList(path).size(), 1U);
    EXPECT_EQ(test::ReadFile(path), good + tail) << "a start without a save loses nothing";
    EXPECT_EQ(SaveTaskList({}, path), 0);
    EXPECT_EQ(std::filesystem::exists(path + ".bad"), !tail.empty());
  }
  EXPECT_EQ(test::ReadFile(path + ".bad"), good + Wire("02 FFFF 2F"));
}

TEST(TaskList, FinishedAndOversizedRecordsAreLeftOut) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  EXPECT_TRUE(LoadTaskList(path).empty());
  EXPECT_TRUE(std::filesystem::exists(path));
  const std::string longest(961 - 2, 'p');  // beside the "/l" of the local path
  SaveTaskList(
      {{Record(1, "/a", TransferState::Finished),
        Record(2, longest, TransferState::Failed),  // its reason finds no room
        Record(3, longest + "p", TransferState::Queued),
        Record(4, std::string(70000, 'p'), TransferState::Queued),
        Record(5, "/b", static_cast<TransferState>(77)), Record(6, "", TransferState::Queued)}},
      path);
  EXPECT_EQ(Ids(LoadTaskList(path)), (std::vector<std::uint32_t>{2, 5}));
  SaveTaskList({{Record(1, "/a", TransferState::Finished)}}, path);
  EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

// The reader takes 1024 bytes at a time. Paths and numbers end in the end mark's byte, and each
// padding moves the cuts to another place in the records.
TEST(TaskList, RecordsAreWholeWhereverTheBufferCutsThem) {
  const TemporaryFolder folder;
  const std::string path = folder.File("list");
  for (std::size_t padding = 0; padding < 100; ++padding) {
    std::vector<StoredRecord> records = {
        Record(1, std::string(padding + 1, 'p'), TransferState::Queued)};
    for (std::uint32_t id = 0xFFFFFFF0U; id < 0xFFFFFFFFU; ++id) {
      records.push_back(Record(id, "/r\xFF\xFF", static_cast<TransferState>(0xFFFFFFFF)));
    }
    SaveTaskList(records, path);
    const std::vector<StoredRecord> loaded = LoadTaskList(path);
    ASSERT_EQ(Ids(loaded), Ids(records)) << padding;
    for (const StoredRecord& record : loaded) {
      ASSERT_EQ(record.paths.localPath, "/l") << padding;
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
  // A number of another length counts as absent; what has no path on the service is left out.
  EXPECT_EQ(
      IdsLoadedFrom(Wire("02 0001 2F 07 0002 0500 FF FF") + std::string(100000, '\xFF') + good),
      (std::vector<std::uint32_t>{0, 5}));
  std::string many;
  for (int i = 0; i < 100001; ++i) {
    many += good;
  }
  EXPECT_EQ(IdsLoadedFrom(many).size(), 100000U);
}

// A folder's child takes up file after file while the main thread saves the list. A save that gave
// one file the count of another would resume over the wrong bytes.
TEST(TransferRecord, AStoredRecordNeverMixesTwoFiles) {
  TransferRecord record;
  std::thread worker([&record] {
    for (std::uint32_t file = 1; file <= 3000; ++file) {
      record.StartFile({std::to_string(file), std::to_string(file)});
      record.doneBytes = file;
    }
  });
  StoredRecord stored;
  while (stored.doneBytes < 3000) {
    stored = record.Store();
    EXPECT_EQ(stored.paths.remotePath, stored.paths.localPath);
    if (stored.doneBytes != 0) {
      EXPECT_EQ(stored.paths.remotePath, std::to_string(stored.doneBytes));
    }
  }
  worker.join();
}

}  // namespace
}  // namespace updown
