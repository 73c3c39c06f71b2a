// A client's whole life at ten times the speed: tasks over files of 0 bytes to some MiB and over
// folders are made, paused, resumed, redone and deleted at random, while the service goes wrong in
// every way that it can, forgets sessions and goes away, and the client is killed or ended. After
// each run what lies on disk is looked at, and at the end everything is fetched in peace.
//
//   soak SECONDS SEED DIALECT
//
// The same seed makes the same files, faults and moments; what the threads make of them differs.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "demo/kill/client_process.h"
#include "demo/kill/remains.h"
#include "peer/control.h"
#include "tests/support/temporary_folder.h"

namespace updown::demo {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr int kFiles = 20;
constexpr int kFolders = 4;
constexpr int kHeaders = 12;
constexpr std::uint32_t kMostBytes = 3 << 20;
constexpr int kLongestRun = 4000;        // milliseconds from a client's start to its end
constexpr int kLongestCalm = 250;        // milliseconds between two things that go wrong
constexpr milliseconds kEndLimit{2000};  // of a regular end
constexpr milliseconds kPatience{60000};

struct Counts {
  int runs = 0, kills = 0, saves = 0, faults = 0, orphans = 0;
};

class Soak {
 public:
  Soak(std::uint32_t seed, int dialect)
      : dice_(seed),
        things_(MakeArea()),
        control_(OptionsOf(area_.Path(), dialect)),
        remains_(area_.Path(), client_.Path(), things_) {}

  void Run(std::chrono::seconds time) {
    const auto end = Clock::now() + time;
    while (Clock::now() < end) {
      RunOnce();
    }
    FetchAllInPeace();
  }

  const Counts& Done() const { return counts_; }
  const std::string& Folder() const { return client_.Path(); }

 private:
  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(dice_() % limit); }

