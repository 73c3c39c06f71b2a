#include "service/transfer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include "platform/environment.h"
#include "tests/service/script.h"
#include "tests/wire/scripted_peer.h"

namespace updown {
namespace {

using testing::First;
using testing::Number;
using testing::ScriptedPeer;
using testing::Second;
using testing::Step;
using testing::Wire;

constexpr std::uint32_t kServiceTime = 0x5F000000;

class Transfer : public ::testing::Test, public TransferProgress {
 protected:
  Transfer() {
    std::string pattern = (std::filesystem::temp_directory_path() / "updown-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    record_.SetPaths({"/f", (folder_ / "local").string()});
  }
  ~Transfer() override { std::filesystem::remove_all(folder_); }

  void BlockDone(TransferRecord& record) override {
    ++blocks_;
    if (stopAfter_ == blocks_) {
      record.state = TransferState::Stopped;
    }
  }

  void PutLocal(const std::string& bytes) {
    std::ofstream(folder_ / "local", std::ios::binary) << bytes;
  }
  std::optional<std::string> Local() const {
    std::ifstream file(folder_ / "local", std::ios::binary);
    if (!file) {
      return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

  int Download(const ServiceOps& ops, std::vector<Step> steps, std::size_t piece = 0) {
    return Run(ops.DownloadFile, std::move(steps), piece);
  }
  int Upload(const ServiceOps& ops, std::vector<Step> steps) {
    return Run(ops.UploadFile, std::move(steps), 0);
  }

  using Operation = int (*)(int, const std::string&, TransferRecord&, TransferProgress*);
  int Run(Operation operation, std::vector<Step> steps, std::size_t piece) {
    blocks_ = 0;
    ScriptedPeer peer(std::move(steps), piece);
    const int result = operation(peer.Socket(), "s1", record_, this);
    fault_ = peer.Finish();
    return result;
  }

  std::filesystem::path folder_;
  TransferRecord record_;
  std::string fault_;
  int blocks_ = 0;
  int stopAfter_ = 0;
};

// Requests and replies of a transfer of "/f" with session "s1".
struct Dialog {
  bool second;

  const ServiceOps& Ops() const { return second ? SecondDialect() : FirstDialect(); }
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
  Step Ask(std::size_t size, std::uint32_t time = kServiceTime) const {
    return {AskRequest(), Answer(4106, Wire("10 0001 'f' 13 0004") + Number(time) +
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
      std::filesystem::remove(folder_ / "local");
      record_.StartFile(record_.Paths());
      record_.state = TransferState::Queued;
      const int result = Download(
          dialog.Ops(),
          {dialog.Attach(), dialog.Ask(whole.size()), dialog.Block(0, whole.substr(0, 40000)),
           dialog.Block(40000, whole.substr(40000, 109999)),
           dialog.Block(149999, whole.substr(149999))},
          piece);
      EXPECT_EQ(result, 0);
      EXPECT_EQ(fault_, "");
      EXPECT_EQ(Local(), whole);
      EXPECT_EQ(blocks_, 3);
      EXPECT_EQ(record_.state, TransferState::Finished);
      EXPECT_EQ(record_.doneBytes, whole.size());
      EXPECT_EQ(record_.totalBytes, whole.size());
      EXPECT_EQ(record_.remoteTime, kServiceTime);
    }
  }
}

TEST_F(Transfer, ResumeDecisionTable) {
  const std::string whole = "0123456789";
  struct Case {
    const char* name;
    std::uint32_t done, total, time;
    const char* local;  // nullptr: no file
    int offset;         // of the one block asked for; -1: none
    const char* after;
  };
  const Case cases[] = {
      {"fresh", 0, 0, 0, nullptr, 0, "0123456789"},
      {"resumes", 4, 10, kServiceTime, "0123", 4, "0123456789"},
      {"local longer", 4, 10, kServiceTime, "0123xxxxxxyy", 4, "0123456789yy"},
      {"local shorter", 4, 10, kServiceTime, "012", 0, "0123456789"},
      {"local gone", 10, 10, kServiceTime, nullptr, 0, "0123456789"},
      {"complete", 10, 10, kServiceTime, "abcdefghij", -1, "abcdefghij"},
      {"other time", 4, 10, kServiceTime + 1, "abcdefghijkl", 0, "0123456789kl"},
      {"other size", 4, 11, kServiceTime, "abcd", 0, "0123456789"},
  };
  for (const Dialog& dialog : kDialogs) {
    for (const Case& example : cases) {
      std::filesystem::remove(folder_ / "local");
      if (example.local != nullptr) {
        PutLocal(example.local);
      }
      record_.state = TransferState::Queued;
      record_.doneBytes = example.done;
      record_.totalBytes = example.total;
      record_.remoteTime = example.time;
      std::vector<Step> steps = {dialog.Attach(), dialog.Ask(10)};
      if (example.offset >= 0) {
        const auto offset = static_cast<std::size_t>(example.offset);
        steps.push_back(dialog.Block(offset, whole.substr(offset)));
      }
      EXPECT_EQ(Download(dialog.Ops(), steps), 0) << example.name;
      EXPECT_EQ(fault_, "") << example.name;
      EXPECT_EQ(Local(), example.after) << example.name;
      EXPECT_EQ(record_.state, TransferState::Finished) << example.name;
      EXPECT_EQ(record_.doneBytes, 10U) << example.name;
      EXPECT_EQ(record_.totalBytes, 10U) << example.name;
      EXPECT_EQ(record_.remoteTime, kServiceTime) << example.name;
    }
  }
}

TEST_F(Transfer, StartingOverForgetsTheOldProgress) {
  PutLocal("0123456789");
  record_.doneBytes = 8;
  record_.totalBytes = 10;
  record_.remoteTime = kServiceTime - 1;
  const Dialog dialog{false};
  EXPECT_EQ(
      Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(10), {Dialog::BlockRequestAt(0), ""}}),
      result::kConnection);
  EXPECT_EQ(record_.doneBytes, 0U);
  EXPECT_EQ(record_.remoteTime, kServiceTime);
  EXPECT_EQ(Local(), "0123456789");
}

TEST_F(Transfer, DownloadFailuresTable) {
  struct Case {
    const char* name;
    std::function<std::vector<Step>(const Dialog&)> steps;  // behind the attaching
    int first, second;
    std::uint32_t done;
    bool localMade;
  };
  const auto answered = [](const char* first, const char* second) {
    return [=](const Dialog& dialog) {
      return std::vector<Step>{dialog.Ask(10),
                               {Dialog::BlockRequestAt(0), Wire(dialog.second ? second : first)}};
    };
  };
  const Case cases[] = {
      {"no information",
       [](const Dialog&) {
         return std::vector<Step>{{Dialog::AskRequest(), ""}};
       },
       result::kConnection, result::kConnection, 0, false},
      {"refused",
       [](const Dialog& dialog) {
         return std::vector<Step>{
             {Dialog::AskRequest(), dialog.second ? Second(4106, "500") : First(0x8013)}};
       },
       result::kNoSuchRemoteFile, result::kNotDecodable, 0, false},
      {"information without size",
       [](const Dialog& dialog) {
         return std::vector<Step>{
             {Dialog::AskRequest(), dialog.Answer(4106, Wire("13 0004 5F000000 FF"))}};
       },
       result::kNotDecodable, result::kNotDecodable, 0, false},
      {"2 GiB", [](const Dialog& dialog) { return std::vector<Step>{dialog.Ask(0x80000000)}; },
       result::kNotImplemented, result::kNotImplemented, 0, false},
      {"cut inside the second block",
       [](const Dialog& dialog) {
         return std::vector<Step>{dialog.Ask(10),
                                  dialog.Block(0, "0123"),
                                  {Dialog::BlockRequestAt(4), dialog.BlockHead(4, 6) + "45"}};
       },
       result::kConnection, result::kConnection, 4, true},
      {"length near 2^32",
       [](const Dialog& dialog) {
         return std::vector<Step>{
             dialog.Ask(10),
             {Dialog::BlockRequestAt(0), dialog.BlockHead(0, 0xFFFFFFFF) + Pattern(40000)}};
       },
       result::kConnection, result::kConnection, 0, true},
      {"block refused or of another kind",
       answered("0000000F 010004 00008007 0A0004 01000000 FF", "00000008 010004 00001009 FF"),
       result::kAccessRefused, result::kNotDecodable, 0, true},
      {"length of the wrong size",
       answered("00000014 010004 00008000 020002 0004 0A0004 01000000 FF",
                "00000017 010004 00001008 02000C C10004 00000000 C20002 0004 FF"),
       result::kNotDecodable, result::kNotDecodable, 0, true},
      {"bad list", answered("00000005 01FFFF 0000", "0000000D 010004 00001008 020003 C10004"),
       result::kNotDecodable, result::kNotDecodable, 0, true},
  };
  for (const Dialog& dialog : kDialogs) {
    for (const Case& example : cases) {
      std::filesystem::remove(folder_ / "local");
      record_.StartFile(record_.Paths());
      record_.state = TransferState::Queued;
      std::vector<Step> steps = example.steps(dialog);
      steps.insert(steps.begin(), dialog.Attach());
      EXPECT_EQ(Download(dialog.Ops(), steps), dialog.second ? example.second : example.first)
          << example.name << dialog.second;
      EXPECT_EQ(fault_, "") << example.name;
      EXPECT_EQ(record_.state, TransferState::Failed) << example.name;
      EXPECT_EQ(record_.doneBytes, example.done) << example.name;
      EXPECT_EQ(Local().has_value(), example.localMade) << example.name;
    }
  }
}

TEST_F(Transfer, LocalFileThatCannotBeMadeOrWritten) {
  for (const Dialog& dialog : kDialogs) {
    record_.SetPaths({"/f", (folder_ / "no folder" / "local").string()});
    record_.state = TransferState::Queued;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(10)}), result::kFileOpen);
    EXPECT_EQ(record_.state, TransferState::Failed);
  }
  // An offset behind the end of the file.
  record_.SetPaths({"/f", (folder_ / "local").string()});
  const Dialog dialog{true};
  const Step beyond{Dialog::BlockRequestAt(0), dialog.BlockHead(0x80000000, 4) + "0123"};
  EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(10), beyond}), result::kNotDecodable);
  EXPECT_EQ(Local(), "");
}

