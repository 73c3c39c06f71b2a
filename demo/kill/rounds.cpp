// Kills a client at random moments while it transfers and saves, and looks at what it has left.
//
//   kill_rounds ROUNDS [SEED]
//
// A round is one kill. After each: the task list is whole, no task of a completed save is missing
// unless its file has come, none stands twice, and what a task says it has of its file is the
// file's. After some rounds the client runs to its end: every file is equal, each transfer went on
// where it stood, and the cache holds all headers and nothing else. In both dialects by turns.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <stdexcept>
#include <thread>

#include "demo/kill/client_process.h"
#include "demo/kill/remains.h"
#include "demo/kill/world.h"
#include "peer/make_area.h"
#include "peer/stand_in.h"
#include "tests/support/temporary_folder.h"

namespace updown::demo {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr int kUserFiles = 8;
constexpr int kHeaders = 6;
constexpr std::uint32_t kBlock = 512;
constexpr std::uint32_t kReadBlock = 4104;  // the message that asks for a block
constexpr std::size_t kMostBytes = 80000;   // at a block each millisecond no run gets to its end
constexpr int kLongestRun = 120;            // milliseconds from start to kill
constexpr int kSaveEvery = 300;             // microseconds, at most
constexpr int kMostKills = 4;               // until the client may run to its end
constexpr milliseconds kPatience{30000};

Things AllThings() {
  Things things;
  for (int n = 0; n < kUserFiles; ++n) {
    things.push_back({Thing::Kind::File, "f" + std::to_string(n)});
  }
  for (int n = 0; n < kHeaders; ++n) {
    things.push_back({Thing::Kind::Header, "h" + std::to_string(n) + ".ini"});
  }
  return things;
}

// One client's data over several kills, up to its regular end.
class Life {
 public:
  Life(const std::string& area, peer::StandIn& service, const std::string& folder)
      : area_(area), service_(service), folder_(folder), remains_(area, folder, AllThings()) {}

  // Returns how many saves came through.
  int KillOnce(std::uint32_t seed, milliseconds after) {
    ClientProcess client(folder_, seed, "kills", service_);
    Check(client.ReadFor(after), "the client ended by itself");
    // Reading ends behind a save that has just been told; the kill must not.
    std::this_thread::sleep_for(std::chrono::microseconds(seed % kSaveEvery));
    client.KillAndWait();
    return remains_.TakeUp(client.Said());
  }

  void RunToTheEnd() {
    const auto patience = Clock::now() + kPatience;
    while (service_.OpenConnections() > 0 && Clock::now() < patience) {
      usleep(1000);  // what the killed one had under way
    }
    service_.ForgetRequests();
    const long blocks = BlocksToCome();
    ClientProcess client(folder_, 0, "kills", service_);
    client.ReadFor(kPatience);
    Check(client.Wait() == 0, "the client did not come to its end");
    remains_.CheckAllHere();
    const auto requests = service_.Requests();
    Check(std::count_if(requests.begin(), requests.end(),
                        [](const peer::SeenRequest& request) {
                          return request.message == kReadBlock;
                        }) == blocks,
          "a transfer did not go on where it stood");
  }

 private:
  static long Blocks(std::uintmax_t bytes) {
    return static_cast<long>((bytes + kBlock - 1) / kBlock);
  }

  long BlocksToCome() const {
    long blocks = 0;
    for (const Thing& thing : AllThings()) {
      if (thing.IsUsers() || !fs::exists(thing.Local(folder_))) {
        blocks += Blocks(fs::file_size(area_ + thing.Remote()));
      }
    }
    for (const StoredRecord& record : remains_.List()) {
      const std::uintmax_t size = fs::file_size(area_ + record.paths.remotePath);
      blocks -= Blocks(size) - Blocks(size - record.doneBytes);
    }
    return blocks;
  }

  const std::string area_;
  peer::StandIn& service_;
  const std::string folder_;
  Remains remains_;
};

void MakeArea(const std::string& area, std::minstd_rand& dice) {
  const auto fill = [&](const std::string& name, std::size_t size) {
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&dice] { return static_cast<char>(dice() >> 7); });
    test::WriteFile(area + "/" + name, bytes);
  };
  for (const Thing& thing : AllThings()) {
    fill(thing.name,
         thing.IsUsers() ? kMostBytes / 2 + dice() % (kMostBytes / 2) : 600 + dice() % 3000);
  }
}

peer::Options ServiceOf(const std::string& area, int dialect) {
  peer::Options options;
  options.root = area;
  options.dialect = dialect;
  options.blockLength = kBlock;
  return options;
}

void Run(int rounds, std::uint32_t seed) {
  std::minstd_rand dice(seed);
  const test::TemporaryFolder area;
  MakeArea(area.Path(), dice);
  peer::StandIn first(ServiceOf(area.Path(), 1));
  peer::StandIn second(ServiceOf(area.Path(), 2));
  const auto start = Clock::now();
  int lives = 0, saves = 0;
  for (int round = 0; round < rounds; ++lives) {
    const test::TemporaryFolder folder;
    Life life(area.Path(), lives % 2 == 0 ? first : second, folder.Path());
    const int kills = std::min<int>(rounds - round, 1 + static_cast<int>(dice() % kMostKills));
    try {
      for (int kill = 0; kill < kills; ++kill, ++round) {
        const auto after = milliseconds(1 + dice() % kLongestRun);
        saves += life.KillOnce(static_cast<std::uint32_t>(1 + dice() % 1000000), after);
      }
      life.RunToTheEnd();
    } catch (const std::exception& failed) {
      const std::string kept = fs::temp_directory_path() / ("kill-rounds-" + std::to_string(seed));
      fs::copy(folder.Path(), kept,
               fs::copy_options::recursive | fs::copy_options::update_existing);
      throw std::runtime_error("round " + std::to_string(round + 1) + ", dialect " +
                               std::to_string(lives % 2 + 1) + ": " + failed.what() + "; see " +
                               kept);
    }
  }
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
  std::cout << rounds << " kills, " << saves << " completed saves, " << lives << " regular ends in "
            << seconds.count()
            << " s: no task lost, none doubled, every file equal, every cache whole\n";
}

}  // namespace
}  // namespace updown::demo

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::atoi(argv[1]) : 0;
  const auto seed = argc > 2 ? static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10))
                             : std::random_device()() % 1000000 + 1;
  if (rounds < 1 || seed == 0) {
    std::cerr << "kill_rounds: ROUNDS [SEED], both above 0\n";
    return 2;
  }
  std::cout << "seed " << seed << std::endl;
  try {
    updown::demo::Run(rounds, seed);
  } catch (const std::exception& failed) {
    std::cerr << "kill_rounds, seed " << seed << ": " << failed.what() << "\n";
    return 1;
  }
  return 0;
}