  void Fill(const std::string& path, std::uint32_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(dice_() >> 7);
    }
    test::WriteFile(path, bytes);
  }

  // Nothing, little, blocks that come out even, much.
  std::uint32_t AnySize() {
    switch (Below(6)) {
      case 0:
        return 0;
      case 1:
        return 1 + Below(511);
      case 2:
        return 65536 * (1 + Below(4));
      case 3:
        return 1 + Below(kMostBytes);
      default:
        return 1 + Below(300000);
    }
  }

  Things MakeArea() {
    Things things;
    const std::string& area = area_.Path();
    for (int n = 0; n < kFiles; ++n) {
      things.push_back({Thing::Kind::File, "f" + std::to_string(n)});
      Fill(area + things.back().Remote(), AnySize());
    }
    for (int n = 0; n < kFolders; ++n) {
      things.push_back({Thing::Kind::Folder, "d" + std::to_string(n)});
      const std::string top = area + things.back().Remote();
      for (const char* inside : {"", "/a", "/a/b", "/empty"}) {
        fs::create_directories(top + inside);
        for (std::uint32_t file = inside == std::string("/empty") ? 0 : Below(8); file > 0;
             --file) {
          Fill(top + inside + "/x" + std::to_string(file), AnySize() / 4);
        }
      }
    }
    for (int n = 0; n < kHeaders; ++n) {
      things.push_back({Thing::Kind::Header, "h" + std::to_string(n) + ".ini"});
      Fill(area + things.back().Remote(), 600 + Below(3000));
    }
    return things;
  }

  static peer::Options OptionsOf(const std::string& area, int dialect) {
    peer::Options options;
    options.root = area;
    options.dialect = dialect;
    return options;
  }

  std::string AnyFault() {
    static const std::vector<std::string> kAnywhere = {
        "drop-before", "drop-inside", "drop-after", "stall", "bad-list", "oversized", "no-code"};
    static const std::vector<std::string> kOfBlocks = {"empty-block", "wrong-offset", "long-block"};
    static const std::vector<std::string> kOfListings = {"bad-entry", "cut-listing", "long-entry"};
    static const std::vector<std::string> kMessages = {"0",    "1",    "2",    "4099",
                                                       "4104", "4104", "4106", "4353"};
    const auto any = [this](const std::vector<std::string>& of) {
      return of[Below(static_cast<std::uint32_t>(of.size()))];
    };
    const std::string where = ":skip=" + std::to_string(Below(20)) +
                              ":times=" + std::to_string(1 + Below(3)) +
                              ":code=" + std::to_string(1 + Below(9));
    switch (Below(6)) {
      case 0:  // beyond each file's end: a byte too many within it cannot be seen by anybody
        return any(kOfBlocks) + ":4104" + where.substr(0, where.rfind(':')) + ":code=9000000";
      case 1:
        return any(kOfListings) + ":4099" + where;
      case 2:  // a refusal of the file
        return std::string("wrong-code:") + (Below(2) == 0 ? "4104" : "4106") +
               ":times=1:code=" + std::to_string(32769 + Below(8));
      default:
        return any(kAnywhere) + ":" + any(kMessages) + where;
    }
  }

  void GoWrong() {
    control_.ReturnIfDue();
    ++counts_.faults;
    switch (Below(12)) {
      case 0:
        control_.Obey("forget");
        break;
      case 1:
        if (Below(4) == 0) {
          control_.Obey("away 1");
        }
        break;
      case 2:
        control_.Obey("delay 0:" + std::to_string(Below(60)));
        break;
      case 3:
        control_.Obey("block " + std::to_string(1000 + Below(130000)));
        break;
      case 4:
      case 5:
        control_.Obey("clear");
        break;
      default:
        control_.Obey("fault " + AnyFault());
    }
  }

  void BringServiceBack() {
    while (control_.Patience() >= 0) {
      control_.ReturnIfDue();
    }
  }

  void RunOnce() {
    BringServiceBack();
    control_.Obey("clear");
    if (Below(3) == 0) {  // a header that somebody has taken out of the cache
      fs::remove(things_[things_.size() - 1 - Below(kHeaders)].Local(client_.Path()));
    }
    ClientProcess client(client_.Path(), 1 + Below(1000000), "soak", control_.Service());
    const auto end = Clock::now() + milliseconds(50 + Below(kLongestRun));
    while (Clock::now() < end) {
      Check(client.ReadFor(milliseconds(1 + Below(kLongestCalm))), "the client ended by itself");
      GoWrong();
    }
    ++counts_.runs;
    if (Below(3) != 0) {
      ++counts_.kills;
      client.KillAndWait();
      counts_.saves += remains_.TakeUp(client.Said());
      counts_.orphans += remains_.RemoveOrphansOfKill();
    } else {
      Check(client.End(kEndLimit), "the client did not end in time");
      counts_.saves += remains_.TakeUp(client.Said());
      remains_.CheckNothingLeft();
    }
  }

  void FetchAllInPeace() {
    BringServiceBack();
    control_.Obey("clear");
    ClientProcess client(client_.Path(), 0, "soak", control_.Service());
    client.ReadFor(kPatience);
    Check(client.Wait() == 0, "the client did not come to its end");
    remains_.CheckAllHere();
  }

  std::minstd_rand dice_;
  const test::TemporaryFolder area_;
  const test::TemporaryFolder client_;
  const Things things_;
  peer::Control control_;
  Remains remains_;
  Counts counts_;
};

// The folder stays for a look when something is wrong.
void Run(std::chrono::seconds time, std::uint32_t seed, int dialect) {
  Soak soak(seed, dialect);
  try {
    soak.Run(time);
  } catch (const std::exception& failed) {
    const std::string kept = fs::temp_directory_path() / ("soak-" + std::to_string(seed));
    fs::copy(soak.Folder(), kept,
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    throw std::runtime_error("run " + std::to_string(soak.Done().runs) + ": " + failed.what() +
                             "; see " + kept);
  }
  const Counts& done = soak.Done();
  std::cout << "dialect " << dialect << ": " << done.runs << " runs, " << done.kills
            << " of them killed, " << done.faults << " times something went wrong, " << done.saves
            << " saves: 0 lost, 0 doubled, 0 wrong bytes, 0 leftovers (" << done.orphans
            << " files of tasks made or removed in the moment of a kill)\n";
}

}  // namespace
}  // namespace updown::demo

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "soak SECONDS SEED DIALECT\n";
    return 2;
  }
  const auto seed = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
  try {
    updown::demo::Run(std::chrono::seconds(std::atoi(argv[1])), seed, std::atoi(argv[3]));
  } catch (const std::exception& failed) {
    std::cerr << "soak, seed " << seed << ", dialect " << argv[3] << ": " << failed.what() << "\n";
    return 1;
  }
  return 0;
}
