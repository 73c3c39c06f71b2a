#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "packages/header_fetches.h"
#include "packages/package_rows.h"

namespace updown {

// Has the header files fetched that the cache lacks: those of the rows on the screen first, then
// from the top down. Only a few are under way at a time, so that the order can follow the screen
// and what the user saves does not stand behind all of them. Main thread.
class HeaderQueue {
 public:
  static constexpr std::size_t kAtOnce = 20;  // twice as many as transfers run

  // Both outlive it.
  HeaderQueue(PackageRows& rows, HeaderFetches& fetches) : rows_(rows), fetches_(fetches) {}

  void FetchFirst(std::vector<std::string> packages);
  // Rows have come, or others than before lack files.
  void StartOver();
  void RowsRemoved(int first, int count);
  // Begins what may begin.
  void Fill();
  // False if no such fetch was under way.
  bool Ended(const std::string& file) { return underWay_.erase(file) != 0; }

 private:
  bool Full() const { return underWay_.size() >= kAtOnce; }
  void Fetch(Package& package);

  PackageRows& rows_;
  HeaderFetches& fetches_;
  std::vector<std::string> first_;
  int next_ = 0;  // the rows above lack nothing any more
  std::unordered_set<std::string> underWay_;
};

}  // namespace updown