TEST_F(Transfer, EmptyFileEmptyBlocksAndOverrun) {
  for (const Dialog& dialog : kDialogs) {
    std::filesystem::remove(folder_ / "local");
    record_.StartFile(record_.Paths());
    record_.state = TransferState::Queued;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(0)}), 0);
    EXPECT_EQ(Local(), "");
    EXPECT_EQ(record_.state, TransferState::Finished);

    record_.state = TransferState::Queued;
    stopAfter_ = 2;
    EXPECT_EQ(Download(dialog.Ops(),
                       {dialog.Attach(), dialog.Ask(4), dialog.Block(0, ""), dialog.Block(0, "")}),
              0);
    EXPECT_EQ(fault_, "");
    EXPECT_EQ(record_.state, TransferState::Stopped);

    record_.state = TransferState::Queued;
    stopAfter_ = 0;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(4), dialog.Block(0, "01234")}),
              dialog.second ? result::kNotDecodable : 0);
    EXPECT_EQ(record_.state, dialog.second ? TransferState::Failed : TransferState::Finished);
    EXPECT_EQ(Local(), "01234");
  }
}

TEST_F(Transfer, SecondDialectWritesWhereTheServiceSays) {
  const Dialog dialog{true};
  EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(),
                                    dialog.Ask(6),
                                    {Dialog::BlockRequestAt(0), dialog.BlockHead(2, 2) + "23"},
                                    dialog.Block(4, "45")}),
            0);
  EXPECT_EQ(fault_, "");
  EXPECT_EQ(Local(), std::string("\0\0"
                                 "2345",
                                 6));
}

