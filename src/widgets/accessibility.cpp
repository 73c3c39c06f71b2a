#include "widgets/accessibility.h"

#include <QAccessibleWidget>
#include <QSplitter>

#include "widgets/accessible_rows.h"
#include "widgets/item_view.h"
#include "widgets/notice_bar.h"

namespace updown {
namespace {

QString NameOf(QWidget* widget) {
  QAccessibleInterface* shown = QAccessible::queryAccessibleInterface(widget);
  return shown != nullptr ? shown->text(QAccessible::Name) : QString();
}

class AccessibleHandle : public QAccessibleWidget {
 public:
  explicit AccessibleHandle(QSplitterHandle* handle)
      : QAccessibleWidget(handle, QAccessible::Separator), handle_(handle) {}

  QString text(QAccessible::Text kind) const override {
    const QSplitter* splitter = handle_->splitter();
    for (int number = 1; number < splitter->count(); ++number) {
      if (kind == QAccessible::Name && splitter->handle(number) == handle_) {
        return NameOf(splitter->widget(number - 1)) + u" | "_qs + NameOf(splitter->widget(number));
      }
    }
    return QAccessibleWidget::text(kind);
  }

 private:
  QSplitterHandle* handle_;
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object) {
  if (auto* handle = qobject_cast<QSplitterHandle*>(object)) {
    return new AccessibleHandle(handle);
  }
  if (auto* notice = qobject_cast<NoticeBar*>(object)) {
    return new QAccessibleWidget(notice, QAccessible::Notification);
  }
  auto* view = qobject_cast<ItemView*>(object);
  return view != nullptr ? MakeAccessibleRows(view) : nullptr;
}

}  // namespace

void InstallAccessibility() { QAccessible::installFactory(&MakeInterface); }

}  // namespace updown
