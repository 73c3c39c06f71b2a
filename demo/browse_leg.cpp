#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>
#include <algorithm>

#include "demo/legs.h"
#include "demo/walk_package.h"
#include "packages/attachment_model.h"
#include "resources/qt/texts.h"
#include "widgets/link_delegate.h"

namespace updown::demo {

namespace {

constexpr int kFromColumn = 1;
constexpr int kStatusColumn = 4;
const QString kList = QStringLiteral("packageList");
const QString kAttachments = QStringLiteral("attachmentList");

QStringList Column(Walker& walker, QAbstractItemView* list, int column) {
  QStringList texts;
  for (int row = 0; row < walker.Rows(list); ++row) {
    texts.append(walker.CellText(list, row, column));
  }
  return texts;
}

bool InOrder(const QStringList& texts, bool ascending) {
  return std::is_sorted(texts.begin(), texts.end(), [&](const QString& a, const QString& b) {
    return ascending ? a.compare(b, Qt::CaseInsensitive) < 0
                     : b.compare(a, Qt::CaseInsensitive) < 0;
  });
}

void SortBothWays(Walker& walker) {
  QAbstractItemView* list = walker.FindView(kList);
  const QHeaderView* header = walker.Find<QTreeView>(kList)->header();
  for (const bool ascending : {true, false}) {
    const QPoint at(header->sectionViewportPosition(kFromColumn) + 20, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
    walker.Await(QStringLiteral("sorted"),
                 [&] { return InOrder(Column(walker, list, kFromColumn), ascending); });
    walker.Picture(ascending ? QStringLiteral("sorted-up") : QStringLiteral("sorted-down"));
  }
  walker.Step(QStringLiteral("a click on a heading sorts up, the second one down"));
}

void ShowHalfArrived(Walker& walker) {
  QAbstractItemView* list = walker.FindView(kList);
  const QStringList from = Column(walker, list, kFromColumn);
  const QStringList status = Column(walker, list, kStatusColumn);
  for (int row = 0; row < from.size(); ++row) {
    if (!from[row].isEmpty() && status[row] == Text(StringId::Incomplete)) {
      walker.Click(list, walker.Cell(list, row, 0));
      walker.Expect(QStringLiteral("a half-arrived package hides its attachments"),
                    !walker.FindView(kAttachments)->isVisible());
      walker.Picture(QStringLiteral("half-arrived-package"));
      walker.Step(QStringLiteral("a half-arrived package shows header and notes alone"));
      return;
    }
  }
  throw WalkFailure("the area has no half-arrived package");
}

void HoverAndTip(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* attachments = walker.FindView(kAttachments);
  const auto* links = qobject_cast<LinkDelegate*>(attachments->itemDelegate());
  walker.Expect(QStringLiteral("links are painted by their delegate"), links != nullptr);
  const int row = AttachmentRow(context, QStringLiteral("figures-q3.xls"));
  const QModelIndex save = walker.Cell(attachments, row, attachment_column::kSave);
  walker.MoveMouse(attachments->viewport(), links->LinkRect(save).center());
  walker.Await(QStringLiteral("the link changes under the pointer"),
               [&] { return links->HoveredLink() == save; });
  walker.Picture(QStringLiteral("link-under-pointer"));
  walker.Step(QStringLiteral("the link under the pointer has another colour, with a hand"));

  const QRect label = attachments->visualRect(walker.Cell(attachments, row, 0));
  walker.MoveMouse(attachments->viewport(), label.topLeft() + QPoint(40, label.height() / 2));
  walker.MoveMouse(attachments->viewport(), label.topLeft() + QPoint(44, label.height() / 2));
  walker.Expect(QStringLiteral("the link is left"), !links->HoveredLink().isValid());
  walker.Await(QStringLiteral("the tip shows"), [&] {
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* window) {
      return window->inherits("QTipLabel") && window->isVisible();
    });
  });
  walker.Picture(QStringLiteral("tip"));
  walker.Step(QStringLiteral("the pointer's rest on a name shows the tip"));
}

// What is typed is looked for in all columns.
void Find(Walker& walker) {
  QAbstractItemView* list = walker.FindView(kList);
  const int all = walker.Rows(list);
  walker.Key(list, Qt::Key_F, Qt::ControlModifier);
  walker.Await(QStringLiteral("the line has the focus"),
               [&] { return walker.Find(QStringLiteral("findLine"))->hasFocus(); });
  walker.Type(QStringLiteral("marek"));
  walker.Await(QStringLiteral("one package is left"), [&] { return walker.Rows(list) == 1; });
  walker.Picture(QStringLiteral("found"));
  walker.Type(Qt::Key_Escape);
  walker.Await(QStringLiteral("Escape shows all again"), [&] {
    return walker.Rows(list) == all && !walker.Find(QStringLiteral("findLine"))->isVisible();
  });
  walker.Step(QStringLiteral("Ctrl+F filters the list as one types, Escape ends it"));
}

void HelpAndAbout(Walker& walker, QWidget* window) {
  walker.Key(window, Qt::Key_F1);
  QWidget* help = nullptr;
  walker.Await(QStringLiteral("F1 opens the help page"), [&] {
    help = walker.Find(QStringLiteral("helpWindow"));
    return help->isVisible();
  });
  walker.Picture(QStringLiteral("help"));
  auto* about = walker.Find<QAbstractButton>(QStringLiteral("helpAbout"));
  walker.Answer([&] { QTest::mouseClick(about, Qt::LeftButton); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("about"));
                  walker.PressButton(box, Text(StringId::Ok));
                });
  walker.Key(help, Qt::Key_Escape);
  walker.Await(QStringLiteral("Escape closes it"), [&] { return !help->isVisible(); });
  walker.Step(QStringLiteral("F1 shows the help page, and the about box from there"));
}