TEST_F(Transfer, StopTakesEffectBetweenBlocks) {
  for (const Dialog& dialog : kDialogs) {
    stopAfter_ = 1;
    record_.StartFile(record_.Paths());
    record_.state = TransferState::Queued;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(8), dialog.Block(0, "0123")}), 0);
    EXPECT_EQ(fault_, "");
    EXPECT_EQ(record_.state, TransferState::Stopped);
    EXPECT_EQ(record_.doneBytes, 4U);
    // Stopped in the last block.
    record_.state = TransferState::Queued;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach(), dialog.Ask(8), dialog.Block(4, "4567")}), 0);
    EXPECT_EQ(record_.state, dialog.second ? TransferState::Finished : TransferState::Stopped);
    EXPECT_EQ(Local(), "01234567");
    // A failure leaves Stopped alone, a refused session does not.
    record_.state = TransferState::Stopped;
    EXPECT_EQ(Download(dialog.Ops(), {dialog.Attach()}), result::kConnection);
    EXPECT_EQ(record_.state, TransferState::Stopped);
    const std::string refusal = dialog.second ? Second(0x8006) : First(0x8006);
    EXPECT_EQ(Download(dialog.Ops(), {{dialog.Attach().expect, refusal}}), result::kAuthentication);
    EXPECT_EQ(record_.state, TransferState::Failed);
  }
}

