#include "service/transfer.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/statvfs.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>

#include "localdata/files.h"
#include "service/download_target.h"
#include "tests/service/script.h"
#include "tests/support/temporary_folder.h"

namespace {

fsblkcnt_t roomOnDisk = 1ULL << 40;  // bytes

}  // namespace

// In place of the system's: a file system that is full is not to be had without rights.
extern "C" int fstatvfs(int /*file*/, struct statvfs* disk) noexcept {
  *disk = {};
  disk->f_frsize = 1;
  disk->f_blocks = 1ULL << 40;
  disk->f_bavail = roomOnDisk;
  return 0;
}

namespace updown {
namespace {

using testing::First;
using testing::Framed;
using testing::Number;
using testing::Request;
using testing::Second;
using testing::Step;
using testing::Wire;

constexpr std::uint32_t kServiceTime = 0x5F000000;

// Requests and replies of a transfer of "/f" with session "s1".
struct Dialog {
  bool second;

  const ServiceOps& Ops() const { return second ? SecondDialect() : FirstDialect(); }
  std::string Answer(std::size_t code, const std::string& data = {}) const {
    return second ? Second(code, data) : First(0x8000, data);
  }
  Step Attach() const {
    return {Request(0x1101, second ? "s1" : Wire("A6 0002 's1' FF")), Answer(0x1000)};
  }
  Step Ask(std::size_t size) const {
    return {Request(0x100A, "/f"), Answer(4106, Wire("10 0001 'f' 13 0004") + Number(kServiceTime) +
                                                    Wire("14 0004") + Number(size) + '\xFF')};
  }
  static std::string List(std::size_t offset, std::size_t length) {
    return Wire("C1 0004") + Number(offset) + Wire("C2 0004") + Number(length) +
           Wire("C3 0002 '/f' FF");
  }
  static std::string BlockRequestAt(std::size_t offset) { return Request(0x1008, List(offset, 0)); }
  std::string BlockHead(std::size_t offset, std::size_t length) const {
    return Answer(4104, second ? List(offset, length) : Number(length));
  }
  Step Block(std::size_t offset, const std::string& bytes) const {
    return {BlockRequestAt(offset), BlockHead(offset, bytes.size()) + bytes};
  }
};

constexpr Dialog kDialogs[] = {{false}, {true}};

class Transfer : public ::testing::Test, public TransferProgress {
 protected:
  void BlockDone(TransferRecord& /*record*/) override {
    ++blocks_;
    if (behindBlock_) {
      behindBlock_();
    }
  }

  // A Queued record, and the local file; nullopt: none.
  void Begin(std::optional<std::string> local = {}, std::uint32_t done = 0, std::uint32_t total = 0,
             std::uint32_t time = 0) {
    std::filesystem::remove(local_);
    if (local) {
      test::WriteFile(local_, *local);
    }
    record_.SetPaths({"/f", local_});
    record_.state = TransferState::Queued;
    record_.doneBytes = done;
    record_.unsyncedBytes = 0;
    record_.totalBytes = total;
    record_.remoteTime = time;
  }
  std::string Local() const { return test::ReadFile(local_); }

  using Operation = decltype(ServiceOps::DownloadFile);
  int Run(Operation operation, const std::vector<Step>& steps, std::size_t piece = 0) {
    blocks_ = 0;
    testing::ServicePeer peer(steps, piece);
    result_ = operation(peer.Link(), "s1", record_, this);
    EXPECT_EQ(peer.Finish(), "");
    return result_.code;
  }
  // A file of `size` bytes on the service, of which `blocks` are asked for.
  int Download(const Dialog& dialog, std::size_t size, const std::vector<Step>& blocks,
               std::size_t piece = 0) {
    std::vector<Step> steps = {dialog.Attach(), dialog.Ask(size)};
    steps.insert(steps.end(), blocks.begin(), blocks.end());
    return Run(dialog.Ops().DownloadFile, steps, piece);
  }