// A row whose second header file arrived behind the first tells so from the next listing on.
void Refresh(Walker& walker) {
  QAbstractItemView* list = walker.FindView(kList);
  const int rows = walker.Rows(list);
  const qsizetype incomplete =
      Column(walker, list, kStatusColumn).count(Text(StringId::Incomplete));
  walker.Key(list, Qt::Key_F5);
  walker.Await(QStringLiteral("F5 lists again"), [&] {
    return walker.Rows(list) == rows &&
           Column(walker, list, kStatusColumn).count(Text(StringId::Incomplete)) <= incomplete;
  });
  walker.Step(QStringLiteral("F5 refreshes the list"));
}

QModelIndex TreeItem(const QTreeView* tree, int package) {
  return tree->model()->index(package, 0, tree->model()->index(0, 0));
}

void RefuseRename(Walker& walker) {
  auto* tree = walker.Find<QTreeView>(QStringLiteral("packageTree"));
  const QPersistentModelIndex item = TreeItem(tree, 0);
  walker.Expect(QStringLiteral("the tree has packages"), item.isValid());
  const QString before = item.data().toString();
  // The name of another package: the service does not put one over the other.
  const QString taken = TreeItem(tree, 1).data().toString();
  walker.Click(tree, item);
  walker.Answer(
      [&] {
        tree->setFocus();
        tree->edit(item);
        auto* editor = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        if (editor == nullptr) {
          throw WalkFailure("the label is not edited in place");
        }
        editor->selectAll();
        QTest::keyClicks(editor, taken);
        QTest::keyClick(editor, Qt::Key_Return);
      },
      [&](QWidget* box) {
        walker.Picture(QStringLiteral("rename-refused"));
        walker.PressButton(box, Text(StringId::Ok));
      });
  walker.Expect(QStringLiteral("the label is the old one"), item.data().toString() == before);
  walker.Step(QStringLiteral("a rename that the service refuses says so and changes nothing"));
}