std::string UploadFrame(std::size_t offset, const std::string& bytes) {
  return Number(38 + bytes.size()) + Wire("01 0004 00001009 02 0014") +
         Dialog::List(offset, bytes.size()) + Wire("0A 0004 01000000 FF") + bytes;
}

TEST_F(Transfer, UploadFillsTheBufferBehindItsHead) {
  const std::string whole = Pattern(40000);
  PutLocal(whole);
  for (const Dialog& dialog : kDialogs) {
    record_.doneBytes = 0;
    record_.state = TransferState::Queued;
    const Step ask = dialog.Ask(0);
    const std::string done = dialog.Answer(4105, "200");
    // The second dialect's blocks start behind the reply before them.
    const std::size_t block = 32768 - 42 - (dialog.second ? ask.answer.size() : 0);
    EXPECT_EQ(Upload(dialog.Ops(), {dialog.Attach(),
                                    ask,
                                    {UploadFrame(0, whole.substr(0, block)), done},
                                    {UploadFrame(block, whole.substr(block)), done}}),
              0);
    EXPECT_EQ(fault_, "");
    EXPECT_EQ(blocks_, 2);
    EXPECT_EQ(record_.state, TransferState::Finished);
    EXPECT_EQ(record_.totalBytes, whole.size());
    EXPECT_EQ(record_.doneBytes, whole.size());
  }
}

TEST_F(Transfer, UploadTable) {
  struct Case {
    const char* name;
    const char* local;  // nullptr: no file
    std::uint32_t done;
    bool known;  // the service has the file
    int offset;  // of the one block sent; -1: none
    const char* sent;
    std::size_t firstReply;
    const char* secondReply;
    int first, second;
    TransferState stateFirst, stateSecond;
  };
  constexpr auto kFinished = TransferState::Finished;
  constexpr auto kFailed = TransferState::Failed;
  const Case cases[] = {
      {"resumes", "0123456789", 4, true, 4, "456789", 0x8000, "200", 0, 0, kFinished, kFinished},
      {"unknown there", "0123456789", 4, false, 0, "0123456789", 0x8000, "200", 0, 0, kFinished,
       kFinished},
      {"empty", "", 0, true, 0, "", 0x8000, "200", 0, 0, kFinished, kFinished},
      {"past the end", "0123", 6, true, 6, "", 0x8000, "200", 0, result::kNotDecodable, kFinished,
       kFailed},
      {"refused", "0123", 0, true, 0, "0123", 0x8007, "500", result::kAccessRefused,
       result::kAccessRefused, kFailed, kFailed},
      {"no local file", nullptr, 0, true, -1, "", 0, "", result::kFileOpen, result::kFileOpen,
       kFailed, kFailed},
  };
  for (const Dialog& dialog : kDialogs) {
    for (const Case& example : cases) {
      std::filesystem::remove(folder_ / "local");
      if (example.local != nullptr) {
        PutLocal(example.local);
      }
      record_.state = TransferState::Queued;
      record_.doneBytes = example.done;
      std::vector<Step> steps = {dialog.Attach(), dialog.Ask(4)};
      if (!example.known) {
        steps[1].answer = dialog.second ? Second(4106, "500") : First(0x8013);
      }
      if (example.offset >= 0) {
        steps.push_back(
            {UploadFrame(static_cast<std::size_t>(example.offset), example.sent),
             dialog.second ? Second(4105, example.secondReply) : First(example.firstReply)});
      }
      EXPECT_EQ(Upload(dialog.Ops(), steps), dialog.second ? example.second : example.first)
          << example.name;
      EXPECT_EQ(fault_, "") << example.name;
      EXPECT_EQ(record_.state, dialog.second ? example.stateSecond : example.stateFirst)
          << example.name;
    }
  }
}

TEST_F(Transfer, WithoutARelayTheRecordFailsUntouched) {
  unsetenv(kVariableRelayPort);
  record_.doneBytes = 5;
  const FileService service;
  EXPECT_EQ(RunTaskTransfer(service, "fs", 21, "s1", record_, nullptr), result::kConnection);
  EXPECT_EQ(record_.state, TransferState::Failed);
  EXPECT_EQ(record_.doneBytes, 5U);
}

}  // namespace
}  // namespace updown
