#include "transfers/row_updates.h"

#include <QDateTime>
#include <QLocale>

#include "engine/result_texts.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "service/result_codes.h"
#include "transfers/rate_statistics.h"
#include "transfers/transfer_texts.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

QString NotAvailable() { return QStringLiteral("N/A"); }

}  // namespace

void RowUpdates::AddRow(const TaskPointer& task) {
  if (!task || !task->record) {
    return;
  }
  const TransferRecord& record = *task->record;
  StartStatistics(*task, ticks_.Now());
  const RecordPaths paths = record.Paths();
  TransferModel::Texts texts;
  const bool upload = record.direction == 1;
  texts[0] = FromUtf8(upload ? paths.localPath : paths.remotePath);
  texts[1] = FromUtf8(upload ? paths.remotePath : paths.localPath);
  // Until the scheduler has a session and a worker for it.
  texts[2] = record.state == TransferState::Queued ? Text(StringId::Waiting)
                                                   : FromUtf8(FormatKiloBytes(task->Bytes()));
  const RowImage first = upload ? RowImage::WaitingUpload : RowImage::WaitingDownload;
  model_.Append(task, std::move(texts), ImageOfState(record.state, record.direction, first));
  if (record.state == TransferState::Failed && record.resultCode != 0) {
    const TransferResult result{
        -static_cast<int>(record.resultCode), static_cast<int>(record.systemError), {}};
    ShowFailure(model_.RowOfTask(task->id), record.state, result, {});
  }
}

void RowUpdates::ShowPaths(TaskId id) {
  const int row = model_.RowOfTask(id);
  if (const TaskPointer task = model_.TaskAt(row)) {
    const RecordPaths paths = task->record->Paths();
    const bool upload = task->record->direction == 1;
    model_.SetText(row, upload ? StatusColumn::TargetEnd : StatusColumn::SourceEnd,
                   FromUtf8(paths.remotePath));
  }
}

void RowUpdates::ShowBlock(TaskId id) {
  const int row = model_.RowOfTask(id);
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    return;
  }
  model_.SetText(row, StatusColumn::Transferred, FromUtf8(FormatKiloBytes(task->Bytes())));
  ShowImage(row, *task, task->record->state);
  model_.SetText(row, StatusColumn::Progress, {});
  ShowSample(row, *task);
  model_.Touch(row);
}

// The state may have gone on since: a start that is told late finds it as it is.
void RowUpdates::ShowStarted(TaskId id) {
  const int row = model_.RowOfTask(id);
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    return;
  }
  const TransferState state = task->record->state;
  ShowState(row, *task, state);
  model_.SetDetails(row, {});
  ShowOutcome(row, state, Text(StringId::Processing));
  model_.Touch(row);
}

void RowUpdates::ShowEnded(TaskId id, const TransferResult& result) {
  const int row = model_.RowOfTask(id);
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    return;
  }
  const TransferState state = task->record->state;
  ShowState(row, *task, state);
  if (result.code != result::kOk) {
    ShowFailure(row, state, result,
                QLocale().toString(QDateTime::currentDateTime(), QLocale::ShortFormat));
  }
  model_.Touch(row);
}

void RowUpdates::ShowWaiting(TaskId id) {
  const int row = model_.RowOfTask(id);
  if (const TaskPointer task = model_.TaskAt(row)) {
    ShowOutcome(row, task->record->state, Text(StringId::Reconnecting));
  }
}

void RowUpdates::ShowQueued(TaskId id) {
  const int row = model_.RowOfTask(id);
  if (const TaskPointer task = model_.TaskAt(row)) {
    ShowImage(row, *task, task->record->state);
    model_.SetDetails(row, {});
    model_.Touch(row);
  }
}

void RowUpdates::ClearProgress(int row) {
  model_.SetText(row, StatusColumn::Progress, {});
  model_.SetText(row, StatusColumn::Rate, {});
  model_.SetText(row, StatusColumn::Remaining, {});
}

void RowUpdates::ShowState(int row, TransferTask& task, TransferState state) {
  model_.SetText(row, StatusColumn::Transferred, FromUtf8(FormatSize(task.Bytes())));
  switch (state) {
    case TransferState::Queued:
      break;
    case TransferState::Stopped:
      ShowSample(row, task);
      break;
    case TransferState::Finished:
      model_.SetText(row, StatusColumn::Progress, Text(StringId::Completed));
      model_.SetText(row, StatusColumn::Remaining, {});
      ShowFinalRate(row, task);
      break;
    case TransferState::Failed:
      model_.SetText(row, StatusColumn::Rate, {});
      model_.SetText(row, StatusColumn::Remaining, {});
      break;
  }
  ShowImage(row, task, state);
}

void RowUpdates::ShowSample(int row, TransferTask& task) {
  const auto sample = TakeSample(task, ticks_.Now());
  if (!sample) {
    return;
  }
  const TransferRecord& record = *task.record;
  const float rate = sample->rate.value_or(0);
  if (record.isFolder != 0) {
    model_.SetText(row, StatusColumn::Progress, NotAvailable());
    model_.SetText(row, StatusColumn::Remaining, NotAvailable());
  } else if (record.state != TransferState::Finished) {
    if (rate > 0) {
      model_.SetText(row, StatusColumn::Remaining,
                     FromUtf8(FormatRemaining(RemainingSeconds(record, rate))));
    } else if (!sample->rate) {
      model_.SetText(row, StatusColumn::Remaining, FromUtf8(FormatRemaining(0)));
    }
  }
  if (sample->rate) {
    model_.SetText(row, StatusColumn::Rate, FromUtf8(FormatRate(rate)));
  }
}

void RowUpdates::ShowFinalRate(int row, TransferTask& task) {
  const FinalRate final = TakeFinalRate(task, ticks_.Now());
  if (final.average) {
    model_.SetText(row, StatusColumn::Rate, FromUtf8(FormatRate(*final.average)));
  } else {
    model_.SetText(row, StatusColumn::Transferred, FromUtf8(FormatKiloBytes(0)));
    model_.SetText(row, StatusColumn::Rate, NotAvailable());
  }
}

void RowUpdates::ShowFailure(int row, TransferState state, const TransferResult& result,
                             const QString& time) {
  ShowOutcome(row, state, ToQString(ResultRowText(result.code, result.systemError)));
  if (state == TransferState::Failed) {
    const QString details = ToQString(ResultDetails(result));
    model_.SetDetails(row, time.isEmpty() ? details : details + u'\n' + time);
  }
}

void RowUpdates::ShowOutcome(int row, TransferState state, const QString& text) {
  if (state != TransferState::Stopped && state != TransferState::Finished) {
    model_.SetText(row, StatusColumn::Transferred, text);
  }
}

void RowUpdates::ShowImage(int row, const TransferTask& task, TransferState state) {
  model_.SetImage(row, ImageOfState(state, task.record->direction, model_.ImageAt(row)));
}

}  // namespace updown
