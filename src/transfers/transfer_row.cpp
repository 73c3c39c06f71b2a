#include "transfers/transfer_row.h"

#include <QLocale>
#include <algorithm>

#include "engine/kept_tasks.h"
#include "engine/result_texts.h"
#include "platform/qt/text.h"
#include "resources/qt/texts.h"
#include "transfers/transfer_texts.h"
#include "widgets/progress_delegate.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

ShownState QueuedState(TransferCourse course) {
  switch (course) {
    case TransferCourse::Started:
      return ShownState::Starting;
    case TransferCourse::Moving:
      return ShownState::Moving;
    case TransferCourse::Reconnecting:
      return ShownState::Reconnecting;
    case TransferCourse::None:
    case TransferCourse::QueuedAgain:
      break;
  }
  return ShownState::Waiting;
}

ShownState StateOf(TransferState state, TransferCourse course) {
  if (course == TransferCourse::QueuedAgain) {
    return ShownState::Waiting;
  }
  switch (state) {
    case TransferState::Queued:
      return QueuedState(course);
    case TransferState::Stopped:
      return ShownState::Paused;
    case TransferState::Finished:
      return ShownState::Finished;
    case TransferState::Failed:
      return ShownState::Failed;
  }
  return ShownState::Unknown;
}

QString StateText(const TransferRow& row) {
  switch (row.state) {
    case ShownState::Moving:
      return Text(StringId::Transferring);
    case ShownState::Starting:
      return Text(StringId::Processing);
    case ShownState::Reconnecting:
      return Text(StringId::Reconnecting);
    case ShownState::Waiting:
      return Text(StringId::Waiting);
    case ShownState::Paused:
      return Text(StringId::Paused);
    case ShownState::Failed: {
      const QString reason = ToQString(ResultRowText(row.result.code, row.result.systemError));
      return row.result.code == 0 ? Text(StringId::Failed)
                                  : Text(StringId::FailedReason).arg(reason);
    }
    case ShownState::Finished:
      return Text(StringId::Completed);
    case ShownState::Unknown:
      break;
  }
  return {};
}

QString AmountText(const TaskProgress& progress) {
  const std::uint64_t done = progress.doneBytes;
  QString text = FromUtf8(done == 0 ? FormatKiloBytes(0) : FormatSize(done));
  if (done < progress.totalBytes) {
    text = Text(StringId::AmountOf).arg(text, FromUtf8(FormatSize(progress.totalBytes)));
  }
  return progress.files < 2
             ? text
             : Text(StringId::FilesOf)
                   .arg(QString::number(progress.doneFiles), QString::number(progress.files), text);
}

QString RateText(const TransferRow& row) { return FromUtf8(FormatRate(row.rate.value_or(0))); }

QString ProgressText(const TransferRow& row) {
  if (const auto bar = BarOf(row)) {
    return PercentText(*bar);
  }
  const bool begun = row.state == ShownState::Moving || row.state == ShownState::Paused;
  return begun ? QStringLiteral("N/A") : QString();
}

QString StateTip(const TransferRow& row) {
  QStringList lines{row.state == ShownState::Failed && row.result.code != 0
                        ? Text(StringId::Failed) + u'\n' + ToQString(ResultDetails(row.result))
                        : StateText(row)};
  if (row.state == ShownState::Finished && row.rate) {
    lines << Text(StringId::AverageRate).arg(RateText(row));
  }
  const bool over = row.state == ShownState::Finished || row.state == ShownState::Failed;
  if (over && row.ended.isValid()) {
    lines << QLocale().toString(row.ended, QLocale::ShortFormat);
  }
  return lines.join(u'\n');
}

}  // namespace

TransferRow MakeRow(const TaskPointer& task) {
  const TransferRecord& record = *task->record;
  TransferRow row;
  row.id = task->id;
  row.task = task;
  row.upload = record.direction == 1;
  row.result = StoredFailure(record);
  ReadPaths(row, *task);
  ReadProgress(row, *task);
  return row;
}

void ReadPaths(TransferRow& row, const TransferTask& task) {
  const RecordPaths paths = task.record->Paths();
  const QString local = FromUtf8(paths.localPath);
  const QString remote = FromUtf8(paths.remotePath);
  row.from = row.upload ? local : remote;
  row.to = row.upload ? remote : local;
  row.name = local.section(u'/', -1, -1, QString::SectionSkipEmpty);
}

void ReadProgress(TransferRow& row, const TransferTask& task) {
  row.state = StateOf(task.record->state, row.course);
  row.progress = task.Progress();
  if (row.state != ShownState::Moving && row.state != ShownState::Finished) {
    row.rate.reset();
  }
}

std::optional<double> RemainingSeconds(const TransferRow& row) {
  const TaskProgress& progress = row.progress;
  if (row.state != ShownState::Moving || row.rate.value_or(0) <= 0 || progress.totalBytes == 0) {
    return std::nullopt;
  }
  const std::uint64_t left =
      progress.totalBytes - std::min(progress.doneBytes, progress.totalBytes);
  return static_cast<double>(left) / static_cast<double>(*row.rate);
}

std::optional<float> BarOf(const TransferRow& row) {
  constexpr double kWhole = 100;
  const TaskProgress& progress = row.progress;
  if (row.state == ShownState::Finished) {
    return kWhole;
  }
  if (progress.totalBytes != 0) {
    return static_cast<float>(kWhole * static_cast<double>(progress.doneBytes) /
                              static_cast<double>(progress.totalBytes));
  }
  const bool begins = row.state == ShownState::Waiting || row.state == ShownState::Starting;
  return begins && progress.doneBytes == 0 ? std::optional(kWaitingBar) : std::nullopt;
}

QString CellText(const TransferRow& row, TransferColumn column) {
  switch (column) {
    case TransferColumn::Name:
      return row.name;
    case TransferColumn::From:
      return row.from;
    case TransferColumn::To:
      return row.to;
    case TransferColumn::Transferred:
      return AmountText(row.progress);
    case TransferColumn::Progress:
      return ProgressText(row);
    case TransferColumn::Rate:
      return row.state == ShownState::Moving && row.rate ? RateText(row) : QString();
    case TransferColumn::Remaining: {
      const auto seconds = RemainingSeconds(row);
      return seconds ? FromUtf8(FormatRemaining(*seconds)) : QString();
    }
    case TransferColumn::State:
      return StateText(row);
  }
  return {};
}

QString TipText(const TransferRow& row, TransferColumn column) {
  switch (column) {
    case TransferColumn::From:
      return row.from;
    case TransferColumn::To:
      return row.to;
    case TransferColumn::State:
      return StateTip(row);
    default:
      return {};
  }
}

}  // namespace updown
