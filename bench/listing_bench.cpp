// ListFolder over growing listings: the time for each entry must not grow with their count.
//
//   listing_bench [--most 100000] [--runs 9]

#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "bench/measure.h"
#include "service/operations.h"
#include "tests/service/script.h"

namespace updown::bench {
namespace {

using testing::Attribute;
using testing::First;
using testing::Framed;
using testing::Number;
using testing::Wire;

std::string Listing(int entries) {
  std::string bytes = First(0x8000);
  for (int n = 0; n < entries; ++n) {
    bytes += Framed(Attribute(16, "attachment number " + std::to_string(n) + ".txt") +
                    Wire("11 0004 00000001 12 0004 00000002 13 0004 5F000000 "
                         "14 0004 00010203 15 0002 0004 16 0002 0008 FF"));
  }
  return bytes + Number(0);
}

double SecondsFor(const std::string& bytes, int entries) {
  int pair[2] = {-1, -1};
  socketpair(AF_UNIX, SOCK_STREAM, 0, pair);
  std::thread server([&] {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const auto moved = send(pair[1], &bytes[sent], bytes.size() - sent, MSG_NOSIGNAL);
      if (moved <= 0) {
        return;
      }
      sent += static_cast<std::size_t>(moved);
    }
  });
  Connection connection;
  connection.Adopt(pair[0]);
  const Cost cost = Measure([&] {
    const FolderListing listing = FirstDialect().ListFolder(connection, "/");
    if (listing.error != 0 || listing.entries.size() != static_cast<std::size_t>(entries)) {
      std::printf("listing failed: %d\n", listing.error);
    }
  });
  server.join();
  close(pair[1]);
  return cost.processor;
}

}  // namespace
}  // namespace updown::bench

int main(int count, char** arguments) {
  using namespace updown::bench;
  const int most = NumberOption(count, arguments, "--most", "100000");
  const int runs = NumberOption(count, arguments, "--runs", "9");
  SilenceDebugLines();
  for (int entries = 1000; entries <= most; entries *= 10) {
    const std::string bytes = Listing(entries);
    std::vector<double> seconds;
    for (int run = 0; run < runs; ++run) {
      seconds.push_back(SecondsFor(bytes, entries));
    }
    std::printf("%7d entries  %8.3f ms processor  %6.0f ns for each entry\n", entries,
                Median(seconds) * 1e3, Median(seconds) * 1e9 / entries);
  }
  return 0;
}
