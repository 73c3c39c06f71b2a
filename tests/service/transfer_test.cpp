#include "service/transfer.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>

#include "service/download_target.h"
#include "tests/service/script.h"
#include "tests/support/temporary_folder.h"

namespace updown {
namespace {

using testing::First;
using testing::Number;
using testing::Second;
using testing::Step;
using testing::Wire;

constexpr std::uint32_t kServiceTime = 0x5F000000;

class Transfer : public ::testing::Test, public TransferProgress {
 protected:
  bool BeforeBlock(TransferRecord& /*record*/) override { return blocks_ != endAfter_; }
  void BlockDone(TransferRecord& record) override {
    ++blocks_;
    if (stopAfter_ == blocks_) {
      record.state = TransferState::Stopped;
    }
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

  using Operation = TransferResult (*)(Connection&, const std::string&, TransferRecord&,
                                       TransferProgress*);
  int Run(Operation operation, std::vector<Step> steps, std::size_t piece = 0) {
    blocks_ = 0;
    testing::ServicePeer peer(std::move(steps), piece);
    result_ = operation(peer.Link(), "s1", record_, this);
    fault_ = peer.Finish();
    return result_.code;
  }

  test::TemporaryFolder folder_;
  const std::string local_ = folder_.File("local");
  TransferRecord record_;
  TransferResult result_;
  std::string fault_;
  std::function<void()> behindBlock_;
  int blocks_ = 0;
  int stopAfter_ = 0;
  int endAfter_ = -1;
};

// Requests and replies of a transfer of "/f" with session "s1".
struct Dialog {
  bool second;

  auto Download() const { return (second ? SecondDialect() : FirstDialect()).DownloadFile; }
  auto Upload() const { return (second ? SecondDialect() : FirstDialect()).UploadFile; }
  Step Attach() const {
    if (second) {
      return {Wire("00000014 01 0004 00001101 02 0002 's1' 0A 0004 01000000 FF"), Second(0x1000)};
    }
    return {Wire("00000018 01 0004 00001101 02 0006 A60002's1' FF 0A 0004 01000000 FF"),
            First(0x8000)};
  }
  std::string Answer(std::size_t code, const std::string& data) const {
    return second ? Second(code, data) : First(0x8000, data);
  }
  static std::string AskRequest() {
    return Wire("00000014 01 0004 0000100A 02 0002 '/f' 0A 0004 01000000 FF");
  }
  Step Ask(std::size_t size) const {
    return {AskRequest(), Answer(4106, Wire("10 0001 'f' 13 0004") + Number(kServiceTime) +
                                           Wire("14 0004") + Number(size) + '\xFF')};
  }
  static std::string List(std::size_t offset, std::size_t length) {
    return Wire("C1 0004") + Number(offset) + Wire("C2 0004") + Number(length) +
           Wire("C3 0002 '/f' FF");
  }
  static std::string BlockRequestAt(std::size_t offset) {
    return Wire("00000026 01 0004 00001008 02 0014") + List(offset, 0) +
           Wire("0A 0004 01000000 FF");
  }
  std::string BlockHead(std::size_t offset, std::size_t length) const {
    return Answer(4104, second ? List(offset, length) : Number(length));
  }
  Step Block(std::size_t offset, const std::string& bytes) const {
    return {BlockRequestAt(offset), BlockHead(offset, bytes.size()) + bytes};
  }
};

constexpr Dialog kDialogs[] = {{false}, {true}};

std::string Pattern(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t at = 0; at < size; ++at) {
    bytes[at] = static_cast<char>(at * 31 + at / 251);
  }
  return bytes;
}

TEST_F(Transfer, DownloadsInBlocksWhateverThePieces) {
  const std::string whole = Pattern(150000);
  for (const Dialog& dialog : kDialogs) {
    for (const std::size_t piece : {0, 1000, 32768}) {
      Begin();
      EXPECT_EQ(
          Run(dialog.Download(),
              {dialog.Attach(), dialog.Ask(whole.size()), dialog.Block(0, whole.substr(0, 40000)),
               dialog.Block(40000, whole.substr(40000, 109999)),
               dialog.Block(149999, whole.substr(149999))},
              piece),
          0);
      EXPECT_EQ(fault_, "");
      EXPECT_TRUE(Local() == whole);
      EXPECT_EQ(blocks_, 3);
      EXPECT_EQ(record_.state, TransferState::Finished);
    }
  }
}

TEST_F(Transfer, ResumeDecisionTable) {
  const std::string whole = "0123456789";
  struct Case {
    const char* name;
    std::uint32_t done, total, time;
    std::optional<std::string> local;
    int offset;  // of the one block asked for; -1: none
    const char* after;
  };
  const Case cases[] = {
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
    for (const Case& example : cases) {
      SCOPED_TRACE(example.name);
      Begin(example.local, example.done, example.total, example.time);
      std::vector<Step> steps = {dialog.Attach(), dialog.Ask(10)};
      if (example.offset >= 0) {
        const auto offset = static_cast<std::size_t>(example.offset);
        steps.push_back(dialog.Block(offset, whole.substr(offset)));
      }
      EXPECT_EQ(Run(dialog.Download(), steps), 0);
      EXPECT_EQ(fault_, "");
      EXPECT_EQ(Local(), example.after);
      EXPECT_EQ(record_.state, TransferState::Finished);
      EXPECT_EQ(record_.doneBytes, 10U);
      EXPECT_EQ(record_.totalBytes, 10U);
      EXPECT_EQ(record_.remoteTime, kServiceTime);
    }
  }
}

TEST_F(Transfer, StartingOverForgetsTheOldProgress) {
  Begin("0123456789", 8, 10, kServiceTime - 1);
  const Dialog dialog{false};
  const Step cut = {Dialog::BlockRequestAt(0), ""};
  EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(10), cut}), result::kConnection);
  EXPECT_EQ(record_.doneBytes, 0U);
  EXPECT_EQ(record_.remoteTime, kServiceTime);
  EXPECT_EQ(Local(), "0123456789");
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
    const auto wire = [&](const char* inFirst, const char* inSecond) {
      return Wire(second ? inSecond : inFirst);
    };
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
         wire("00000014 010004 00008000 020002 0004 0A0004 01000000 FF",
              "00000017 010004 00001008 02000C C10004 00000000 C20002 0004 FF"),
         result::kNotDecodable},
        {"bad list", good, wire("00000005 01FFFF 0000", "0000000D 010004 00001008 020003 C10004"),
         result::kNotDecodable},
        {"other offset", good, second ? dialog.BlockHead(5, 5) + "56789" : "",
         second ? result::kNotDecodable : result::kConnection},
        {"earlier offset", good, second ? dialog.BlockHead(0, 6) + "012345" : "",
         second ? result::kNotDecodable : result::kConnection},
    };
    for (const Case& example : cases) {
      SCOPED_TRACE(example.name);
      const bool begun = example.information == good;
      std::vector<Step> steps = {dialog.Attach(), {Dialog::AskRequest(), example.information}};
      if (begun) {
        steps.push_back(dialog.Block(0, "0123"));
        steps.push_back({Dialog::BlockRequestAt(4), example.block});
      }
      Begin();
      EXPECT_EQ(Run(dialog.Download(), steps), example.result);
      EXPECT_EQ(fault_, "");
      EXPECT_EQ(record_.state, TransferState::Failed);
      EXPECT_EQ(record_.doneBytes, begun ? 4U : 0U);
      EXPECT_EQ(std::filesystem::exists(local_), begun);
      EXPECT_EQ(begun ? Local().substr(0, 4) : "", begun ? "0123" : "");
      EXPECT_LE(begun ? Local().size() : 0, 6U) << "nothing of a refused block is written";
      EXPECT_EQ(result_.path, "/f");
      EXPECT_EQ(result_.systemError, example.result == result::kConnection ? ECONNRESET : 0);
    }
  }
}

