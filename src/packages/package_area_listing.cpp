#include <algorithm>
#include <chrono>
#include <utility>

#include "localdata/file_names.h"
#include "packages/package_area.h"

// Listings of the packages, and how the rows follow them.

namespace updown {
namespace {

// What one step may take of the main thread, between two looks at its events.
constexpr std::chrono::milliseconds kStep{10};
constexpr int kRowsAtOnce = 500;

class StepClock {
 public:
  StepClock() { clock_.start(); }
  bool Over() const { return clock_.hasExpired(kStep.count()); }

 private:
  QElapsedTimer clock_;
};

}  // namespace

void PackageArea::Refresh(AskedBy by) {
  if (rootRequest_ != 0) {
    if (by == AskedBy::Program || rootAskedBy_ == AskedBy::Person) {
      return;
    }
    session_.Drop(rootRequest_);
  }
  rootAskedBy_ = by;
  rootRequest_ = session_.ListFolder("/", ListAgain::Once, by,
                                     [this](const ListingAnswer& answer) { OnListed(answer); });
  if (connection_ != Connection::There && by == AskedBy::Person) {
    connection_ = Connection::Connecting;
  }
  refresh_.start(static_cast<int>(times_.refresh.count()), this);
  Q_EMIT ConnectionChanged();
}

void PackageArea::Cancel() {
  if (session_.Busy()) {
    session_.Cancel();
  }
}

void PackageArea::SetActive(bool active) {
  if (!active) {
    away_.start();
  } else if (away_.isValid()) {
    const bool stale = away_.hasExpired(times_.away.count());
    away_.invalidate();
    if (stale) {
      Refresh(AskedBy::Program);
    }
  }
}

void PackageArea::OnListed(const ListingAnswer& answer) {
  rootRequest_ = 0;
  if (answer.result.Done()) {
    TakeUpListing(answer.entries);
  }
  TakeResult(answer.result, rootAskedBy_);
  if (answer.result.Done() && rootAskedBy_ == AskedBy::Person && !selected_.empty()) {
    AskForFiles(AskedBy::Person);
  }
  Q_EMIT ConnectionChanged();
}

// A notice for each outage: from the first failure to the next thing that succeeds.
void PackageArea::TakeResult(const SessionResult& result, AskedBy by) {
  if (result.Done()) {
    SetConnection(Connection::There);
    Q_EMIT Recovered();
    return;
  }
  if (result.end == SessionResult::End::Failed) {
    const bool news = connection_ != Connection::Lost;
    SetConnection(Connection::Lost);
    if (news || by == AskedBy::Person) {
      Q_EMIT Failed(result.report);
    }
  } else if (result.end == SessionResult::End::NoLogin || connection_ != Connection::There) {
    SetConnection(Connection::GivenUp);
  }
}

void PackageArea::SetConnection(Connection connection) {
  if (std::exchange(connection_, connection) != connection) {
    Q_EMIT ConnectionChanged();
  }
}

void PackageArea::TakeUpListing(const std::vector<DirectoryEntry>& entries) {
  listed_.clear();
  newEntries_.clear();
  for (const DirectoryEntry& entry : entries) {
    if (entry.type == kEntryFolder && IsPackageName(entry.name) && FitsPath("/" + entry.name) &&
        listed_.insert(entry.name).second && !rows_.Has(entry.name)) {
      newEntries_.push_back(entry);
    }
  }
  seen_.FollowListing(listed_);
  LookIntoCache();
  checkedFrom_ = rows_.Count();
  inserted_ = 0;
  GoOn();
}

// One look for all rows. What somebody else has put into the cache or taken away shows too.
void PackageArea::LookIntoCache() {
  cached_ = cache_.Names();
  for (int row = 0; row < rows_.Count(); ++row) {
    Package& package = rows_.At(row);
    bool changed = false;
    for (const bool start : {true, false}) {
      HeaderFile& state = package.File(start);
      const bool here = cached_.contains(HeaderFileOf(package.Name(), start));
      changed = changed || here != (state == HeaderFile::Here);
      if (here) {
        state = HeaderFile::Here;
      } else if (state != HeaderFile::BeingFetched) {
        state = HeaderFile::Missing;
      }
    }
    if (changed) {
      package.texts.reset();
      RowChanged(package);
    }
  }
}

void PackageArea::GoOn() {
  const StepClock clock;
  bool more = true;
  while (more && !clock.Over()) {
    more = RemoveSomeGone() || InsertSomeNew();
  }
  if (!more && readFrom_ >= 0) {
    more = !ReadHeaders();
    if (!more) {
      Q_EMIT HeadersRead();
    }
  }
  if (more) {
    step_.start(0, this);
    return;
  }
  step_.stop();
  cached_.clear();
  listed_.clear();
  headers_.StartOver();
}

// From the bottom up, a span of neighbours at a time; false when no row is left to be checked.
bool PackageArea::RemoveSomeGone() {
  checkedFrom_ = std::min(checkedFrom_, rows_.Count());
  const auto gone = [this](int row) { return !listed_.contains(rows_.At(row).Name()); };
  for (int looked = 0; checkedFrom_ > 0 && looked < kRowsAtOnce; ++looked) {
    --checkedFrom_;
    if (gone(checkedFrom_)) {
      const int end = checkedFrom_ + 1;
      while (checkedFrom_ > 0 && gone(checkedFrom_ - 1)) {
        --checkedFrom_;
      }
      RemoveRows(checkedFrom_, end - checkedFrom_);
      return true;
    }
  }
  return checkedFrom_ > 0;
}

// On top, the last of the listing first.
bool PackageArea::InsertSomeNew() {
  PackageRows::Some packages;
  while (!newEntries_.empty() && packages.size() < kRowsAtOnce) {
    auto package = std::make_unique<Package>(std::move(newEntries_.back()));
    newEntries_.pop_back();
    if (rows_.Has(package->Name())) {
      continue;  // a rename has given a row this name meanwhile
    }
    for (const bool start : {true, false}) {
      if (cached_.contains(HeaderFileOf(package->Name(), start))) {
        package->File(start) = HeaderFile::Here;
      }
    }
    packages.push_back(std::move(package));
  }
  if (packages.empty()) {
    return !newEntries_.empty();
  }
  const int count = static_cast<int>(packages.size());
  const int row = std::min(inserted_, rows_.Count());
  beginInsertRows(Root(), row, row + count - 1);
  rows_.Insert(row, std::move(packages));
  endInsertRows();
  inserted_ = row + count;
  return !newEntries_.empty();
}

// A view may move the selection on before its row goes.
void PackageArea::RemoveRows(int first, int count) {
  beginRemoveRows(Root(), first, first + count - 1);
  rows_.Remove(first, count);
  headers_.RowsRemoved(first, count);
  endRemoveRows();
  if (!selected_.empty() && !rows_.Has(selected_)) {
    Select({});
  }
}

bool PackageArea::ReadHeaders() {
  const StepClock clock;
  for (readFrom_ = std::max(readFrom_, 0); readFrom_ < rows_.Count(); ++readFrom_) {
    if (clock.Over()) {
      step_.start(0, this);
      return false;
    }
    TextsOf(rows_.At(readFrom_));
  }
  readFrom_ = -1;
  return true;
}

}  // namespace updown
