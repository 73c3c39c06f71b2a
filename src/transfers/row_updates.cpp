#include "transfers/row_updates.h"

#include "platform/qt/text.h"
#include "resources/strings.h"
#include "transfers/rate_statistics.h"
#include "transfers/transfer_texts.h"
#include "widgets/boxes.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

QString NotAvailable() { return QStringLiteral("N/A"); }

QString TextOfNumber(std::uint32_t id) {
  const std::u16string_view text = LoadText(id);
  return text.empty() ? Text(StringId::UnknownError, u"Unknown error.") : ToQString(text);
}

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
  texts[2] = FromUtf8(FormatKiloBytes(task->Bytes()));
  const RowImage first = upload ? RowImage::WaitingUpload : RowImage::WaitingDownload;
  model_.Append(task, std::move(texts), ImageOfState(record.state, record.direction, first));
  if (record.state == TransferState::Failed && record.resultCode != 0) {
    ShowCode(model_.RowOfTask(task->id), *task, TransferState::Failed, record.resultCode);
  }
}

void RowUpdates::UpdateRowProgress(std::uint32_t recordId) {
  const int row = model_.RowOfRecord(recordId);
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

void RowUpdates::UpdateRowState(TaskId id, std::int64_t code) {
  const int row = model_.RowOfTask(id);
  const TaskPointer task = model_.TaskAt(row);
  if (!task) {
    return;
  }
  const TransferState state = task->record->state;
  model_.SetText(row, StatusColumn::Transferred, FromUtf8(FormatSize(task->Bytes())));
  if (ShowState(row, *task, state) && code != 0) {
    ShowCode(row, *task, state, code);
  }
  model_.Touch(row);
}

void RowUpdates::ClearProgress(int row) {
  model_.SetText(row, StatusColumn::Progress, {});
  model_.SetText(row, StatusColumn::Rate, {});
  model_.SetText(row, StatusColumn::Remaining, {});
}

// False if the update ends here: no time has passed since the last one.
bool RowUpdates::ShowState(int row, TransferTask& task, TransferState state) {
  switch (state) {
    case TransferState::Queued:
      break;
    case TransferState::Stopped:
      if (!ShowSample(row, task)) {
        return false;
      }
      break;
    case TransferState::Finished:
      model_.SetText(row, StatusColumn::Progress, Text(StringId::Completed, u"Completed"));
      model_.SetText(row, StatusColumn::Remaining, {});
      if (!ShowFinalRate(row, task)) {
        return false;
      }
      break;
    case TransferState::Failed:
      model_.SetText(row, StatusColumn::Rate, {});
      model_.SetText(row, StatusColumn::Remaining, {});
      break;
  }
  ShowImage(row, task, state);
  return true;
}

bool RowUpdates::ShowSample(int row, TransferTask& task) {
  const auto sample = TakeSample(task, ticks_.Now());
  if (!sample) {
    return false;
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
  return true;
}

bool RowUpdates::ShowFinalRate(int row, TransferTask& task) {
  const auto final = TakeFinalRate(task, ticks_.Now());
  if (!final) {
    return false;
  }
  if (final->average) {
    model_.SetText(row, StatusColumn::Rate, FromUtf8(FormatRate(*final->average)));
  } else {
    model_.SetText(row, StatusColumn::Transferred, FromUtf8(FormatKiloBytes(0)));
    model_.SetText(row, StatusColumn::Rate, NotAvailable());
  }
  return true;
}

void RowUpdates::ShowCode(int row, TransferTask& task, TransferState state, std::int64_t code) {
  const auto value = static_cast<std::uint32_t>(code < 0 ? -code : code);
  if (value != static_cast<std::uint32_t>(StringId::Processing)) {
    task.lastResult = static_cast<std::int32_t>(value);
  }
  if (state != TransferState::Stopped && state != TransferState::Finished) {
    model_.SetText(row, StatusColumn::Transferred, TextOfNumber(TextOfCode(value)));
  }
}

void RowUpdates::ShowImage(int row, const TransferTask& task, TransferState state) {
  model_.SetImage(row, ImageOfState(state, task.record->direction, model_.ImageAt(row)));
}

}  // namespace updown
