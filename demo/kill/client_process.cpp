#include "demo/kill/client_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>

namespace updown::demo {

using std::chrono::milliseconds;

void Check(bool holds, const std::string& what) {
  if (!holds) {
    throw std::runtime_error(what);
  }
}

ClientProcess::ClientProcess(const std::string& folder, std::uint32_t seed,
                             const std::string& manner, const peer::StandIn& service) {
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
  std::string program = KILL_CLIENT, where = folder, number = std::to_string(seed), how = manner;
  char* arguments[] = {program.data(), where.data(), number.data(), how.data(), nullptr};
  const int error =
      posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments, environment.data());
  posix_spawn_file_actions_destroy(&actions);
  Check(error == 0, "no process");
}

ClientProcess::~ClientProcess() {
  if (pid_ > 0) {
    KillAndWait();
  }
}

bool ClientProcess::ReadFor(milliseconds time) {
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

int ClientProcess::KillAndWait() {
  kill(pid_, SIGKILL);
  const int status = Wait();
  while (ReadSome()) {
  }
  return status;
}

int ClientProcess::Wait() {
  int status = -1;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return status;
}

bool ClientProcess::End(milliseconds limit) {
  kill(pid_, SIGTERM);
  return !ReadFor(limit) && Wait() == 0;
}

std::vector<std::string> ClientProcess::Said() const {
  std::vector<std::string> lines;
  std::istringstream text(said_.substr(0, said_.rfind('\n') + 1));
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  return lines;
}

bool ClientProcess::ReadSome() {
  std::array<char, 65536> bytes;
  const ssize_t count = read(output_.Get(), bytes.data(), bytes.size());
  said_.append(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

}  // namespace updown::demo
