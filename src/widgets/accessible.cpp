#include "widgets/accessible.h"

namespace updown {

QString AccessibleCells::CellText(const QModelIndex& index) const {
  const QVariant spoken = index.data(Qt::AccessibleTextRole);
  return (spoken.isValid() ? spoken : index.data()).toString();
}

QString AccessibleCells::CellHelp(const QModelIndex& index) const {
  Q_UNUSED(index);
  return {};
}

bool AccessibleCells::IsLinkCell(const QModelIndex& index) const {
  Q_UNUSED(index);
  return false;
}

void AccessibleCells::PressCell(const QModelIndex& index) { Q_UNUSED(index); }

}  // namespace updown
