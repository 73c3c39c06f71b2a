// The client's own windows on the offscreen platform, before a stand-in service in this process.
//
// First, 1,000 and 10,000 packages with their headers in the cache: from the key F5 to the new list
// on the screen, and a sort by subject.
//
// Then a refresh of packages whose headers are all missing: what arrives, through how many
// connections, whether the window answers, and where memory goes. The workers' pace of a block a
// second makes this long: two header files for each package, ten at a time.
//
//   browsing_bench [--runs 9] [--packages 200] [--dir /dev/shm]      0 leaves a half out

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include "bench/browsing_world.h"
#include "bench/measure.h"

namespace updown::bench {
namespace {

constexpr int kWaitStepMs = 100;
constexpr int kAnswerMs = 10;

struct Times {
  std::vector<double> processor;
  std::vector<double> wall;
  template <typename Work>
  void Take(Work work) {
    const Cost cost = Measure(work);
    processor.push_back(cost.processor);
    wall.push_back(cost.wall);
  }
};

void Print(const char* what, const Times& times, int rows) {
  const double processor = Median(times.processor);
  const double wall = Median(times.wall);
  std::printf("  %-20s %8.1f ms wall  %8.1f ms processor  %7.2f us wall for each row\n", what,
              wall * 1e3, processor * 1e3, wall * 1e6 / rows);
}

struct Filled {
  double fill = 0;  // seconds for each row
  double sort = 0;
};

Filled MeasureCached(int rows, int runs) {
  BrowsingWorld world;
  world.MakeArea(rows);
  world.FillCache();
  if (!world.Start() || !QTest::qWaitFor([&] { return world.Rows() == rows; }, kPatienceMs)) {
    std::puts("the list was not filled");
    return {};
  }
  Times fill;
  Times sort;
  for (int run = 0; run < runs; ++run) {
    fill.Take([&] { world.Refresh(); });
    const auto sorted = [&] {
      const std::string top = world.Cell(0, package_column::kSubject);
      const std::string last = world.Cell(rows - 1, package_column::kSubject);
      return world.Rows() == rows && top != last && (top < last) == (run % 2 == 0);
    };
    // The first one reads the headers, between other events.
    sort.Take([&] {
      world.ClickHeading(package_column::kSubject);
      if (!QTest::qWaitFor(sorted, kPatienceMs)) {
        std::puts("not sorted");
      }
    });
  }
  std::printf("%d packages, headers in the cache, medians of %d\n", rows, runs);
  Print("refresh", fill, rows);
  Print("sort by subject", sort, rows);
  std::printf("  %-20s %8.1f ms wall   goal for 10,000: below 2000\n", "both",
              (Median(fill.wall) + Median(sort.wall)) * 1e3);
  return {Median(fill.wall) / rows, Median(sort.wall) / rows};
}

// Looks at memory, workers and the time between two turns of the message loop while it lives.
class Watch {
 public:
  explicit Watch(const BrowsingWorld& world) {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this, &world] {
      longestGap_ = std::max(longestGap_, sinceLast_.restart());
      peak_ = std::max(peak_, MemoryNow().resident);
      mostWorkers_ = std::max(mostWorkers_, world.Workers());
    });
    sinceLast_.start();
    timer_.start(kAnswerMs);
  }
  qint64 LongestGap() const { return longestGap_; }
  long Peak() const { return peak_; }
  int MostWorkers() const { return mostWorkers_; }

 private:
  QTimer timer_;
  QElapsedTimer sinceLast_;
  qint64 longestGap_ = 0;
  long peak_ = 0;
  int mostWorkers_ = 0;
};

Memory PrintMemory(const BrowsingWorld& world, const char* when, long peak = 0) {
  world.Service().ForgetRequests();
  malloc_trim(0);
  const Memory memory = MemoryNow();
  std::printf("  %-34s %7ld KiB resident %7ld KiB allocated  %6d tasks", when, memory.resident,
              memory.allocated, world.Tasks(false));
  std::puts(peak == 0 ? "" : (", peak " + std::to_string(peak) + " KiB resident").c_str());
  return memory;
}

void RefreshToItsEnd(const BrowsingWorld& world) {
  world.Refresh();
  while (world.Tasks(false) > 0) {
    QTest::qWait(kWaitStepMs);
  }
  QTest::qWait(10 * kWaitStepMs);  // the last rows and the last save of the list
}

void MeasureMissing(int packages) {
  BrowsingWorld world;
  if (!world.Start()) {
    std::puts("no window");
    return;
  }
  QTest::qWait(5 * kWaitStepMs);
  world.MakeArea(packages);
  const int expected = world.HeadersInArea();
  std::printf("%d packages, headers missing\n", packages);
  PrintMemory(world, "before");
  const Watch watch(world);
  const Cost cost = Measure([&] { RefreshToItsEnd(world); });
  int texts = 0;
  for (int row = 0; row < world.Rows(); ++row) {
    texts += world.Cell(row, package_column::kFrom).empty() ? 0 : 1;
  }
  std::printf("  %d of %d header files arrived and are right, %d of %d rows have their text\n",
              world.HeadersInCache(), expected, texts, world.Rows());
  // One that ends can overlap the next one in the service's count.
  std::printf("  at most %d workers, %u connections with the window's, %.1f s, %.1f s processor\n",
              watch.MostWorkers(), world.Service().MostConnections(), cost.wall, cost.processor);
  std::printf("  longest time without an answer %lld ms\n",
              static_cast<long long>(watch.LongestGap()));
  const Memory first = PrintMemory(world, "after the first refresh", watch.Peak());
  Memory last;
  for (const char* when : {"after the second", "after the third", "after the fourth"}) {
    RefreshToItsEnd(world);
    last = PrintMemory(world, when, watch.Peak());
  }
  std::printf("  growth %ld KiB in three refreshes\n", last.allocated - first.allocated);
}

int RunBench(int count, char** arguments) {
  const int runs = NumberOption(count, arguments, "--runs", "9");
  const int packages = NumberOption(count, arguments, "--packages", "200");
  setenv("TMPDIR", Option(count, arguments, "--dir", "/dev/shm").c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  SilenceDebugLines();
  const QApplication application(count, arguments);
  if (packages > 0) {
    MeasureMissing(packages);
  }
  if (runs > 0) {
    const Filled small = MeasureCached(1000, runs);
    const Filled large = MeasureCached(10000, runs);
    std::printf("time for each row, 10,000 to 1,000: refresh %.2f, sort %.2f; goal at most 1.5\n",
                large.fill / small.fill, large.sort / small.sort);
  }
  return 0;
}

}  // namespace
}  // namespace updown::bench

int main(int count, char** arguments) { return updown::bench::RunBench(count, arguments); }