  test::TemporaryFolder folder_;
  const std::string local_ = folder_.File("local");
  TransferRecord record_;
  TransferResult result_;
  std::function<void()> behindBlock_;
  int blocks_ = 0;
};

std::string Pattern(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t at = 0; at < size; ++at) {
    bytes[at] = static_cast<char>(at * 31 + at / 251);
  }
  return bytes;
}

TEST_F(Transfer, DownloadsInBlocksWhateverThePieces) {
  // The rest of a large block goes through a pipe.
  for (const std::vector<std::size_t>& ends :
       {std::vector<std::size_t>{40000, 149999, 150000}, {2500000, 3000000}}) {
    const std::string whole = Pattern(ends.back());
    for (const Dialog& dialog : kDialogs) {
      std::vector<Step> blocks;
      for (std::size_t from = 0; const std::size_t end : ends) {
        blocks.push_back(dialog.Block(from, whole.substr(from, end - from)));
        from = end;
      }
      for (const std::size_t piece : {0, 1000, 32768, 100000}) {
        Begin("an older file");
        EXPECT_EQ(Download(dialog, whole.size(), blocks, piece), 0);
        EXPECT_TRUE(Local() == whole);
        EXPECT_EQ(blocks_, static_cast<int>(ends.size()));
        EXPECT_EQ(record_.state, TransferState::Finished);
      }
    }
  }
}

TEST_F(Transfer, ResumeDecisionTable) {
  const std::string whole = "0123456789";
  const struct {
    const char* name;
    std::uint32_t done, total, time;
    std::optional<std::string> local;
    int offset;  // of the one block asked for; -1: none
    const char* after;
  } cases[] = {
      {"fresh", 0, 0, 0, {}, 0, "0123456789"},
      {"resumes", 4, 10, kServiceTime, "abcd", 4, "abcd456789"},
      {"local longer", 4, 10, kServiceTime, "0123xxxxxxyy", 4, "0123456789"},
      {"local shorter", 4, 10, kServiceTime, "012", 0, "0123456789"},
      {"local gone", 10, 10, kServiceTime, {}, 0, "0123456789"},
      {"complete", 10, 10, kServiceTime, "abcdefghij", -1, "abcdefghij"},
      {"complete but longer", 10, 10, kServiceTime, "abcdefghijkl", -1, "abcdefghij"},
      {"other time", 4, 10, kServiceTime + 1, "abcdefghijkl", 0, "0123456789"},
      {"other size", 4, 11, kServiceTime, "abcd", 0, "0123456789"},
  };
  for (const Dialog& dialog : kDialogs) {
    for (const auto& example : cases) {
      SCOPED_TRACE(example.name);
      Begin(example.local, example.done, example.total, example.time);
      std::vector<Step> blocks;
      if (example.offset >= 0) {
        const auto offset = static_cast<std::size_t>(example.offset);
        blocks.push_back(dialog.Block(offset, whole.substr(offset)));
      }
      EXPECT_EQ(Download(dialog, 10, blocks), 0);
      EXPECT_EQ(Local(), example.after);
      EXPECT_EQ(record_.state, TransferState::Finished);
      EXPECT_EQ(record_.doneBytes, 10U);
      EXPECT_EQ(record_.totalBytes, 10U);
      EXPECT_EQ(record_.remoteTime, kServiceTime);
    }
  }
}

TEST_F(Transfer, ABlockThatBreaksOffDoesNotCount) {
  const Dialog dialog{true};
  Begin("0123456789", 8, 10, kServiceTime - 1);
  EXPECT_EQ(Download(dialog, 10, {{Dialog::BlockRequestAt(0), ""}}), result::kConnection);
  EXPECT_EQ(record_.doneBytes, 0U) << "nor do those of the older file";
  EXPECT_EQ(record_.remoteTime, kServiceTime);
  EXPECT_EQ(Local(), "0123456789");

  const std::string most = Pattern(2000000);
  const Step cut = {Dialog::BlockRequestAt(0), dialog.BlockHead(0, 3000000) + most};
  EXPECT_EQ(Download(dialog, 3000000, {cut}), result::kConnection);
  EXPECT_EQ(record_.doneBytes, 0U);
  EXPECT_TRUE(Local() == most);
}

TEST_F(Transfer, DownloadFailuresTable) {
  struct Case {
    const char* name;
    std::string information;
    std::string block;  // the second one's answer
    int result;
  };
  for (const Dialog& dialog : kDialogs) {
    const bool second = dialog.second;
    const std::string good = dialog.Ask(10).answer;
    const Case cases[] = {
        {"no information", "", "", result::kConnection},
        {"refused", second ? Second(4106, "500") : First(0x8013), "",
         second ? result::kNotDecodable : result::kNoSuchRemoteFile},
        {"no size", dialog.Answer(4106, Wire("13 0004 5F000000 FF")), "", result::kNotDecodable},
        {"2 GiB", dialog.Ask(0x80000000).answer, "", result::kNotImplemented},
        {"cut inside a block", good, dialog.BlockHead(4, 6) + "45", result::kConnection},
        {"length near 2^32", good, dialog.BlockHead(4, 0xFFFFFFFF) + Pattern(40000),
         result::kNotDecodable},
        {"one byte past the end", good, dialog.BlockHead(4, 7) + "456789a", result::kNotDecodable},
        {"empty block", good, dialog.BlockHead(4, 0), result::kNotDecodable},
        {"refused, or of another kind", good, second ? Second(4105) : First(0x8007),
         second ? result::kNotDecodable : result::kAccessRefused},
        {"length of the wrong size", good,
         Wire(second ? "00000017 010004 00001008 02000C C10004 00000000 C20002 0004 FF"
                     : "00000014 010004 00008000 020002 0004 0A0004 01000000 FF"),
         result::kNotDecodable},
        {"other offset", good, second ? dialog.BlockHead(5, 5) + "56789" : "",
         second ? result::kNotDecodable : result::kConnection},
    };
    for (const auto& example : cases) {
      SCOPED_TRACE(example.name);
      const bool begun = example.information == good;
      std::vector<Step> steps = {dialog.Attach(), {dialog.Ask(10).expect, example.information}};
      if (begun) {
        steps.push_back(dialog.Block(0, "0123"));
        steps.push_back({Dialog::BlockRequestAt(4), example.block});
      }
      Begin();
      EXPECT_EQ(Run(dialog.Ops().DownloadFile, steps), example.result);
      EXPECT_EQ(record_.state, TransferState::Failed);
      EXPECT_EQ(record_.doneBytes, begun ? 4U : 0U);
      EXPECT_EQ(std::filesystem::exists(local_), begun);
      EXPECT_EQ(Local().substr(0, 4), begun ? "0123" : "");
      EXPECT_LE(Local().size(), 6U) << "nothing of a refused block is written";
      EXPECT_EQ(result_.path, "/f");
      EXPECT_EQ(result_.systemError, example.result == result::kConnection ? ECONNRESET : 0);
    }
  }
}

TEST_F(Transfer, EmptyFileAndNoTarget) {
  for (const Dialog& dialog : kDialogs) {
    Begin();
    EXPECT_EQ(Download(dialog, 0, {}), 0);
    EXPECT_TRUE(std::filesystem::exists(local_));
    EXPECT_EQ(record_.state, TransferState::Finished);

    const std::string nowhere = folder_.File("no folder/local");
    record_.SetPaths({"/f", nowhere});
    EXPECT_EQ(Download(dialog, 10, {}), result::kFileOpen);
    EXPECT_EQ(result_.systemError, ENOENT);
    EXPECT_EQ(result_.path, nowhere);
  }
}

// A disk that has no room is told before a byte is asked for. The limit on a file's size stands in
// for one that fills up on the way.
TEST_F(Transfer, AFullDiskIsTold) {
  const struct {
    std::size_t limit, room, done;
    int error;
    std::size_t written;
  } cases[] = {
      {100, 300000, 0, EFBIG, 100},
      {200000, 300000, 0, EFBIG, 200000},
      {300000, 299999, 0, ENOSPC, 0},
      {300000, 100000, 200000, 0, 300000},
  };
  const std::string whole = Pattern(300000);
  const Dialog dialog{false};
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const auto& [limit, room, done, error, written] : cases) {
    Begin(whole.substr(0, done), static_cast<std::uint32_t>(done), 300000, kServiceTime);
    std::vector<Step> blocks = {dialog.Block(done, whole.substr(done))};
    blocks.resize(error == ENOSPC ? 0 : 1);
    roomOnDisk = room;
    const rlimit small{limit, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const int ended = Download(dialog, whole.size(), blocks);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(ended, error == 0 ? 0 : result::kFileWrite);
    EXPECT_EQ(result_.systemError, error);
    EXPECT_EQ(result_.path, error == 0 ? "" : local_);
    EXPECT_EQ(record_.doneBytes, error == 0 ? 300000U : 0U);
    EXPECT_TRUE(Local() == whole.substr(0, written));
  }
}

TEST_F(Transfer, AFileThatAnotherTransferWritesIsLeftAlone) {
  Begin("of the other");
  const UniqueFd other = OpenLocalFile(local_, OpenMode::ReadWrite, FileDisposition::OpenAlways);
  ASSERT_EQ(flock(other.Get(), LOCK_EX), 0);
  EXPECT_EQ(Download(Dialog{false}, 8, {}), result::kFileOpen);
  EXPECT_EQ(result_.systemError, EBUSY);
  EXPECT_EQ(Local(), "of the other");
}

TEST_F(Transfer, ATargetThatIsTakenAwayFails) {
  const std::pair<std::function<void()>, int> cases[] = {
      {[this] { std::filesystem::remove(local_); }, ENOENT},
      {[this] {
         test::WriteFile(folder_.File("other"), "another file");
         std::filesystem::rename(folder_.File("other"), local_);
       },
       ESTALE},
  };
  const Dialog dialog{true};
  const std::vector<Step> blocks = {dialog.Block(0, "0123"), dialog.Block(4, "4567")};
  for (const auto& [takeAway, error] : cases) {
    for (const TransferState state : {TransferState::Queued, TransferState::Stopped}) {
      Begin();
      behindBlock_ = [&, take = takeAway] {
        take();
        record_.state = state;
      };
      const int count = state == TransferState::Stopped ? 1 : 2;
      EXPECT_EQ(Download(dialog, 8, {blocks.begin(), blocks.begin() + count}), result::kFileWrite);
      EXPECT_EQ(result_.systemError, error);
      EXPECT_EQ(record_.doneBytes, 0U) << "another file has none of these bytes";
    }
  }
}

TEST_F(Transfer, WhatTheListClaimsIsOnTheDisk) {
  Begin();
  std::vector<std::uint32_t> shown;
  std::vector<std::uint32_t> stored;
  behindBlock_ = [&] {
    shown.push_back(record_.doneBytes);
    stored.push_back(record_.Store().doneBytes);
  };
  const Dialog dialog{false};
  EXPECT_EQ(Download(dialog, 8, {dialog.Block(0, "0123"), dialog.Block(4, "4567")}), 0);
  EXPECT_EQ(shown, (std::vector<std::uint32_t>{4, 8}));
  EXPECT_EQ(stored, (std::vector<std::uint32_t>{0, 0}));
  EXPECT_EQ(record_.Store().doneBytes, 8U);

  DownloadTarget target;
  ASSERT_EQ(target.Open(local_), 0);
  const auto now = DownloadTarget::Clock::now();
  EXPECT_EQ(target.Sync(now), 0);
  EXPECT_FALSE(target.SyncIsDue(now + std::chrono::milliseconds(4999)));
  EXPECT_TRUE(target.SyncIsDue(now + std::chrono::seconds(5)));
}

TEST_F(Transfer, StopTakesEffectBetweenBlocks) {
  for (const Dialog& dialog : kDialogs) {
    // Before the target is made: no trace of it.
    Begin();
    record_.state = TransferState::Stopped;
    EXPECT_EQ(Download(dialog, 0, {}), 0);
    EXPECT_FALSE(std::filesystem::exists(local_));
    EXPECT_EQ(record_.state, TransferState::Stopped);

    Begin();
    behindBlock_ = [this] { record_.state = TransferState::Stopped; };
    EXPECT_EQ(Download(dialog, 8, {dialog.Block(0, "0123")}), 0);
    EXPECT_EQ(record_.state, TransferState::Stopped);
    EXPECT_EQ(record_.doneBytes, 4U);
    // Stopped in the last block.
    record_.state = TransferState::Queued;
    EXPECT_EQ(Download(dialog, 8, {dialog.Block(4, "4567")}), 0);
    EXPECT_EQ(record_.state, dialog.second ? TransferState::Finished : TransferState::Stopped);
    EXPECT_EQ(Local(), "01234567");
    // A failure leaves Stopped alone, a refused session too.
    const std::pair<std::string, int> refusals[] = {
        {"", result::kConnection},
        {dialog.second ? Second(0x8006) : First(0x8006), result::kAuthentication}};
    for (const auto& [refusal, result] : refusals) {
      record_.state = TransferState::Stopped;
      EXPECT_EQ(Run(dialog.Ops().DownloadFile, {{dialog.Attach().expect, refusal}}), result);
      EXPECT_EQ(record_.state, TransferState::Stopped);
    }
  }
}

std::string UploadFrame(std::size_t offset, const std::string& bytes) {
  return Framed(Wire("01 0004 00001009 02 0014") + Dialog::List(offset, bytes.size()) +
                Wire("0A 0004 01000000 FF") + bytes);
}

TEST_F(Transfer, UploadFillsTheBufferBehindItsHeadAndWhatIsDone) {
  const std::string whole = Pattern(40000);
  for (const Dialog& dialog : kDialogs) {
    const Step ask = dialog.Ask(0);
    const std::string taken = dialog.Answer(4105, "200");
    const std::string refused = dialog.second ? Second(4105, "500") : First(0x8007);
    // The second dialect's blocks start behind the reply before them.
    const std::size_t block = 32768 - 42 - (dialog.second ? ask.answer.size() : 0);
    for (const std::string& answer : {taken, refused}) {
      Begin(whole, 2);
      EXPECT_EQ(
          Run(dialog.Ops().UploadFile, {dialog.Attach(),
                                        ask,
                                        {UploadFrame(2, whole.substr(2, block)), taken},
                                        {UploadFrame(2 + block, whole.substr(2 + block)), answer}}),
          answer == taken ? 0 : result::kAccessRefused);
      EXPECT_EQ(record_.state, answer == taken ? TransferState::Finished : TransferState::Failed);
      EXPECT_EQ(record_.doneBytes, answer == taken ? whole.size() : 2 + block);
    }
  }
}

TEST_F(Transfer, WithoutARelayTheRecordFailsUntouched) {
  Begin({}, 5);
  const FileService service;
  EXPECT_EQ(RunTaskTransfer(service, "fs", 21, "s1", record_, nullptr).code, result::kConnection);
  EXPECT_EQ(record_.state, TransferState::Failed);
  EXPECT_EQ(record_.doneBytes, 5U);
}

}  // namespace
}  // namespace updown
