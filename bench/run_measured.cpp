// Runs a program and prints what it cost as the last line: seconds of processor time, seconds by
// the clock, most KiB of memory, exit status. Small itself, since a program that is started begins
// with the peak of whoever started it.
//
//   run_measured PROGRAM [ARGUMENT...]        its output goes to /dev/null
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>

namespace {

double Now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    return 2;
  }
  const double start = Now();
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int null = open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      dup2(null, stream);
    }
    execvp(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  rusage used{};
  if (child < 0 || wait4(child, &status, 0, &used) != child) {
    return 1;
  }
  std::printf("%.6f %.6f %ld %d\n", Seconds(used.ru_utime) + Seconds(used.ru_stime), Now() - start,
              used.ru_maxrss, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
  return 0;
}
