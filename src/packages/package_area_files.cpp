#include <algorithm>
#include <utility>

#include "packages/package_area.h"
#include "service/result_codes.h"

// The selected package and its files.

namespace updown {
namespace {

// The service has answered; the connection is as good as before.
bool IsRefusal(const SessionResult& result) {
  return result.end == SessionResult::End::Failed &&
         (result.report == result::WithoutSign(result::kAccessRefused) ||
          result.report == result::WithoutSign(result::kNoSuchRemoteFile));
}

}  // namespace

void PackageArea::Select(const std::string& name) {
  if (name == selected_) {
    return;
  }
  selected_ = name;
  DropFilesRequest();
  files_ = {};
  if (!selected_.empty()) {
    if (const Package* package = rows_.Find(selected_);
        seen_.MarkSeen(selected_) && package != nullptr) {
      RowLooksChanged(*package);
    }
    files_.state = PackageFiles::State::Asked;
    // Not at once: who holds an arrow key down passes many packages.
    askForFiles_.start(0, this);
  }
  Q_EMIT SelectionChanged();
}

void PackageArea::DropFilesRequest() {
  askForFiles_.stop();
  session_.Drop(std::exchange(filesRequest_, 0));
}

void PackageArea::AskForFiles(AskedBy by) {
  DropFilesRequest();
  if (selected_.empty()) {
    return;
  }
  files_.state = PackageFiles::State::Asked;
  filesRequest_ =
      session_.ListFolder("/" + selected_, ListAgain::No, by,
                          [this](ListingAnswer answer) { OnFilesListed(std::move(answer)); });
  Q_EMIT FilesChanged();
}

void PackageArea::OnFilesListed(ListingAnswer answer) {
  filesRequest_ = 0;
  if (answer.result.Done()) {
    std::erase_if(answer.entries, [this](const DirectoryEntry& entry) {
      return entry.type != kEntryFile || IsHeaderFile(entry.name);
    });
    files_.state = PackageFiles::State::Here;
    files_.entries = std::move(answer.entries);
  } else {
    files_.state = PackageFiles::State::Failed;
    files_.report = answer.result.report;
  }
  if (!answer.result.Done() && IsRefusal(answer.result)) {
    Refresh(AskedBy::Program);  // somebody else may have removed the package
  } else {
    TakeResult(answer.result, AskedBy::Program);
  }
  Q_EMIT FilesChanged();
}

// Also those of another package: they are no attachments wherever they lie.
bool PackageArea::IsHeaderFile(const std::string& file) const {
  const auto name = ParseHeaderFile(file);
  return name && (rows_.Has(name->package) || formerNames_.contains(name->package));
}

PackageHeader PackageArea::SelectedHeader() const {
  const Package* package = rows_.Find(selected_);
  return package == nullptr ? PackageHeader{} : ReadPackageHeader(ReadPathOf(*package), codePage_);
}

bool PackageArea::IsBusy(const std::string& name) const {
  const Package* package = rows_.Find(name);
  return package != nullptr && package->work != PackageWork::None;
}

bool PackageArea::SelectedIsComplete() const {
  const Package* package = rows_.Find(selected_);
  return package != nullptr && package->Complete();
}

}  // namespace updown
