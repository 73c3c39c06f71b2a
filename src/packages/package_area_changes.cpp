#include <QTimer>
#include <algorithm>
#include <utility>

#include "packages/package_area.h"
#include "platform/qt/text.h"

// What the user changes on the service.

namespace updown {

// The row tells of it once it has taken a while.
void PackageArea::BeginWork(Package& package, PackageWork work) {
  package.work = work;
  RowChanged(package);
  QTimer::singleShot(times_.quiet, this, [this, name = package.Name(), work] {
    Package* busy = rows_.Find(name);
    if (busy != nullptr && busy->work == work) {
      busy->workShows = true;
      RowChanged(*busy);
    }
  });
}

void PackageArea::EndWork(const std::string& name) {
  if (Package* package = rows_.Find(name)) {
    package->work = PackageWork::None;
    package->workShows = false;
    RowChanged(*package);
  }
}

// After an answer that leaves open what the service has done, only a listing tells what is true.
void PackageArea::AfterFailure(const ChangeAnswer& answer) {
  if (answer.result.end == SessionResult::End::Failed) {
    Q_EMIT ChangeFailed(answer.result.report, FromUtf8(answer.failedName));
  }
  if (answer.uncertain || answer.result.end == SessionResult::End::Cancelled) {
    Refresh(AskedBy::Program);
  }
}

void PackageArea::Rename(const std::string& name, const std::string& newName) {
  Package* package = rows_.Find(name);
  if (package == nullptr || package->work != PackageWork::None) {
    return;
  }
  FolderRename rename{"/" + name, "/" + newName, {}};
  if (IsPackageName(newName)) {
    for (const bool start : {false, true}) {
      rename.files.push_back({HeaderFileOf(name, start), HeaderFileOf(newName, start)});
    }
  }
  BeginWork(*package, PackageWork::Renaming);
  changes_.push_back(
      session_.Rename(rename, [this, rename, name, newName](const ChangeAnswer& answer) {
        OnRenamed(rename, name, newName, answer);
      }));
}

void PackageArea::OnRenamed(const FolderRename& rename, const std::string& name,
                            const std::string& newName, const ChangeAnswer& answer) {
  EndWork(name);
  // What fails behind the folder itself leaves that with its new name.
  const bool folderFailed = answer.failedName.empty() || answer.failedName == rename.oldPath;
  if (answer.result.Done() || !folderFailed) {
    RenameRow(rename, name, newName, answer.failedName);
    Q_EMIT PackageRenamed(name, newName);
    Refresh(AskedBy::Program);
  }
  AfterFailure(answer);
}

// The service goes by the files in their order up to the one that it refuses. That and what stands
// behind it have their old names there, and are no header files any more.
void PackageArea::RenameInCache(const FolderRename& rename, const std::string& failedName) const {
  bool done = true;
  for (const auto& file : rename.files) {
    done = done && failedName != rename.newPath + "/" + file.oldName;
    if (done) {
      cache_.Rename(file.oldName, file.newName);
    } else {
      cache_.Delete(file.oldName);
    }
  }
}

void PackageArea::RenameRow(const FolderRename& rename, const std::string& name,
                            const std::string& newName, const std::string& failedName) {
  const bool remains = IsPackageName(newName) && !rows_.Has(newName);
  if (remains) {
    RenameInCache(rename, failedName);
  } else {
    DeleteFromCache(name);
  }
  formerNames_.insert(name);
  seen_.FollowRename(name, newName);
  Package* package = rows_.Find(name);
  if (package == nullptr) {
    return;
  }
  if (!remains) {
    RemoveRows(package->row, 1);
    return;
  }
  rows_.Rename(*package, newName);
  if (listed_.erase(name) != 0) {
    listed_.insert(newName);  // of a listing from before, still being taken up
  }
  const auto cached = cache_.Names();
  for (const bool start : {true, false}) {
    const bool here = cached.contains(HeaderFileOf(newName, start));
    package->File(start) = here ? HeaderFile::Here : HeaderFile::Missing;
  }
  package->texts.reset();
  RowChanged(*package);
  if (selected_ == name) {
    Select(newName);
  }
}

void PackageArea::RemovePackage(const std::string& name) {
  Package* package = rows_.Find(name);
  if (package == nullptr || package->work != PackageWork::None) {
    return;
  }
  BeginWork(*package, PackageWork::Removing);
  changes_.push_back(session_.RemovePackage(
      "/" + name, [this, name](const ChangeAnswer& answer) { OnPackageRemoved(name, answer); }));
}

void PackageArea::DeleteFromCache(const std::string& name) const {
  for (const bool start : {true, false}) {
    cache_.Delete(HeaderFileOf(name, start));
  }
}

void PackageArea::OnPackageRemoved(const std::string& name, const ChangeAnswer& answer) {
  EndWork(name);
  const Package* package = rows_.Find(name);
  if (answer.result.Done()) {
    DeleteFromCache(name);
    if (package != nullptr) {
      RemoveRows(package->row, 1);
    }
    return;
  }
  if (answer.uncertain && name == selected_) {
    AskForFiles(AskedBy::Program);
  }
  AfterFailure(answer);
}

void PackageArea::RemoveFile(const std::string& package, const std::string& file) {
  if (package == selected_) {
    // Asked for again it would be answered with an error, about a file that has gone as wanted.
    if (!files_.removing.insert(file).second) {
      return;
    }
    QTimer::singleShot(times_.quiet, this, &PackageArea::FilesChanged);
  }
  changes_.push_back(session_.RemoveFile(
      "/" + package + "/" + file,
      [this, package, file](const ChangeAnswer& answer) { OnFileRemoved(package, file, answer); }));
  fileRemovals_.push_back(changes_.back());
}

// The service, or the person who was asked to log in, would say to the other files what was said to
// this one.
void PackageArea::GiveUpFileRemovals() {
  for (const Session::RequestId request : std::exchange(fileRemovals_, {})) {
    session_.Drop(request);
  }
  files_.removing.clear();
}

void PackageArea::OnFileRemoved(const std::string& package, const std::string& file,
                                const ChangeAnswer& answer) {
  const bool refused = answer.result.end == SessionResult::End::Failed && !answer.uncertain &&
                       !answer.failedName.empty();
  const bool givenUp = !answer.result.Done() && !refused;
  if (givenUp) {
    GiveUpFileRemovals();
  }
  if (package == selected_) {
    files_.removing.erase(file);
    if (answer.result.Done()) {
      std::erase_if(files_.entries,
                    [&file](const DirectoryEntry& entry) { return entry.name == file; });
    }
    Q_EMIT FilesChanged();
    if (answer.uncertain || givenUp) {
      AskForFiles(AskedBy::Program);
    }
  }
  if (answer.result.end == SessionResult::End::Failed) {
    Q_EMIT ChangeFailed(answer.result.report, FromUtf8(answer.failedName));
  }
}

}  // namespace updown
