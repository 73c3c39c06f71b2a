#include "app/folder_requests.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "platform/text.h"
#include "service/messages.h"
#include "service/result_codes.h"
#include "tests/app/served_launch.h"

namespace updown {
namespace {

namespace fs = std::filesystem;
using Kind = peer::Fault::Kind;

constexpr std::uint32_t kReplyRefused = 32768 + 7;  // 8199
constexpr std::uint32_t kReplyBusy = 32768 + 8;     // 8200

class FolderRequestsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(session_.OpenSharedSession().open);
    fs::create_directory(Folder());
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
      std::ofstream(Folder() / name) << name;
    }
  }

  fs::path Folder() const { return fs::path(served_.AreaFolder()) / "20081105093012"; }
  std::ptrdiff_t FilesLeft() const {
    return std::distance(fs::directory_iterator(Folder()), fs::directory_iterator());
  }

  const std::u16string package_ = u"/20081105093012";
  ServedLaunch served_;
  FileService service_;
  SharedSession session_{service_, served_.Launch(), [](bool) { return std::nullopt; }};
};

TEST_F(FolderRequestsTest, ListsRenamesAndRemoves) {
  const ListAnswer listing = RequestListing(session_, package_);
  ASSERT_TRUE(listing.list);
  EXPECT_EQ(listing.report, 0);
  EXPECT_GE(listing.list->size(), 3U);

  const std::u16string from = package_ + u"/a.txt";
  const std::u16string to = package_ + u"/\u4E2D.txt";
  EXPECT_EQ(RequestRename(session_, to, from).result, 0);
  EXPECT_TRUE(fs::exists(Folder() / "\xE4\xB8\xAD.txt"));
  EXPECT_EQ(RequestRemoveFile(session_, to).result, 0);
  EXPECT_EQ(FilesLeft(), 2);

  const RequestAnswer removed = RequestRemovePackage(session_, package_);
  EXPECT_EQ(removed.result, 0);
  EXPECT_EQ(removed.report, 0);
  EXPECT_FALSE(fs::exists(Folder()));
}

TEST_F(FolderRequestsTest, FailuresAreForTheWindowToReport) {
  served_.Service().AddFault(
      {.kind = Kind::WrongCode, .message = message::kRemoveFile, .code = kReplyBusy});
  const std::u16string file = package_ + u"/a.txt";
  const RequestAnswer busy = RequestRemoveFile(session_, file);
  EXPECT_EQ(busy.result, result::kBusy);
  EXPECT_EQ(busy.report, result::kBusy);

  served_.Service().AddFault({.kind = Kind::DropBefore, .message = message::kList});
  const ListAnswer dropped = RequestListing(session_, package_);
  EXPECT_FALSE(dropped.list);
  EXPECT_EQ(dropped.report, result::kConnection);

  session_.Close();
  EXPECT_EQ(RequestListing(session_, package_).report, result::kConnection) << "no session";
}

TEST_F(FolderRequestsTest, PathsThatDoNotFitNeverReachTheService) {
  served_.Service().ForgetRequests();
  const std::u16string tooLong = u"/" + std::u16string(86, u'\u4E2D') + u"x";  // 260 bytes
  EXPECT_EQ(RequestListing(session_, tooLong).report, result::kNotEncodable);
  EXPECT_EQ(RequestRemoveFile(session_, tooLong).result, result::kNotEncodable);
  EXPECT_EQ(RequestRename(session_, tooLong, package_).report, result::kNotEncodable);
  EXPECT_EQ(RequestRemovePackage(session_, tooLong).result, -result::kNotEncodable);
  EXPECT_TRUE(served_.Service().Requests().empty());
}

TEST_F(FolderRequestsTest, RemovalEndsAtTheFirstFailure) {
  const struct {
    const char* what;
    std::uint32_t message;
    std::uint32_t skip;
    std::uint32_t code;
    int result;
    int report;
    std::ptrdiff_t filesLeft;
  } cases[] = {
      {"listing refused", message::kList, 0, kReplyRefused, 8199, 0, 3},
      {"listing busy", message::kList, 0, kReplyBusy, 8200, -8200, 3},
      {"first file refused", message::kRemoveFile, 0, kReplyRefused, 8199, 0, 3},
      {"second file busy", message::kRemoveFile, 1, kReplyBusy, 8200, -8200, 2},
      {"folder refused", message::kRemoveFolder, 0, kReplyRefused, 8199, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    served_.Service().ClearFaults();
    served_.Service().AddFault(
        {.kind = Kind::WrongCode, .message = c.message, .skip = c.skip, .code = c.code});
    const RequestAnswer answer = RequestRemovePackage(session_, package_);
    EXPECT_EQ(answer.result, c.result);
    EXPECT_EQ(answer.report, c.report);
    EXPECT_EQ(FilesLeft(), c.filesLeft);
  }
}

}  // namespace
}  // namespace updown
