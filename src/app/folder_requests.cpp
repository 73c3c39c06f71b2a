#include "app/folder_requests.h"

#include <utility>

#include "localdata/file_names.h"
#include "platform/text.h"
#include "resources/string_id.h"
#include "service/result_codes.h"

namespace updown {
namespace {

struct ServicePath {
  int refusal = 0;  // result code, or 0 if the path is good
  std::string utf8;
};

ServicePath Convert(const std::u16string& path) {
  std::string utf8 = WideToUtf8(path);
  if (!FitsPath(utf8)) {
    return {result::kNotEncodable, {}};
  }
  return {0, std::move(utf8)};
}

RequestAnswer Answer(int code) { return {code, code}; }

RequestAnswer RemovalAnswer(int code) {
  const bool refused = code == result::kAccessRefused;
  return {static_cast<int>(result::WithoutSign(code)), refused ? 0 : code};
}

// 0, or the first result of another kind.
int RemoveFiles(SharedSession& session, const DirectoryList& list, const std::string& folder) {
  for (const DirectoryEntry& entry : list) {
    if (!IsSafeName(entry.name)) {
      continue;
    }
    const int code = session.Ops().RemoveFile(session.Link(), folder + "/" + entry.name);
    if (code != result::kOk) {
      return code;
    }
  }
  return result::kOk;
}

}  // namespace

ListAnswer RequestListing(SharedSession& session, const std::u16string& path) {
  const ServicePath folder = Convert(path);
  FolderListing listing;
  listing.error = folder.refusal;
  if (listing.error == 0) {
    listing = session.Ops().ListFolder(session.Link(), folder.utf8);
  }
  if (!listing.entries.empty()) {
    return {std::move(listing.entries), 0};
  }
  constexpr auto kNothingRead = static_cast<std::int64_t>(StringId::FolderReadFailed);
  return {std::nullopt, listing.error == 0 ? kNothingRead : listing.error};
}

RequestAnswer RequestRemoveFile(SharedSession& session, const std::u16string& path) {
  const ServicePath file = Convert(path);
  if (file.refusal != 0) {
    return Answer(file.refusal);
  }
  return Answer(session.Ops().RemoveFile(session.Link(), file.utf8));
}

RequestAnswer RequestRename(SharedSession& session, const std::u16string& newPath,
                            const std::u16string& oldPath) {
  const ServicePath to = Convert(newPath);
  const ServicePath from = Convert(oldPath);
  if (to.refusal != 0 || from.refusal != 0) {
    return Answer(to.refusal != 0 ? to.refusal : from.refusal);
  }
  return Answer(session.Ops().RenameEntry(session.Link(), to.utf8, from.utf8));
}

RequestAnswer RequestRemovePackage(SharedSession& session, const std::u16string& path) {
  const ServicePath folder = Convert(path);
  if (folder.refusal != 0) {
    return RemovalAnswer(folder.refusal);
  }
  const FolderListing listing = session.Ops().ListFolder(session.Link(), folder.utf8);
  if (listing.error != result::kOk) {
    return RemovalAnswer(listing.error);
  }
  const int code = RemoveFiles(session, listing.entries, folder.utf8);
  if (code != result::kOk) {
    return RemovalAnswer(code);
  }
  return RemovalAnswer(session.Ops().RemoveFolder(session.Link(), folder.utf8));
}

}  // namespace updown
