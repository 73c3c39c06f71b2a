// Saving and loading the task list: linear in the number of records.
//
//   tasklist_bench [--most 10000] [--runs 9] [--dir /dev/shm]

#include <unistd.h>

#include <filesystem>

#include "bench/measure.h"
#include "localdata/tasklist.h"

namespace updown::bench {
namespace {

std::vector<StoredRecord> MakeList(int records) {
  std::vector<StoredRecord> list;
  for (int n = 0; n < records; ++n) {
    StoredRecord& record = list.emplace_back();
    record.recordId = static_cast<std::uint32_t>(n + 1);
    record.totalBytes = 5000000;
    record.doneBytes = 123456;
    record.paths = {"/some package/attachment " + std::to_string(n) + ".bin",
                    "/home/somebody/received/attachment " + std::to_string(n) + ".bin"};
  }
  return list;
}

}  // namespace
}  // namespace updown::bench

int main(int count, char** arguments) {
  using namespace updown;
  using namespace updown::bench;
  const int most = NumberOption(count, arguments, "--most", "10000");
  const int runs = NumberOption(count, arguments, "--runs", "9");
  const std::string path = Option(count, arguments, "--dir", "/dev/shm") +
                           "/updown-tasklist-bench-" + std::to_string(getpid());
  for (int records = 1000; records <= most; records *= 10) {
    const std::vector<StoredRecord> list = MakeList(records);
    std::vector<double> save;
    std::vector<double> load;
    for (int run = 0; run < runs; ++run) {
      save.push_back(Measure([&] { SaveTaskList(list, path); }).processor);
      load.push_back(Measure([&] {
                       if (LoadTaskList(path).size() != static_cast<std::size_t>(records)) {
                         std::puts("not all records came back");
                       }
                     }).processor);
    }
    std::printf("%7d records  save %8.3f ms, %6.0f ns each   load %8.3f ms, %6.0f ns each\n",
                records, Median(save) * 1e3, Median(save) * 1e9 / records, Median(load) * 1e3,
                Median(load) * 1e9 / records);
  }
  std::filesystem::remove(path);
  return 0;
}
