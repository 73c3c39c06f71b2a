#include <gtest/gtest.h>
#include <sys/socket.h>

#include <limits>
#include <string>
#include <thread>

#include "platform/unique_fd.h"
#include "service/listing.h"
#include "service/operations.h"
#include "tests/service/script.h"

namespace updown {
namespace {

using testing::Attribute;
using testing::First;
using testing::Framed;
using testing::Wire;

// Ends when the client cuts the connection; a client that reads on would read for ever.
TEST(Listing, ThatNeverEndsIsGivenUp) {
  const std::string entry =
      Framed(Attribute(16, std::string(30000, 'n')) +
             Wire("11 0004 00000001 12 0004 00000002 13 0004 5F000000 14 0004 00000003 "
                  "15 0002 0004 16 0002 0008 FF"));
  int pair[2] = {-1, -1};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  Connection client;
  client.Adopt(pair[0]);
  std::size_t sentEntries = 0;
  std::thread service([&, peer = UniqueFd(pair[1])] {
    const std::string granted = First(0x8000);
    send(peer.Get(), granted.data(), granted.size(), MSG_NOSIGNAL);
    const auto size = static_cast<ssize_t>(entry.size());
    while (send(peer.Get(), entry.data(), entry.size(), MSG_NOSIGNAL) == size) {
      ++sentEntries;
    }
  });
  const FolderListing listing = FirstDialect().ListFolder(client, "/");
  service.join();
  EXPECT_EQ(listing.error, result::kConnection);
  EXPECT_TRUE(listing.entries.empty());
  EXPECT_GT(sentEntries, kMostListingBytes / 31000);
}

TEST(ResultCodes, LoseTheirSignWithoutOverflow) {
  EXPECT_EQ(result::WithoutSign(-8199), 8199U);
  EXPECT_EQ(result::WithoutSign(24571), 24571U);
  EXPECT_EQ(result::WithoutSign(std::numeric_limits<int>::min()), 0x80000000U);
}

}  // namespace
}  // namespace updown
