#pragma once

#include <set>
#include <string>
#include <vector>

#include "demo/kill/world.h"
#include "localdata/transfer_record.h"

namespace updown::demo {

// What a client has left on disk, held against what it said and what the service has. All checks
// throw std::runtime_error, by Check, with what is wrong.
class Remains {
 public:
  // `area` is what the service serves, `folder` the client's; writes the things there.
  Remains(std::string area, std::string folder, Things things);

  // After a run of the client, with what it said. The list is whole, no task of a completed save is
  // missing unless its file has come or the user removed it, none stands twice, and what a task
  // says it has of its file is the file's. Returns how many saves came through.
  int TakeUp(const std::vector<std::string>& said);
  // After a regular end: no file that no task owns, nothing temporary. A kill may leave the target
  // of a task that was just made or removed; such ones are removed here and counted.
  void CheckNothingLeft() const;
  int RemoveOrphansOfKill() const;
  // After all has been fetched: the list is empty, every file is the service's, the cache holds all
  // headers and nothing else.
  void CheckAllHere() const;

  const std::string& Folder() const { return folder_; }
  std::vector<StoredRecord> List() const;
  // On disk as the service has it, a folder with all below it.
  bool IsEqual(const Thing& thing) const;

 private:
  using Paths = std::set<std::string>;
  void CheckList(const Paths& removed);
  void CheckRecord(const StoredRecord& record) const;
  const Thing& ThingOf(const std::string& remote) const;
  bool MayLackBytes(const std::string& remote) const;
  // The user's things that lie on disk, without a task and not whole.
  std::vector<Thing> Orphans() const;

  const std::string area_;
  const std::string folder_;
  const Things things_;
  Paths known_;  // tasks of the last save that is known to be on disk
  // Made, removed or begun anew in this run, and in the one before.
  Paths touched_;
  Paths touchedBefore_;
};

}  // namespace updown::demo
