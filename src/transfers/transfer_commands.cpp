#include "transfers/transfer_commands.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <algorithm>
#include <utility>

#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/local_files.h"
#include "widgets/busy_pointer.h"
#include "widgets/message_boxes.h"

namespace updown {
namespace {

using Tasks = std::vector<TaskPointer>;

constexpr int kMostFolders = 5;  // that a question tells by their paths

std::vector<TaskId> IdsOf(const Tasks& tasks) {
  std::vector<TaskId> ids;
  for (const TaskPointer& task : tasks) {
    ids.push_back(task->id);
  }
  return ids;
}

QString PathOf(const TransferTask& task) { return FromUtf8(task.record->LocalPath()); }

QString FirstLine(const Tasks& tasks, StringId one, StringId many) {
  return tasks.size() == 1
             ? Text(one).arg(
                   PathOf(*tasks.front()).section(u'/', -1, -1, QString::SectionSkipEmpty))
             : Text(many).arg(tasks.size());
}

// What goes from the disk of those that `goes` is true for.
template <typename Goes>
QStringList LossLines(const Tasks& tasks, StringId ofFiles, Goes goes) {
  QStringList lines;
  QStringList folders;
  bool files = false;
  for (const TaskPointer& task : tasks) {
    if (!goes(*task)) {
      continue;
    }
    if (task->record->isFolder != 0) {
      folders << Text(StringId::FolderGoes).arg(PathOf(*task));
    } else {
      files = true;
    }
  }
  if (files) {
    lines << Text(ofFiles);
  }
  lines << folders.mid(0, kMostFolders);
  if (folders.size() > kMostFolders) {
    lines << QStringLiteral("…");
  }
  return lines;
}

bool IsWhole(const TransferTask& task) { return task.record->state == TransferState::Finished; }

QString DeleteQuestion(const Tasks& tasks) {
  QStringList lines{FirstLine(tasks, StringId::AskDeleteOne, StringId::AskDeleteMany)};
  lines << LossLines(tasks, StringId::PartsGo,
                     [](const TransferTask& task) { return !IsWhole(task); });
  if (std::any_of(tasks.begin(), tasks.end(), [](const auto& task) { return IsWhole(*task); })) {
    lines << Text(StringId::FinishedStay);
  }
  return lines.join(u'\n');
}

QString RedoQuestion(const Tasks& tasks) {
  QStringList lines{FirstLine(tasks, StringId::AskRedoOne, StringId::AskRedoMany)};
  lines << LossLines(tasks, StringId::FilesGo, [](const TransferTask&) { return true; });
  return lines.join(u'\n');
}

void OpenEach(const Tasks& tasks, const std::function<void(const QString&)>& open) {
  for (const TaskPointer& task : tasks) {
    open(PathOf(*task));
  }
}

void CopyPaths(const Tasks& tasks) {
  QStringList paths;
  for (const TaskPointer& task : tasks) {
    paths << PathOf(*task);
  }
  QGuiApplication::clipboard()->setText(paths.join(u'\n'));
}

}  // namespace

TransferCommands::TransferCommands(TransferTasks& tasks, TransferModel& model, Desktop desktop,
                                   QWidget* owner)
    : tasks_(tasks), model_(model), desktop_(std::move(desktop)), owner_(owner) {}

EnabledCommands TransferCommands::Offered(const std::vector<TaskId>& selected) const {
  EnabledCommands offered{};
  for (const TaskId id : selected) {
    const TaskPointer task = model_.TaskOf(id);
    const EnabledCommands allowed = task ? CommandsFor(*task) : EnabledCommands{};
    for (std::size_t command = 0; command < kTransferCommands; ++command) {
      offered[command] = offered[command] || allowed[command];
    }
  }
  // The row of a task that is gone can go too.
  offered[static_cast<std::size_t>(TransferCommand::Delete)] = !selected.empty();
  return offered;
}

Tasks TransferCommands::Allowing(TransferCommand command,
                                 const std::vector<TaskId>& selected) const {
  Tasks tasks;
  for (const TaskId id : selected) {
    const TaskPointer task = model_.TaskOf(id);
    if (task && CommandsFor(*task)[static_cast<std::size_t>(command)]) {
      tasks.push_back(task);
    }
  }
  return tasks;
}

void TransferCommands::Run(TransferCommand command, const std::vector<TaskId>& selected) {
  const Tasks tasks = Allowing(command, selected);
  if (tasks.empty() && command != TransferCommand::Delete) {
    return;
  }
  switch (command) {
    case TransferCommand::Pause:
      return Pause(tasks);
    case TransferCommand::Resume:
      return Resume(tasks);
    case TransferCommand::Redo:
      return Redo(tasks);
    case TransferCommand::Delete:
      return Delete(tasks, selected);
    case TransferCommand::OpenFile:
      return OpenEach(tasks, desktop_.openFile);
    case TransferCommand::OpenFolder:
      return OpenEach(tasks, desktop_.showInFolder);
    case TransferCommand::MoveFile:
      return Move(tasks);
    case TransferCommand::CopyPath:
      return CopyPaths(tasks);
  }
}

void TransferCommands::ClearFinished() {
  const std::vector<TaskId> finished = model_.TasksIn(ShownState::Finished);
  model_.Remove(finished);
  for (const TaskId task : finished) {
    tasks_.DeleteTask(task);
  }
}

void TransferCommands::ResumeAllFailed() {
  Run(TransferCommand::Resume, model_.TasksIn(ShownState::Failed));
}

void TransferCommands::Pause(const Tasks& tasks) {
  for (const TaskPointer& task : tasks) {
    tasks_.PauseTask(task->id);
  }
  model_.ShowPaused(IdsOf(tasks));
}

// A refusal is told by a box, in which everything can go.
void TransferCommands::Resume(const Tasks& tasks) {
  const QPointer<QWidget> alive(owner_);
  std::vector<TaskId> resumed;
  for (const TaskPointer& task : tasks) {
    if (tasks_.ResumeTask(task->id)) {
      resumed.push_back(task->id);
    }
    if (!alive) {
      return;
    }
  }
  model_.ShowQueued(resumed);
}

void TransferCommands::Redo(const Tasks& tasks) {
  if (!Asked(RedoQuestion(tasks), StringId::MenuRedo)) {
    return;
  }
  const QPointer<QWidget> alive(owner_);
  std::vector<TaskId> begun;
  std::optional<StringId> refusal;
  for (const TaskPointer& task : tasks) {
    if (model_.RowOf(task->id) < 0) {
      continue;
    }
    refusal = RefusalOfRedo(*task);
    if (refusal) {
      break;
    }
    const BusyPointer busy;
    if (tasks_.RedoTask(task->id)) {
      begun.push_back(task->id);
    }
    if (!alive) {
      return;
    }
  }
  model_.ShowQueued(begun);
  if (refusal) {
    ShowNotice(owner_, *refusal);
  }
}

// A finished one counts among the unfinished from then on.
std::optional<StringId> TransferCommands::RefusalOfRedo(const TransferTask& task) const {
  if (IsWhole(task) && tasks_.StreamLimitReached()) {
    return StringId::StreamLimit;
  }
  if (IsWhole(task) && tasks_.IsTargetInUse(task.record->LocalPath())) {
    return StringId::DuplicateTask;
  }
  return std::nullopt;
}

void TransferCommands::Delete(const Tasks& tasks, const std::vector<TaskId>& rows) {
  if (!tasks.empty() && !Asked(DeleteQuestion(tasks), StringId::MenuStatusDelete)) {
    return;
  }
  const BusyPointer busy;
  model_.Remove(rows);
  for (const TaskPointer& task : tasks) {
    tasks_.DeleteTask(task->id);
  }
}

void TransferCommands::Move(const Tasks& tasks) {
  const QPointer<QWidget> alive(owner_);
  const QString folder = desktop_.askFolder(owner_, Text(StringId::MoveFile));
  if (!alive || folder.isEmpty()) {
    return;
  }
  for (const TaskPointer& task : tasks) {
    const MoveEnd end = MoveOne(*task, ToUtf8(folder));
    if (!alive || end == MoveEnd::Cancelled) {
      return;
    }
  }
}

// What another transfer is to write is not put where that will write.
MoveEnd TransferCommands::MoveOne(const TransferTask& task, const std::string& folder) {
  const std::string path = task.record->LocalPath();
  const auto target = MoveTarget(path, folder);
  if (!target || model_.RowOf(task.id) < 0) {
    return MoveEnd::Left;
  }
  if (tasks_.IsTargetInUse(*target)) {
    ShowNotice(owner_, StringId::DuplicateTask);
    return MoveEnd::Left;
  }
  const QPointer<QWidget> alive(owner_);
  const MoveEnd end = MoveInBox(owner_, path, *target);
  if (alive && end == MoveEnd::Moved) {
    tasks_.MoveTask(task.id, *target);
    model_.ShowPaths(task.id);
  }
  return end;
}

// False also if the window, and this object with it, went while the question stood.
bool TransferCommands::Asked(const QString& question, StringId verb) {
  const QPointer<QWidget> alive(owner_);
  return Confirm(owner_, question, Text(verb)) && alive;
}

}  // namespace updown
