#pragma once

#include <sys/resource.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace updown::bench {

// Value of "--name VALUE" on the command line.
inline std::string Option(int count, char** arguments, const char* name, const char* fallback) {
  for (int at = 1; at + 1 < count; ++at) {
    if (std::strcmp(arguments[at], name) == 0) {
      return arguments[at + 1];
    }
  }
  return fallback;
}

inline int NumberOption(int count, char** arguments, const char* name, const char* fallback) {
  return std::atoi(Option(count, arguments, name, fallback).c_str());
}

inline double Seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Cost {
  double processor = 0;  // seconds of the calling thread
  double wall = 0;
};

template <typename Work>
Cost Measure(Work work) {
  const double processor = Seconds(CLOCK_THREAD_CPUTIME_ID);
  const double wall = Seconds(CLOCK_MONOTONIC);
  work();
  return {Seconds(CLOCK_THREAD_CPUTIME_ID) - processor, Seconds(CLOCK_MONOTONIC) - wall};
}

inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Most memory that this process has had so far, in KiB.
inline long PeakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// The debug lines of the exchanges would drown the figures; they are still formatted and written.
inline void SilenceDebugLines() {
  if (std::freopen("/dev/null", "w", stderr) == nullptr) {
    std::puts("stderr cannot be silenced");
  }
}

}  // namespace updown::bench
