#include "widgets/list_layout.h"

namespace updown {

ProgressFacts FactsOf(const TransferTask& task) {
  const TransferRecord& record = *task.record;
  return {record.totalBytes.load(), record.doneBytes.load(), record.state.load(),
          task.childRecord != nullptr,
          record.statistics.lastSampleTick != record.statistics.startTick};
}

ProgressCell ChooseProgressCell(const ProgressFacts& facts) {
  using Kind = ProgressCell::Kind;
  if (facts.state == TransferState::Finished || facts.state == TransferState::Failed) {
    return {Kind::Text};
  }
  if (facts.totalBytes == 0) {
    if (!facts.sampled && facts.state == TransferState::Queued) {
      return {Kind::WaitingBar};
    }
    return {facts.hasChild || facts.state == TransferState::Stopped ? Kind::NotAvailable
                                                                    : Kind::Text};
  }
  if (facts.hasChild) {
    return {Kind::NotAvailable};
  }
  constexpr float kKilobyte = 1.0F / 1024;
  return {Kind::PercentBar, static_cast<float>(facts.doneBytes) * kKilobyte * 100 /
                                (static_cast<float>(facts.totalBytes) * kKilobyte)};
}

QRect BarRect(const QRect& cell) {
  constexpr int kGivenBack = 2;
  const int margin = cell.height() / 4;
  return cell.adjusted(0, margin - kGivenBack, 0, kGivenBack - margin);
}

}  // namespace updown
