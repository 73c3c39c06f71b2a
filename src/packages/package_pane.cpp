#include "packages/package_pane.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include "resources/qt/texts.h"

namespace updown {

PackagePane::PackagePane(PackageArea& area, PackageCommands& commands, const QString& service,
                         QWidget* parent)
    : QWidget(parent), line_(new QLineEdit), list_(new PackageList(area, commands, service)) {
  setObjectName(u"packagePane"_qs);
  setAccessibleName(Text(StringId::PackageListName));
  line_->setObjectName(u"findLine"_qs);
  line_->setAccessibleName(Text(StringId::FindPlaceholder));
  line_->setPlaceholderText(line_->accessibleName());
  line_->setClearButtonEnabled(true);
  line_->hide();
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins({});
  column->setSpacing(0);
  column->addWidget(line_);
  column->addWidget(list_, 1);
  setFocusProxy(list_);
  connect(line_, &QLineEdit::textChanged, list_, &PackageList::SetFilter);
  connect(line_, &QLineEdit::returnPressed, list_, [this] { list_->setFocus(); });
}

void PackagePane::Find() {
  line_->show();
  line_->setFocus(Qt::ShortcutFocusReason);
  line_->selectAll();
}

void PackagePane::CloseLine() {
  if (line_->hasFocus()) {
    list_->setFocus();
  }
  line_->clear();
  line_->hide();
}

// Before the window's shortcuts: there Escape cancels requests.
bool PackagePane::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && !line_->isHidden() &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    event->accept();
    return true;
  }
  return QWidget::event(event);
}

// What line and list leave over.
void PackagePane::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && !line_->isHidden()) {
    CloseLine();
  } else if (event->key() == Qt::Key_Down && line_->hasFocus()) {
    list_->setFocus();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace updown
