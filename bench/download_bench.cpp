// DownloadFile without a callback, whose bytes stay in the kernel, beside a bare loop of recv into
// one 32768-byte buffer and write, interleaved in one run: processor time of the receiving thread,
// medians, and the peak memory.
//
// The loop runs in two ways: over one stream that the sender never stops filling, and block by
// block with one byte to ask for each. With a sender always ahead, the receiver's acknowledgements
// push the sender's packets on the receiver's time, so the second way is the stricter measure.
//
//   download_bench [--mib 1024] [--rounds 10] [--block-kib 1024] [--dir /dev/shm]

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "bench/measure.h"
#include "service/operations.h"
#include "tests/service/script.h"
#include "tests/wire/loopback.h"
#include "wire/sockets.h"

namespace updown::bench {
namespace {

using testing::First;
using testing::Number;
using testing::Wire;

struct Setting {
  std::size_t bytes = 0;
  std::size_t block = 0;
  std::string path;
};

bool SendAll(int socket, const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const auto moved = send(socket, &bytes[sent], bytes.size() - sent, MSG_NOSIGNAL);
    if (moved <= 0) {
      return false;
    }
    sent += static_cast<std::size_t>(moved);
  }
  return true;
}

void ServeStream(int socket, const Setting& setting) {
  const std::string block(setting.block, 'b');
  for (std::size_t sent = 0; sent < setting.bytes; sent += block.size()) {
    SendAll(socket, block.substr(0, std::min(block.size(), setting.bytes - sent)));
  }
  shutdown(socket, SHUT_WR);
}

// Just enough of a service of the first dialect for one download.
void ServeDownload(int socket, const Setting& setting) {
  const std::string block(setting.block, 'b');
  std::string frame(4, '\0');
  while (recv(socket, frame.data(), 4, MSG_WAITALL) == 4) {
    std::string list(ReadBigEndian32(AsBytes(frame).data()), '\0');
    recv(socket, list.data(), list.size(), MSG_WAITALL);
    const std::uint32_t code = ReadBigEndian32(AsBytes(list).data() + 3);
    if (code == 4106) {
      SendAll(socket, First(0x8000, Wire("13 0004 5F000000 14 0004") + Number(setting.bytes)));
    } else if (code == 4104) {
      const std::size_t offset = ReadBigEndian32(AsBytes(list).data() + 13);
      const std::size_t length = std::min(block.size(), setting.bytes - offset);
      SendAll(socket, First(0x8000, Number(length)));
      SendAll(socket, length == block.size() ? block : block.substr(0, length));
    } else {
      SendAll(socket, First(0x8000));
    }
  }
}

void ServeBlocks(int socket, const Setting& setting) {
  const std::string block(setting.block, 'b');
  char asked = 0;
  for (std::size_t sent = 0; sent < setting.bytes && recv(socket, &asked, 1, 0) == 1;
       sent += block.size()) {
    SendAll(socket, block.substr(0, std::min(block.size(), setting.bytes - sent)));
  }
  shutdown(socket, SHUT_WR);
}

// The bare loop; asks for each `block` bytes unless `block` is 0. Closes the socket, like the other
// side of the comparison.
void ReceiveBare(int socket, const Setting& setting, std::size_t block) {
  const UniqueFd owned(socket);
  const UniqueFd file(open(setting.path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  std::vector<char> buffer(32768);
  std::size_t got = 0;
  for (;;) {
    if (block != 0 && got % block == 0 && got < setting.bytes) {
      send(socket, "n", 1, MSG_NOSIGNAL);
    }
    const auto received = recv(socket, buffer.data(), buffer.size(), 0);
    if (received <= 0) {
      return;
    }
    got += static_cast<std::size_t>(received);
    if (write(file.Get(), buffer.data(), static_cast<std::size_t>(received)) != received) {
      std::puts("write failed");
    }
  }
}

void ReceiveDownload(int socket, const Setting& setting) {
  TransferRecord record;
  record.SetPaths({"/file", setting.path});
  Connection connection;
  connection.Adopt(socket);
  const int result = FirstDialect().DownloadFile(connection, "s", record, nullptr).code;
  if (result != 0 || record.doneBytes != setting.bytes) {
    std::printf("download failed: %d\n", result);
  }
}

using Side = std::function<void(int, const Setting&)>;

Cost Run(const Setting& setting, const Side& serve, const Side& receive) {
  const testing::Listener listener;
  const int client =
      ConnectDeadline(testing::Loopback(), listener.Port(), SystemTicks().Now() + kSocketSpan);
  SetBlocking(client, true);
  const UniqueFd peer = listener.Accept();
  std::thread server([&] { serve(peer.Get(), setting); });
  const Cost cost = Measure([&] { receive(client, setting); });
  server.join();
  std::error_code error;
  if (std::filesystem::file_size(setting.path, error) != setting.bytes) {
    std::puts("the file is not whole");
  }
  std::filesystem::remove(setting.path, error);
  return cost;
}

Cost Stream(const Setting& setting) {
  return Run(setting, ServeStream,
             [](int socket, const Setting& used) { ReceiveBare(socket, used, 0); });
}
Cost Blocks(const Setting& setting) {
  return Run(setting, ServeBlocks,
             [](int socket, const Setting& used) { ReceiveBare(socket, used, used.block); });
}
Cost Download(const Setting& setting) { return Run(setting, ServeDownload, ReceiveDownload); }

struct Contender {
  const char* name;
  Cost (*run)(const Setting&);
  std::vector<double> processor = {};
  std::vector<double> wall = {};
};

void RunRounds(const Setting& setting, int rounds) {
  Contender contenders[] = {{"bare loop, one stream", Stream},
                            {"bare loop, by blocks", Blocks},
                            {"DownloadFile", Download}};
  for (int round = 0; round < rounds; ++round) {
    // Each starts a round in turn, so that none always follows the same one.
    for (int step = 0; step < 3; ++step) {
      Contender& contender = contenders[(round + step) % 3];
      const Cost cost = contender.run(setting);
      contender.processor.push_back(cost.processor);
      contender.wall.push_back(cost.wall);
    }
  }
  const double download = Median(contenders[2].processor);
  std::printf("%-22s %9s %9s   medians of %d\n", "", "processor", "wall", rounds);
  for (const Contender& contender : contenders) {
    const double processor = Median(contender.processor);
    std::printf("%-22s %7.3f s %7.3f s   DownloadFile is %.3f of it\n", contender.name, processor,
                Median(contender.wall), download / processor);
  }
  std::puts("goal: DownloadFile at most 0.88 of the bare loop by blocks, processor time");
}

}  // namespace
}  // namespace updown::bench

int main(int count, char** arguments) {
  using namespace updown::bench;
  Setting setting;
  setting.bytes = static_cast<std::size_t>(NumberOption(count, arguments, "--mib", "1024")) << 20;
  setting.block = static_cast<std::size_t>(NumberOption(count, arguments, "--block-kib", "1024"))
                  << 10;
  setting.path = Option(count, arguments, "--dir", "/dev/shm") + "/updown-download-bench-" +
                 std::to_string(getpid());
  SilenceDebugLines();
  Setting small = setting;
  small.bytes = std::min<std::size_t>(setting.bytes, 16 << 20);
  Download(small);
  const long before = PeakMemory();
  RunRounds(setting, NumberOption(count, arguments, "--rounds", "10"));
  std::printf("peak memory   %ld KiB after %zu MiB, %ld KiB after files of %zu MiB\n", before,
              small.bytes >> 20, PeakMemory(), setting.bytes >> 20);
  return 0;
}
