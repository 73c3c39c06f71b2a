#pragma once

#include <QRect>
#include <cstdint>

#include "engine/transfer_task.h"

namespace updown {

// The arithmetic behind CListCtrlEx, without a window.

// What a row's progress cell shows is decided from this.
struct ProgressFacts {
  std::uint32_t totalBytes = 0;
  std::uint32_t doneBytes = 0;
  TransferState state = TransferState::Queued;
  bool hasChild = false;  // a folder task
  bool sampled = false;   // the rate has been measured since the row was made
};

struct ProgressCell {
  enum class Kind {
    Text,          // the text that the row's owner has set
    NotAvailable,  // the text "N/A"
    WaitingBar,
    PercentBar,
  };
  Kind kind = Kind::Text;
  float percent = 0;
};

ProgressFacts FactsOf(const TransferTask& task);  // of a task with a record
ProgressCell ChooseProgressCell(const ProgressFacts& facts);

// The bar over a cell: a quarter of the row's height is left free above and below, and given back
// by 2 pixels on each side.
QRect BarRect(const QRect& cell);

}  // namespace updown
