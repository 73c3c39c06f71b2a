#include "app/folder_requests.h"
#include "app/main_frame.h"
#include "engine/frame_messages.h"
#include "engine/package.h"
#include "widgets/busy_pointer.h"

namespace updown {
namespace {

const std::u16string* PathFrom(LongParam param) { return PointerFrom<const std::u16string>(param); }

// The pointer is back to normal when the answer is there, before any box comes up.
template <typename Request>
auto AskService(Request request) {
  const BusyPointer busy;
  return request();
}

}  // namespace

MessageResult CMainFrame::WindowProc(const WindowMessage& message) {
  switch (message.number) {
    case frame_message::kTaskResult:
      OnTaskResult(message);
      return 0;
    case frame_message::kTaskAdded:
      OnTaskAdded(message);
      return 0;
    case frame_message::kBlockDone:
      ForwardToStatus(frame_message::kBlockDone, message);
      return 0;
    case frame_message::kWakeScheduler:
      context_->schedulerWake.Set();
      return 0;
    case frame_message::kSaveTaskList:
      RequestSave();
      return 0;
    case frame_message::kLayOutPanes:
      inner_->refresh();
      return 0;
    case frame_message::kShowStatus:
      ShowStatus();
      return 0;
    case frame_message::kIsQueued: {
      const std::u16string* path = PathFrom(message.lParam);
      return path != nullptr && tasks_.IsDuplicate(*path, TaskStore::DuplicateScope::QueuedOnly);
    }
    case frame_message::kIsDuplicate: {
      const std::u16string* path = PathFrom(message.lParam);
      return path != nullptr && IsDuplicateUserTask(*path);
    }
    default:
      return OnFolderMessage(message);
  }
}

MessageResult CMainFrame::OnFolderMessage(const WindowMessage& message) {
  const std::u16string* path = PathFrom(message.lParam);
  RequestAnswer answer;
  switch (message.number) {
    case frame_message::kListFolder: {
      ListAnswer listing = AskService([&] { return RequestListing(session_, path); });
      ReportResult(listing.report);
      return PointerParam(listing.list.release());
    }
    case frame_message::kRemoveFile:
      answer = AskService([&] { return RequestRemoveFile(session_, path); });
      break;
    case frame_message::kRename:
      answer = AskService([&] {
        const auto* newPath = PointerFrom<const std::u16string>(message.wParam);
        return RequestRename(session_, newPath, path);
      });
      break;
    case frame_message::kRemovePackage:
      answer = AskService([&] { return RequestRemovePackage(session_, path); });
      break;
    default:
      return 0;
  }
  ReportResult(answer.report);
  return answer.result;
}

void CMainFrame::OnTaskResult(const WindowMessage& message) {
  const TaskPointer task = tasks_.Find(message.wParam);
  if (!task) {
    return;
  }
  ForwardToStatus(frame_message::kTaskState, message);
  if (!task->record) {
    return;
  }
  if (message.lParam == 0 && EndsInIni(task->record->LocalPath())) {
    list_->RefreshHeaderlessRows();
  }
  DropFailedHeader(*task->record);
}

void CMainFrame::OnTaskAdded(const WindowMessage& message) {
  if (!statusWindow_ || !tasks_.Find(message.wParam)) {
    return;
  }
  if (!statusWindow_->isVisible()) {
    statusWindow_->show();  // a window manager is not told of a hidden window's states
  }
  statusWindow_->showMinimized();
  ForwardToStatus(frame_message::kTaskAdded, message);
}

void CMainFrame::ShowStatus() {
  if (!statusWindow_) {
    return;
  }
  statusWindow_->showNormal();
  statusWindow_->raise();
  statusWindow_->activateWindow();
}

void CMainFrame::ForwardToStatus(std::uint32_t number, const WindowMessage& message) {
  if (statusWindow_) {
    PostWindowMessage(statusWindow_->Handle(), number, message.wParam, message.lParam);
  }
}

}  // namespace updown