void DeletePackage(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* list = walker.FindView(kList);
  const int before = walker.Rows(list);
  const auto* tree = walker.Find<QTreeView>(QStringLiteral("packageTree"));
  const auto names = [&] {
    QStringList all;
    for (int i = 0; i < tree->model()->rowCount(tree->model()->index(0, 0)); ++i) {
      all.append(TreeItem(tree, i).data().toString());
    }
    return all;
  };
  QStringList gone = names();
  const QString subject = QString::fromLatin1(kWalkSubject);
  const int row = walker.CellText(list, 0, 3) == subject ? 1 : 0;
  walker.Click(list, walker.Cell(list, row, 0));
  const QString choice = QStringLiteral("deletePackage");
  walker.Answer([&] { walker.Choose([&] { AskForMenu(list); }, choice); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("deletion-asked"));
                  walker.PressButton(box, Text(StringId::Cancel));
                });
  walker.Expect(QStringLiteral("Cancel deletes nothing"), walker.Rows(list) == before);
  walker.Answer([&] { walker.Choose([&] { AskForMenu(list); }, choice); },
                [&](QWidget* box) { walker.PressButton(box, Text(StringId::MenuPackageDelete)); });
  walker.Await(QStringLiteral("the row is gone"), [&] { return walker.Rows(list) == before - 1; });
  const QStringList left = names();
  for (const QString& name : left) {
    gone.removeAll(name);
  }
  walker.Expect(QStringLiteral("one item is gone from the tree"), gone.size() == 1);
  context.ask({QStringLiteral("gone"), u'/' + gone[0]});
  walker.Step(QStringLiteral("a package is deleted after OK, not after Cancel"));
}

void DeleteAttachment(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* attachments = walker.FindView(kAttachments);
  const QString name = QStringLiteral("minutes.doc");
  walker.Click(attachments, walker.Cell(attachments, AttachmentRow(context, name), 0));
  walker.Answer(
      [&] { walker.Choose([&] { AskForMenu(attachments); }, QStringLiteral("deleteFiles")); },
      [&](QWidget* box) { walker.PressButton(box, Text(StringId::MenuPackageDelete)); });
  walker.Await(QStringLiteral("the attachment's row is gone"),
               [&] { return walker.RowOf(attachments, 0, name) < 0; });
  context.ask({QStringLiteral("gone"), u'/' + QString::fromLatin1(kWalkPackage) + u'/' + name});
  walker.Step(QStringLiteral("an attachment is deleted on the service"));
}

void OpenTree(Walker& walker, QWidget* frame) {
  auto* tree = walker.Find(QStringLiteral("packageTree"));
  // The bar stands at the window's left edge until somebody drags it.
  QWidget* bar = frame->childAt(2, frame->height() / 2);
  QTest::mousePress(bar, Qt::LeftButton, {}, QPoint(1, 50));
  QTest::mouseMove(bar, QPoint(120, 50));
  QTest::mouseMove(bar, QPoint(180, 50));
  QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(180, 50));
  walker.Await(QStringLiteral("the tree is dragged open"), [&] { return tree->width() > 80; });
  walker.Picture(QStringLiteral("tree-open"));
  walker.Step(QStringLiteral("the bar at the left drags the tree open"));
}

}  // namespace

void EmptyLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  walker.Rest(600);
  walker.Expect(QStringLiteral("no rows"), walker.Rows(walker.FindView(kList)) == 0);
  walker.Picture(QStringLiteral("empty-area"));
  walker.Step(QStringLiteral("an area without packages shows the hint"));
  context.close();
}

void BrowseLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  walker.Picture(QStringLiteral("full-list"));
  SelectWalkPackage(context);
  walker.Picture(QStringLiteral("complete-package"));
  HoverAndTip(context);
  Find(walker);
  Refresh(walker);
  ShowHalfArrived(walker);
  SortBothWays(walker);

  QWidget* frame = walker.Find(QStringLiteral("mainWindow"));
  OpenTree(walker, frame);
  RefuseRename(walker);
  DeletePackage(context);
  SelectWalkPackage(context);
  DeleteAttachment(context);

  HelpAndAbout(walker, frame);
  context.close();
}

}  // namespace updown::demo
