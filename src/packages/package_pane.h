#pragma once

#include <QLineEdit>
#include <QWidget>

#include "packages/package_list.h"

namespace updown {

// The upper right pane: the list of packages, and above it, once it is wanted, a line whose text
// filters the list. Escape closes the line, and all packages show again.
class PackagePane : public QWidget {
  Q_OBJECT

 public:
  // Both references outlive the pane; `service` as the user knows it.
  PackagePane(PackageArea& area, PackageCommands& commands, const QString& service,
              QWidget* parent = nullptr);

  PackageList& List() { return *list_; }
  void Find();  // opens the line

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void CloseLine();

  QLineEdit* line_;
  PackageList* list_;
};

}  // namespace updown