TEST_F(Transfer, EmptyFileAndNoTarget) {
  for (const Dialog& dialog : kDialogs) {
    Begin();
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(0)}), 0);
    EXPECT_TRUE(std::filesystem::exists(local_));
    EXPECT_EQ(record_.state, TransferState::Finished);

    const std::string nowhere = folder_.File("no folder/local");
    record_.SetPaths({"/f", nowhere});
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(10)}), result::kFileOpen);
    EXPECT_EQ(result_.systemError, ENOENT);
    EXPECT_EQ(result_.path, nowhere);
  }
}

// The rest of a large block goes through a pipe.
TEST_F(Transfer, LargeBlocksWhateverThePieces) {
  const std::string whole = Pattern(3000000);
  const Dialog dialog{true};
  for (const std::size_t piece : {0, 100000}) {
    Begin("an older file");
    EXPECT_EQ(
        Run(dialog.Download(),
            {dialog.Attach(), dialog.Ask(whole.size()), dialog.Block(0, whole.substr(0, 2500000)),
             dialog.Block(2500000, whole.substr(2500000))},
            piece),
        0);
    EXPECT_EQ(fault_, "");
    EXPECT_TRUE(Local() == whole);
  }
  Begin();
  const Step cut = {Dialog::BlockRequestAt(0),
                    dialog.BlockHead(0, whole.size()) + whole.substr(0, 2000000)};
  EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(whole.size()), cut}),
            result::kConnection);
  EXPECT_EQ(record_.doneBytes, 0U);
  EXPECT_TRUE(Local() == whole.substr(0, 2000000));
}

