#include "app/window_requests.h"

#include <utility>

#include "app/folder_requests.h"
#include "engine/result_texts.h"
#include "platform/qt/text.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

template <typename Request>
auto Ask(Request request) {
  const BusyPointer busy;
  return request();
}

}  // namespace

bool WindowRequests::OpenSession() {
  const SharedSession::Opened opened = session_.OpenSharedSession();
  if (opened.open || opened.error == 0) {
    return true;
  }
  ReportResult(opened.error);
  return false;
}

bool WindowRequests::ReopenSession() {
  session_.Close();
  return session_.OpenSharedSession().open;
}

std::optional<DirectoryList> WindowRequests::ListFolder(const std::u16string& path) {
  ListAnswer answer = Ask([&] { return RequestListing(session_, path); });
  ReportResult(answer.report);
  return std::move(answer.list);
}

int WindowRequests::RenameEntry(const std::u16string& newPath, const std::u16string& oldPath) {
  const RequestAnswer answer = Ask([&] { return RequestRename(session_, newPath, oldPath); });
  ReportResult(answer.report);
  return answer.result;
}

int WindowRequests::RemoveFile(const std::u16string& path) {
  const RequestAnswer answer = Ask([&] { return RequestRemoveFile(session_, path); });
  ReportResult(answer.report);
  return answer.result;
}

int WindowRequests::RemovePackage(const std::u16string& path) {
  const RequestAnswer answer = Ask([&] { return RequestRemovePackage(session_, path); });
  ReportResult(answer.report);
  return answer.result;
}

void WindowRequests::ReportResult(std::int64_t code) {
  if (code != 0) {
    // No caption: a blank, since an empty one would be replaced by the program's file name.
    ShowBox(owner_.isVisible() ? &owner_ : nullptr, ToQString(ResultBoxText(code)), u" "_qs,
            BoxIcon::Exclamation);
  }
}

}  // namespace updown
