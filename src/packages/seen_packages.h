#pragma once

#include <QTimer>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "platform/thread.h"

namespace updown {

// The packages that the person has had on show, kept from run to run for one identity. At the very
// first start, and where the file is missing or damaged, all that are listed count as seen. Main
// thread; the file is written on another one, a while after a change.
class SeenPackages {
 public:
  // UTF-8 path of the file, in a folder that is there; empty: nothing outlives the object.
  explicit SeenPackages(std::string path);
  ~SeenPackages();  // stores what is not stored yet, waiting half a second at most
  SeenPackages(const SeenPackages&) = delete;
  SeenPackages& operator=(const SeenPackages&) = delete;

  bool IsNew(const std::string& package) const;

  bool MarkSeen(const std::string& package);  // true if it was new
  void FollowRename(const std::string& package, const std::string& newName);
  // A listing is complete: who is not in it is forgotten.
  void FollowListing(const std::unordered_set<std::string>& listed);

 private:
  using Names = std::unordered_set<std::string>;
  void Changed();
  void Write();

  const std::string path_;
  std::optional<Names> names_;  // nothing before the first listing of the first start
  QTimer pause_;                // runs while a change is not written
  std::unique_ptr<Thread> writer_;
};

}  // namespace updown
