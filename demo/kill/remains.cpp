#include "demo/kill/remains.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <utility>

#include "demo/kill/client_process.h"
#include "localdata/tasklist.h"
#include "tests/support/temporary_folder.h"

namespace updown::demo {
namespace {

namespace fs = std::filesystem;
using test::ReadFile;

// Names below a folder, with the bytes of the files; a file alone is "".
std::set<std::pair<std::string, std::string>> Contents(const std::string& path) {
  std::set<std::pair<std::string, std::string>> contents;
  if (!fs::is_directory(path)) {
    contents.emplace("", ReadFile(path));
    return contents;
  }
  for (const auto& entry : fs::recursive_directory_iterator(path)) {
    contents.emplace(fs::relative(entry.path(), path).string(),
                     entry.is_directory() ? "" : ReadFile(entry.path()));
  }
  return contents;
}

// Reading ends at what is no whole record: one that is put behind all is read if all are whole.
void CheckWhole(const std::string& list) {
  const std::string other = list + ".other";
  StoredRecord last;
  last.paths.remotePath = "/behind all others";
  Check(SaveTaskList({{last}}, other) == 0, "no list can be written");
  test::WriteFile(other, ReadFile(list) + ReadFile(other));
  const std::vector<StoredRecord> read = LoadTaskList(other);
  Check(!read.empty() && read.back().paths.remotePath == last.paths.remotePath,
        "the list is not whole");
  fs::remove(other);
}

}  // namespace

Remains::Remains(std::string area, std::string folder, Things things)
    : area_(std::move(area)), folder_(std::move(folder)), things_(std::move(things)) {
  fs::create_directories(folder_ + "/got");
  fs::create_directories(folder_ + "/cache");
  WriteThings(folder_, things_);
}

std::vector<StoredRecord> Remains::List() const { return LoadTaskList(folder_ + "/list"); }

bool Remains::IsEqual(const Thing& thing) const {
  const std::string local = thing.Local(folder_);
  return fs::exists(local) && Contents(local) == Contents(area_ + thing.Remote());
}

int Remains::TakeUp(const std::vector<std::string>& said) {
  Paths removed;
  int saves = 0;
  touchedBefore_ = std::exchange(touched_, {});
  for (const std::string& line : said) {
    std::istringstream words(line);
    std::string what, path;
    words >> what;
    if (what == "saved") {
      ++saves;
      known_.clear();
    }
    while (words >> path) {
      if (what == "saved") {
        known_.insert(path);
      } else {
        touched_.insert(path);
        if (what == "removed") {
          removed.insert(path);
        }
      }
    }
  }
  CheckList(removed);
  return saves;
}

void Remains::CheckList(const Paths& removed) {
  const std::vector<StoredRecord> records = List();
  CheckWhole(folder_ + "/list");
  Paths stored;
  for (const StoredRecord& record : records) {
    CheckRecord(record);
    if (record.parentRecordId == 0) {
      const std::string& remote = record.paths.remotePath;
      Check(stored.insert(remote).second, remote + " stands twice");
    }
  }
  for (const Thing& thing : things_) {
    const std::string path = thing.Remote();
    Check(
        !known_.contains(path) || stored.contains(path) || removed.contains(path) || IsEqual(thing),
        path + " is lost");
  }
  known_ = stored;
}

void Remains::CheckRecord(const StoredRecord& record) const {
  const auto& [remote, local] = record.paths;
  const Thing& thing = ThingOf(remote);
  Check(local == thing.Local(folder_) + remote.substr(thing.Remote().size()),
        remote + " has another's target");
  if (record.isFolder != 0) {
    return;
  }
  const std::string sent = ReadFile(area_ + remote).substr(0, record.doneBytes);
  const std::string has = ReadFile(local).substr(0, record.doneBytes);
  Check(sent.size() == record.doneBytes && sent.starts_with(has) &&
            (has.size() == sent.size() || MayLackBytes(remote)),
        remote + " says it has more than it has");
}

const Thing& Remains::ThingOf(const std::string& remote) const {
  const auto found = std::find_if(things_.begin(), things_.end(), [&](const Thing& thing) {
    return remote == thing.Remote() || remote.starts_with(thing.Remote() + "/");
  });
  Check(found != things_.end(), "a stranger in the list: " + remote);
  return *found;
}

// A list that was saved before a Redo says what the file had then: a resume sees that it is short.
bool Remains::MayLackBytes(const std::string& remote) const {
  const std::string top = ThingOf(remote).Remote();
  return touched_.contains(top) || touchedBefore_.contains(top);
}

std::vector<Thing> Remains::Orphans() const {
  Paths stored;
  for (const StoredRecord& record : List()) {
    stored.insert(record.paths.remotePath);
  }
  std::vector<Thing> orphans;
  std::copy_if(things_.begin(), things_.end(), std::back_inserter(orphans),
               [&](const Thing& thing) {
                 return thing.IsUsers() && !stored.contains(thing.Remote()) &&
                        fs::exists(thing.Local(folder_)) && !IsEqual(thing);
               });
  return orphans;
}

int Remains::RemoveOrphansOfKill() const {
  const std::vector<Thing> orphans = Orphans();
  for (const Thing& orphan : orphans) {
    const std::string path = orphan.Remote();
    Check(touched_.contains(path), path + " has left a file that no task owns");
    fs::remove_all(orphan.Local(folder_));
  }
  return static_cast<int>(orphans.size());
}

void Remains::CheckNothingLeft() const {
  for (const Thing& orphan : Orphans()) {
    Check(false, orphan.Remote() + " has left a file that no task owns");
  }
  Paths expected{folder_ + "/things", folder_ + "/list"};
  for (const Thing& thing : things_) {
    expected.insert(thing.Local(folder_));
  }
  for (const char* place : {"", "/got", "/cache"}) {
    for (const auto& entry : fs::directory_iterator(folder_ + place)) {
      const std::string path = entry.path();
      const bool own = path == folder_ + "/got" || path == folder_ + "/cache";
      Check(own || expected.contains(path), "something is left: " + path);
    }
  }
}

void Remains::CheckAllHere() const {
  Check(List().empty(), "the list is not empty at the end");
  for (const Thing& thing : things_) {
    Check(IsEqual(thing), thing.name + " is not as it was sent");
  }
  CheckNothingLeft();
}

}  // namespace updown::demo
