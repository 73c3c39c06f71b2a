#pragma once

#include <QModelIndex>
#include <QString>

namespace updown {

// What a list tells a screen reader about a cell, beyond what its model holds.
class AccessibleCells {
 public:
  virtual ~AccessibleCells() = default;

  // What the model gives as AccessibleTextRole or, without that, what the cell shows.
  virtual QString CellText(const QModelIndex& index) const;
  virtual QString CellHelp(const QModelIndex& index) const;
  // A link can be pressed.
  virtual bool IsLinkCell(const QModelIndex& index) const;
  virtual void PressCell(const QModelIndex& index);
};

// Makes the windows of this layer known to the accessibility bus, once for the process. Each of
// their constructors calls it.
void InstallAccessibleFactory();

}  // namespace updown