// The limit on a file's size stands in for a full disk.
TEST_F(Transfer, AFileThatTakesNoMoreFailsWithTheSystemsReason) {
  const std::string whole = Pattern(300000);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  for (const std::size_t limit : {100, 200000}) {
    Begin();
    const rlimit small{limit, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const Dialog dialog{false};
    const int ended =
        Run(dialog.Download(), {dialog.Attach(), dialog.Ask(whole.size()), dialog.Block(0, whole)});
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(ended, result::kFileWrite);
    EXPECT_EQ(result_.systemError, EFBIG);
    EXPECT_EQ(result_.path, local_);
    EXPECT_EQ(record_.doneBytes, 0U);
    EXPECT_TRUE(Local() == whole.substr(0, limit));
  }
  std::signal(SIGXFSZ, handler);
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
  for (const auto& [takeAway, error] : cases) {
    for (const int endAfter : {-1, 1}) {
      Begin();
      behindBlock_ = takeAway;
      endAfter_ = endAfter;
      const Dialog dialog{true};
      std::vector<Step> steps = {dialog.Attach(), dialog.Ask(8), dialog.Block(0, "0123")};
      if (endAfter < 0) {
        steps.push_back(dialog.Block(4, "4567"));
      }
      EXPECT_EQ(Run(dialog.Download(), steps), result::kFileWrite);
      EXPECT_EQ(fault_, "");
      EXPECT_EQ(result_.systemError, error);
      EXPECT_EQ(record_.state, TransferState::Failed);
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
  EXPECT_EQ(Run(dialog.Download(),
                {dialog.Attach(), dialog.Ask(8), dialog.Block(0, "0123"), dialog.Block(4, "4567")}),
            0);
  EXPECT_EQ(shown, (std::vector<std::uint32_t>{4, 8}));
  EXPECT_EQ(stored, (std::vector<std::uint32_t>{0, 0}));
  EXPECT_EQ(record_.Store().doneBytes, 8U);
}

TEST(DownloadTarget, IsSyncedEveryFiveSecondsAndKnowsItsRoom) {
  const test::TemporaryFolder folder;
  DownloadTarget target;
  ASSERT_EQ(target.Open(folder.File("f")), 0);
  const auto now = DownloadTarget::Clock::now();
  EXPECT_EQ(target.Sync(now), 0);
  EXPECT_FALSE(target.SyncIsDue(now + std::chrono::milliseconds(4999)));
  EXPECT_TRUE(target.SyncIsDue(now + std::chrono::seconds(5)));
  EXPECT_EQ(target.CheckRoom(1, 0), 0);
}

TEST_F(Transfer, StopTakesEffectBetweenBlocks) {
  for (const Dialog& dialog : kDialogs) {
    // Before the target is made: no trace of it.
    Begin();
    record_.state = TransferState::Stopped;
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(0)}), 0);
    EXPECT_FALSE(std::filesystem::exists(local_));
    EXPECT_EQ(record_.state, TransferState::Stopped);

    stopAfter_ = 1;
    Begin();
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(8), dialog.Block(0, "0123")}), 0);
    EXPECT_EQ(fault_, "");
    EXPECT_EQ(record_.state, TransferState::Stopped);
    EXPECT_EQ(record_.doneBytes, 4U);
    // Stopped in the last block.
    record_.state = TransferState::Queued;
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach(), dialog.Ask(8), dialog.Block(4, "4567")}), 0);
    EXPECT_EQ(record_.state, dialog.second ? TransferState::Finished : TransferState::Stopped);
    EXPECT_EQ(Local(), "01234567");
    // A failure leaves Stopped alone, a refused session too.
    record_.state = TransferState::Stopped;
    EXPECT_EQ(Run(dialog.Download(), {dialog.Attach()}), result::kConnection);
    EXPECT_EQ(record_.state, TransferState::Stopped);
    const std::string refusal = dialog.second ? Second(0x8006) : First(0x8006);
    EXPECT_EQ(Run(dialog.Download(), {{dialog.Attach().expect, refusal}}), result::kAuthentication);
    EXPECT_EQ(record_.state, TransferState::Stopped);
  }
}

std::string UploadFrame(std::size_t offset, const std::string& bytes) {
  return Number(38 + bytes.size()) + Wire("01 0004 00001009 02 0014") +
         Dialog::List(offset, bytes.size()) + Wire("0A 0004 01000000 FF") + bytes;
}

TEST_F(Transfer, UploadFillsTheBufferBehindItsHead) {
  const std::string whole = Pattern(40000);
  for (const Dialog& dialog : kDialogs) {
    Begin(whole);
    const Step ask = dialog.Ask(0);
    const std::string done = dialog.Answer(4105, "200");
    // The second dialect's blocks start behind the reply before them.
    const std::size_t block = 32768 - 42 - (dialog.second ? ask.answer.size() : 0);
    EXPECT_EQ(Run(dialog.Upload(), {dialog.Attach(),
                                    ask,
                                    {UploadFrame(0, whole.substr(0, block)), done},
                                    {UploadFrame(block, whole.substr(block)), done}}),
              0);
    EXPECT_EQ(fault_, "");
    EXPECT_EQ(record_.state, TransferState::Finished);
    EXPECT_EQ(record_.doneBytes, whole.size());

    Begin("0123", 2);
    const Step refused = {UploadFrame(2, "23"),
                          dialog.second ? Second(4105, "500") : First(0x8007)};
    EXPECT_EQ(Run(dialog.Upload(), {dialog.Attach(), ask, refused}), result::kAccessRefused);
    EXPECT_EQ(fault_, "") << "it resumes behind what is done";
    EXPECT_EQ(record_.state, TransferState::Failed);
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
