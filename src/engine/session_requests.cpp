#include "engine/session_requests.h"

#include <algorithm>
#include <utility>

#include "localdata/file_names.h"
#include "resources/string_id.h"

namespace updown {
namespace {

bool FitsRequest(const std::string& path) { return path.size() < kPathCapacity; }

SessionResult TooLong() {
  return {SessionResult::End::Failed, result::WithoutSign(result::kNotEncodable)};
}

// A folder always has "." and "..": a listing without any entry is none.
ListingAnswer AskListing(SessionLink& link, const std::string& path) {
  FolderListing listing = link.Ops().ListFolder(link.Wire(), path);
  ListingAnswer answer{link.ResultOf(listing.error), {}};
  if (answer.result.Done() && listing.entries.empty()) {
    answer.result = {SessionResult::End::Failed,
                     static_cast<std::uint32_t>(StringId::FolderReadFailed)};
  }
  answer.entries = std::move(listing.entries);
  return answer;
}

// The steps of a removal or a renaming, each one request, on a connection that is open.
class Change {
 public:
  explicit Change(SessionLink& link) : link_(link) { answer_.result = link.Open(AskedBy::Person); }

  // Sends one request unless an earlier step has ended the change; true if it was carried out.
  template <typename Request>
  bool Step(const std::string& path, Request request) {
    if (!answer_.result.Done()) {
      return false;
    }
    const int code = FitsRequest(path) ? request(link_) : result::kNotEncodable;
    answer_.result = link_.ResultOf(code);
    if (!answer_.result.Done()) {
      answer_.failedName = path;
      // A reply that came decides; without one the request may have been carried out all the same,
      // and so were the steps before this one.
      answer_.uncertain = carriedOut_ || !link_.Wire().IsOpen();
    } else {
      carriedOut_ = true;
    }
    return answer_.result.Done();
  }

  std::vector<DirectoryEntry> List(const std::string& path) {
    if (!answer_.result.Done()) {
      return {};
    }
    ListingAnswer listing = AskListing(link_, path);
    answer_.result = listing.result;
    if (!answer_.result.Done()) {
      answer_.failedName = path;
      answer_.uncertain = carriedOut_;
    }
    return std::move(listing.entries);
  }

  ChangeAnswer Answer() && { return std::move(answer_); }

 private:
  SessionLink& link_;
  ChangeAnswer answer_;
  bool carriedOut_ = false;
};

ChangeAnswer Refused(const std::string& path) { return {TooLong(), false, path}; }

auto RenameStep(const std::string& newPath, const std::string& oldPath) {
  return [&](SessionLink& link) {
    return FitsRequest(newPath) ? link.Ops().RenameEntry(link.Wire(), newPath, oldPath)
                                : result::kNotEncodable;
  };
}

bool HasFile(const std::vector<DirectoryEntry>& entries, const std::string& name) {
  return std::any_of(entries.begin(), entries.end(), [&](const DirectoryEntry& entry) {
    return entry.type == kEntryFile && entry.name == name;
  });
}

}  // namespace

ListingAnswer ListOnLink(SessionLink& link, const std::string& path, ListAgain again, AskedBy by) {
  if (!FitsRequest(path)) {
    return {TooLong(), {}};
  }
  if (const SessionResult opened = link.Open(by); !opened.Done()) {
    return {opened, {}};
  }
  const bool stoodIdle = link.StoodIdle();
  ListingAnswer answer = AskListing(link, path);
  if (answer.result.end != SessionResult::End::Failed) {
    return answer;
  }
  const bool diedIdle = stoodIdle && !link.Wire().IsOpen();
  link.Close();
  const SessionResult reopened = link.Open(by);
  if (again == ListAgain::No && !diedIdle) {
    return answer;
  }
  return reopened.Done() ? AskListing(link, path) : ListingAnswer{reopened, {}};
}

ChangeAnswer RemoveFileOnLink(SessionLink& link, const std::string& path) {
  if (!FitsRequest(path)) {
    return Refused(path);
  }
  Change change(link);
  change.Step(path, [&](SessionLink& open) { return open.Ops().RemoveFile(open.Wire(), path); });
  return std::move(change).Answer();
}

ChangeAnswer RemovePackageOnLink(SessionLink& link, const std::string& path) {
  if (!FitsRequest(path)) {
    return Refused(path);
  }
  const ListingAnswer listing = ListOnLink(link, path, ListAgain::No, AskedBy::Person);
  if (!listing.result.Done()) {
    return {listing.result, false, path};
  }
  Change change(link);
  for (const DirectoryEntry& entry : listing.entries) {
    const std::string file = path + "/" + entry.name;
    if (IsSafeName(entry.name) && !change.Step(file, [&](SessionLink& open) {
          return open.Ops().RemoveFile(open.Wire(), file);
        })) {
      break;
    }
  }
  change.Step(path, [&](SessionLink& open) { return open.Ops().RemoveFolder(open.Wire(), path); });
  return std::move(change).Answer();
}

ChangeAnswer RenameOnLink(SessionLink& link, const FolderRename& rename) {
  if (!FitsRequest(rename.oldPath) || !FitsRequest(rename.newPath)) {
    return Refused(rename.oldPath);
  }
  Change change(link);
  change.Step(rename.oldPath, RenameStep(rename.newPath, rename.oldPath));
  if (rename.files.empty()) {
    return std::move(change).Answer();
  }
  const std::vector<DirectoryEntry> entries = change.List(rename.newPath);
  for (const FolderRename::File& file : rename.files) {
    const std::string from = rename.newPath + "/" + file.oldName;
    const std::string to = rename.newPath + "/" + file.newName;
    if (HasFile(entries, file.oldName)) {
      change.Step(from, RenameStep(to, from));
    }
  }
  return std::move(change).Answer();
}

}  // namespace updown
