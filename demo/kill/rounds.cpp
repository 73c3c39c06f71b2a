// Kills a client at random moments while it transfers and saves, and looks at what it has left.
//
//   kill_rounds ROUNDS [SEED]
//
// A round is one kill. After each: the task list is whole, no task of a completed save is missing
// unless its file has come, none stands twice, and what a task says it has of its file is the
// file's. After some rounds the client runs to its end: every file is equal, each transfer went on
// where it stood, and the cache holds all headers and nothing else. In both dialects by turns.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "demo/kill/world.h"
#include "localdata/tasklist.h"
#include "peer/stand_in.h"
#include "platform/unique_fd.h"
#include "tests/support/temporary_folder.h"

namespace updown::demo {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using test::ReadFile;

constexpr std::uint32_t kBlock = 512;
constexpr std::uint32_t kReadBlock = 4104;  // the message that asks for a block
constexpr std::size_t kMostBytes = 80000;   // at a block each millisecond no run gets to its end
constexpr int kLongestRun = 120;            // milliseconds from start to kill
constexpr int kSaveEvery = 300;             // microseconds, at most
constexpr int kMostKills = 4;               // until the client may run to its end
constexpr milliseconds kPatience{30000};

// A failed check ends everything; the folder stays for a look.
void Check(bool holds, const std::string& what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

using Paths = std::set<std::string>;

// A process of the client, and what it says.
class Client {
 public:
  Client(const std::string& folder, std::uint32_t seed, const peer::StandIn& service) {
    std::vector<std::string> variables;
    for (const auto& [name, value] : service.Environment()) {
      variables.push_back(name);
      variables.back().append("=").append(value);
    }
    std::vector<char*> environment;
    environment.reserve(variables.size() + 1);
    for (std::string& variable : variables) {
      environment.push_back(variable.data());
    }
    environment.push_back(nullptr);
    std::array<int, 2> ends{};
    Check(pipe2(ends.data(), O_CLOEXEC) == 0, "no pipe");
    output_.Reset(ends[0]);
    const UniqueFd input(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::string program = KILL_CLIENT, where = folder, number = std::to_string(seed);
    char* arguments[] = {program.data(), where.data(), number.data(), nullptr};
    const int error =
        posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments, environment.data());
    posix_spawn_file_actions_destroy(&actions);
    Check(error == 0, "no process");
  }
  ~Client() {
    if (pid_ > 0) {
      KillAndWait();
    }
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // False if it has ended, or closed its output, by itself.
  bool ReadFor(milliseconds time) {
    const auto end = Clock::now() + time;
    for (auto left = time; left.count() >= 0;
         left = std::chrono::duration_cast<milliseconds>(end - Clock::now())) {
      pollfd ready{output_.Get(), POLLIN, 0};
      if (poll(&ready, 1, static_cast<int>(left.count())) > 0 && !ReadSome()) {
        return false;
      }
    }
    return true;
  }
  int KillAndWait() {
    kill(pid_, SIGKILL);
    const int status = Wait();
    while (ReadSome()) {
    }
    return status;
  }
  int Wait() {
    int status = -1;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return status;
  }

  // The lines that came whole.
  std::vector<std::string> Said() const {
    std::vector<std::string> lines;
    std::istringstream text(said_.substr(0, said_.rfind('\n') + 1));
    for (std::string line; std::getline(text, line);) {
      lines.push_back(line);
    }
    return lines;
  }

 private:
  bool ReadSome() {
    std::array<char, 65536> bytes;
    const ssize_t count = read(output_.Get(), bytes.data(), bytes.size());
    said_.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
  }

  UniqueFd output_;
  pid_t pid_ = -1;
  std::string said_;
};

// One client's data over several kills, up to its regular end.
class Life {
 public:
  Life(const std::string& area, peer::StandIn& service, const std::string& folder)
      : area_(area), service_(service), folder_(folder) {
    fs::create_directories(folder + "/got");
    fs::create_directories(folder + "/cache");
  }

  // Returns how many saves came through.
  int KillOnce(std::uint32_t seed, milliseconds after) {
    Client client(folder_, seed, service_);
    Check(client.ReadFor(after), "the client ended by itself");
    // Reading ends behind a save that has just been told; the kill must not.
    std::this_thread::sleep_for(std::chrono::microseconds(seed % kSaveEvery));
    client.KillAndWait();
    Paths deleted;
    int saves = 0;
    for (const std::string& line : client.Said()) {
      std::istringstream words(line);
      std::string what, path;
      words >> what;
      if (what == "saved") {
        ++saves;
        known_.clear();
      }
      while (words >> path) {
        (what == "saved" ? known_ : deleted).insert(path);
      }
    }
    CheckList(deleted);
    return saves;
  }

  void RunToTheEnd() {
    const auto patience = Clock::now() + kPatience;
    while (service_.OpenConnections() > 0 && Clock::now() < patience) {
      usleep(1000);  // what the killed one had under way
    }
    service_.ForgetRequests();
    const long blocks = BlocksToCome();
    Client client(folder_, 0, service_);
    client.ReadFor(kPatience);
    Check(client.Wait() == 0, "the client did not come to its end");
    Check(LoadTaskList(folder_ + "/list").empty(), "the list is not empty at the end");
    for (int n = 0; n < kUserFiles; ++n) {
      Check(IsEqual(UserFile(n)), UserFile(n) + " is not as it was sent");
    }
    const auto requests = service_.Requests();
    Check(std::count_if(requests.begin(), requests.end(),
                        [](const peer::SeenRequest& request) {
                          return request.message == kReadBlock;
                        }) == blocks,
          "a transfer did not go on where it stood");
    CheckCache();
  }

 private:
  bool IsEqual(const std::string& name) const {
    return fs::exists(folder_ + "/got/" + name) &&
           ReadFile(folder_ + "/got/" + name) == ReadFile(area_ + "/" + name);
  }

  void CheckList(const Paths& deleted) {
    const std::string list = folder_ + "/list";
    const std::vector<StoredRecord> records = LoadTaskList(list);
    Check(
        SaveTaskList(records, list + ".again") == 0 && ReadFile(list) == ReadFile(list + ".again"),
        "the list is not whole");
    Paths stored;
    for (const StoredRecord& record : records) {
      const auto& [remote, local] = record.paths;
      Check(stored.insert(remote).second, remote + " stands twice");
      Check(local == folder_ + "/got" + remote, remote + " has another's target");
      const std::string sent = ReadFile(area_ + remote).substr(0, record.doneBytes);
      Check(sent.size() == record.doneBytes && ReadFile(local).substr(0, record.doneBytes) == sent,
            remote + " says it has more than it has");
    }
    for (const std::string& path : known_) {
      Check(stored.contains(path) || deleted.contains(path) || IsEqual(path.substr(1)),
            path + " is lost");
    }
    known_ = stored;
  }

  static long Blocks(std::uintmax_t bytes) {
    return static_cast<long>((bytes + kBlock - 1) / kBlock);
  }

  long BlocksToCome() const {
    long blocks = 0;
    for (int n = 0; n < kUserFiles; ++n) {
      blocks += Blocks(fs::file_size(area_ + "/" + UserFile(n)));
    }
    for (const StoredRecord& record : LoadTaskList(folder_ + "/list")) {
      const std::uintmax_t size = fs::file_size(area_ + record.paths.remotePath);
      blocks -= Blocks(size) - Blocks(size - record.doneBytes);
    }
    for (int n = 0; n < kHeaders; ++n) {
      if (!fs::exists(folder_ + "/cache/" + Header(n))) {
        blocks += Blocks(fs::file_size(area_ + "/" + Header(n)));
      }
    }
    return blocks;
  }

  void CheckCache() const {
    int files = 0;
    for (const auto& file : fs::directory_iterator(folder_ + "/cache")) {
      const std::string name = file.path().filename();
      Check(fs::exists(area_ + "/" + name), "a stranger in the cache: " + name);
      Check(ReadFile(file.path()) == ReadFile(area_ + "/" + name), name + " is not whole");
      ++files;
    }
    Check(files == kHeaders, "headers are missing");
  }

  const std::string area_;
  peer::StandIn& service_;
  const std::string folder_;
  Paths known_;  // of the last save that is known to be on disk
};

void MakeArea(const std::string& area, std::minstd_rand& dice) {
  const auto fill = [&](const std::string& name, std::size_t size) {
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&dice] { return static_cast<char>(dice() >> 7); });
    test::WriteFile(area + "/" + name, bytes);
  };
  for (int n = 0; n < kUserFiles; ++n) {
    fill(UserFile(n), kMostBytes / 2 + dice() % (kMostBytes / 2));
  }
  for (int n = 0; n < kHeaders; ++n) {
    fill(Header(n), 600 + dice() % 3000);
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
