#include "packages/header_queue.h"

#include <algorithm>
#include <utility>

#include "engine/package.h"

namespace updown {

void HeaderQueue::FetchFirst(std::vector<std::string> packages) {
  first_ = std::move(packages);
  Fill();
}

void HeaderQueue::StartOver() {
  next_ = 0;
  Fill();
}

void HeaderQueue::RowsRemoved(int first, int count) {
  if (next_ > first) {
    next_ = std::max(first, next_ - count);
  }
}

void HeaderQueue::Fill() {
  for (auto name = first_.begin(); name != first_.end() && !Full(); ++name) {
    if (Package* package = rows_.Find(*name)) {
      Fetch(*package);
    }
  }
  for (; next_ < rows_.Count() && !Full(); ++next_) {
    Fetch(rows_.At(next_));
    if (Full()) {
      return;  // the row may lack its other file still
    }
  }
}

void HeaderQueue::Fetch(Package& package) {
  for (const bool start : {false, true}) {
    HeaderFile& state = package.File(start);
    if (state != HeaderFile::Missing || Full()) {
      continue;
    }
    const std::string file = HeaderFileOf(package.Name(), start);
    if (underWay_.contains(file)) {
      continue;
    }
    if (fetches_.FetchHeader(package.Name(), file)) {
      state = HeaderFile::BeingFetched;
      underWay_.insert(file);
    } else {
      state = HeaderFile::Failed;
    }
  }
}

}  // namespace updown
