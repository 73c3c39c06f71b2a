#include <QAbstractItemView>
#include <QApplication>
#include <QContextMenuEvent>

#include "demo/legs.h"
#include "demo/walk_package.h"
#include "packages/attachment_model.h"
#include "resources/qt/texts.h"
#include "resources/texts.h"
#include "transfers/transfer_row.h"

namespace updown::demo {

namespace {

constexpr int kListStatusColumn = 4;
const QString kSubject = QString::fromLatin1(kWalkSubject);

}  // namespace

void AwaitFullList(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* list = walker.FindView(QStringLiteral("packageList"));
  walker.Await(QStringLiteral("packages are listed"), [&] { return walker.Rows(list) > 1; });
  walker.Await(QStringLiteral("header texts have arrived"),
               [&] { return walker.RowOf(list, kSubjectColumn, kSubject) >= 0; });
  walker.Step(QStringLiteral("%1 packages are listed, header texts arrived by themselves")
                  .arg(walker.Rows(list)));
}

void SelectWalkPackage(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* list = walker.FindView(QStringLiteral("packageList"));
  QAbstractItemView* attachments = walker.FindView(QStringLiteral("attachmentList"));
  const int row = walker.RowOf(list, kSubjectColumn, kSubject);
  const int other = row == 0 ? 1 : 0;
  walker.Click(list, walker.Cell(list, other, 0));
  walker.Click(list, walker.Cell(list, row, 0));
  // The second header file may still be under way.
  walker.Await(QStringLiteral("the package is Completed, with its attachments"), [&] {
    return walker.CellText(list, row, kListStatusColumn) == Text(StringId::Completed) &&
           attachments->isVisible() && walker.Rows(attachments) == kWalkAttachments;
  });
  walker.Step(QStringLiteral("the package shows its header, notes and %1 attachments")
                  .arg(kWalkAttachments));
}

int AttachmentRow(LegContext& context, const QString& name) {
  QAbstractItemView* attachments = context.walker.FindView(QStringLiteral("attachmentList"));
  const int row = context.walker.RowOf(attachments, 0, name);
  context.walker.Expect(name + QStringLiteral(" is among the attachments"), row >= 0);
  return row;
}

void AskForMenu(QAbstractItemView* list) {
  list->setFocus();
  const QPoint at = list->visualRect(list->currentIndex()).center();
  QContextMenuEvent event(QContextMenuEvent::Keyboard, at, list->viewport()->mapToGlobal(at));
  QApplication::sendEvent(list, &event);
}

int StatusRow(LegContext& context, const QString& name) {
  QAbstractItemView* transfers = context.walker.FindView(QStringLiteral("transferList"));
  for (int row = 0; row < context.walker.Rows(transfers); ++row) {
    const QString from =
        context.walker.CellText(transfers, row, static_cast<int>(TransferColumn::From));
    if (context.walker.CellText(transfers, row, 0) == name || from.endsWith(u'/' + name)) {
      return row;
    }
  }
  return -1;
}

void SaveAttachment(LegContext& context, const QString& name, const QString& path) {
  Walker& walker = context.walker;
  QAbstractItemView* attachments = walker.FindView(QStringLiteral("attachmentList"));
  const int row = AttachmentRow(context, name);
  const QModelIndex link = walker.Cell(attachments, row, attachment_column::kSave);
  walker.Answer([&] { walker.Click(attachments, link); },
                [&](QWidget* dialog) { walker.SaveAs(dialog, path); });
  walker.Await(name + QStringLiteral(" has a row in the status window"),
               [&] { return StatusRow(context, name) >= 0; });
}

const std::map<QString, Leg>& Legs() {
  static const std::map<QString, Leg> legs = {
      {QStringLiteral("empty"), EmptyLeg},
      {QStringLiteral("browse"), BrowseLeg},
      {QStringLiteral("save"), SaveLeg},
      {QStringLiteral("resume"), ResumeLeg},
      {QStringLiteral("steer"), SteerLeg},
      {QStringLiteral("steer-again"), SteerAgainLeg},
      {QStringLiteral("stored"), StoredLeg},
      {QStringLiteral("limit"), LimitLeg},
      {QStringLiteral("login"), LoginLeg},
      {QStringLiteral("keyboard"), KeyboardLeg},
      {QStringLiteral("save-all"), SaveAllLeg},
      {QStringLiteral("several"), SeveralLeg},
      {QStringLiteral("arrange"), ArrangeLeg},
      {QStringLiteral("arranged"), ArrangedLeg},
      {QStringLiteral("plain"), PlainLeg},
      {QStringLiteral("double"), DoubleLeg},
      {QStringLiteral("dark"), DarkLeg},
      {QStringLiteral("large"), LargeLeg},
      {QStringLiteral("right-to-left"), RightToLeftLeg},
      {QStringLiteral("other-style"), OtherStyleLeg},
  };
  return legs;
}

}  // namespace updown::demo
