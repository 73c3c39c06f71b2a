#pragma once

#include <QModelIndex>
#include <QString>

namespace updown {

// What a list tells a screen reader about a cell, beyond what its model holds.
class AccessibleCells {
 public:
  virtual ~AccessibleCells() = default;

  virtual QString CellText(const QModelIndex& index) const { return index.data().toString(); }
  virtual QString CellHelp(const QModelIndex& index) const;
  // A link can be pressed.
  virtual bool IsLinkCell(const QModelIndex& index) const;
  virtual void PressCell(const QModelIndex& index);
};

// Makes the windows of this layer known to the accessibility bus, once for the process. Each of
// their constructors calls it.
void InstallAccessibleFactory();

}  // namespace updown
