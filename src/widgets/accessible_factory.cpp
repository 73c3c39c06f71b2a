#include <QAccessible>

#include "widgets/accessible.h"
#include "widgets/accessible_rows.h"
#include "widgets/row_list_view.h"

namespace updown {
namespace {

QAccessibleInterface* MakeAccessible(const QString& className, QObject* object) {
  Q_UNUSED(className);
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
