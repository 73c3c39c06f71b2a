#include <QAccessible>
#include <QAccessibleWidget>

#include "widgets/accessible.h"
#include "widgets/accessible_rows.h"
#include "widgets/progress_painter.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

class AccessibleProgress : public QAccessibleWidget, public QAccessibleValueInterface {
 public:
  explicit AccessibleProgress(CProgressPainter* bar)
      : QAccessibleWidget(bar, QAccessible::ProgressBar), bar_(bar) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    return type == QAccessible::ValueInterface ? static_cast<QAccessibleValueInterface*>(this)
                                               : QAccessibleWidget::interface_cast(type);
  }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? bar_->Text() : QAccessibleWidget::text(kind);
  }
  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.busy = bar_->Waiting();
    return state;
  }
  // A bar that waits blinks between 0 and 100, which is no progress.
  QVariant currentValue() const override { return bar_->Waiting() ? 0.0F : bar_->Percent(); }
  void setCurrentValue(const QVariant& value) override { Q_UNUSED(value); }
  QVariant maximumValue() const override { return 100; }
  QVariant minimumValue() const override { return 0; }
  QVariant minimumStepSize() const override { return {}; }

 private:
  CProgressPainter* bar_;
};

QAccessibleInterface* MakeAccessible(const QString& className, QObject* object) {
  Q_UNUSED(className);
  if (auto* bar = qobject_cast<CProgressPainter*>(object)) {
    return new AccessibleProgress(bar);
  }
  if (auto* list = qobject_cast<RowListView*>(object)) {
    return MakeAccessibleRows(list);
  }
  return nullptr;
}

}  // namespace

void InstallAccessibleFactory() {
  static const bool installed = [] {
    QAccessible::installFactory(&MakeAccessible);
    return true;
  }();
  Q_UNUSED(installed);
}

}  // namespace updown
