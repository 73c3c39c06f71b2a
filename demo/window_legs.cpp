#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QHeaderView>
#include <QSplitter>
#include <QTreeView>

#include "demo/legs.h"
#include "demo/walk_package.h"
#include "resources/qt/texts.h"

namespace updown::demo {

namespace {

constexpr int kMostTabs = 20;
constexpr int kFromColumn = 1;
constexpr QSize kArranged(1100, 640);
const QString kSmall = QStringLiteral("agenda.txt");
const QString kTree = QStringLiteral("packageTree");
const QString kList = QStringLiteral("packageList");
const QString kMain = QStringLiteral("mainWindow");
const QString kTransfers = QStringLiteral("transferStatus");

void TabTo(Walker& walker, const QString& name) {
  for (int i = 0; i < kMostTabs; ++i) {
    if (const QWidget* focus = QApplication::focusWidget();
        focus != nullptr && focus->objectName() == name) {
      return;
    }
    walker.Type(Qt::Key_Tab);
  }
  throw WalkFailure("Tab does not lead to " + name.toStdString());
}

void DownTo(Walker& walker, const QAbstractItemView* view, int row) {
  walker.Type(Qt::Key_Home);
  for (int i = 0; i < row; ++i) {
    walker.Type(Qt::Key_Down);
  }
  walker.Expect(QStringLiteral("the arrow keys lead to row %1").arg(row),
                view->currentIndex().row() == row);
}

bool Bold(const QAbstractItemView* list, int row) {
  return Walker::Cell(list, row, 0).data(Qt::FontRole).value<QFont>().bold();
}

int BoldRows(const QAbstractItemView* list) {
  int bold = 0;
  for (int row = 0; row < Walker::Rows(list); ++row) {
    bold += Bold(list, row) ? 1 : 0;
  }
  return bold;
}

}  // namespace

void KeyboardLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  QAbstractItemView* list = walker.FindView(kList);
  walker.Await(QStringLiteral("the list has the focus"), [&] { return list->hasFocus(); });
  DownTo(walker, list, walker.RowOf(list, kSubjectColumn, QString::fromLatin1(kWalkSubject)));
  QAbstractItemView* attachments = walker.FindView(QStringLiteral("attachmentList"));
  walker.Await(QStringLiteral("the files show"), [&] {
    return attachments->isVisible() && walker.Rows(attachments) == kWalkAttachments;
  });
  TabTo(walker, QStringLiteral("attachmentList"));
  DownTo(walker, attachments, AttachmentRow(context, kSmall));
  walker.Picture(QStringLiteral("focus-on-a-file"));
  const QString target = context.received + QStringLiteral("/by-keyboard.txt");
  walker.Answer([&] { walker.Type(Qt::Key_Return); },
                [&](QWidget*) {
                  walker.Type(Qt::Key_A, Qt::ControlModifier);
                  walker.Type(target);
                  walker.Type(Qt::Key_Return);
                });
  AwaitFinished(context, QStringLiteral("by-keyboard.txt"));
  context.ask({QStringLiteral("compare"), u'/' + QString::fromLatin1(kWalkPackage) + u'/' + kSmall,
               target});
  const QWidget* transfers = walker.Find(kTransfers);
  for (const auto& [key, modifier] :
       {std::pair(Qt::Key_Escape, Qt::NoModifier), std::pair(Qt::Key_W, Qt::ControlModifier)}) {
    walker.Await(QStringLiteral("the transfers are in front"),
                 [&] { return transfers->isActiveWindow(); });
    walker.Type(key, modifier);
    walker.Await(QStringLiteral("the transfers are closed"),
                 [&] { return !transfers->isVisible(); });
    // Nobody manages windows on this platform, and hands the focus on.
    walker.Key(list, Qt::Key_J, Qt::ControlModifier);
  }
  walker.Step(QStringLiteral("keys alone lead from the list to a saved file and to its transfer"));
  context.close();
}

void SaveAllLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.ask({QStringLiteral("block"), QStringLiteral("4194304")});
  QAbstractItemView* list = walker.FindView(kList);
  walker.Answer([&] { walker.Choose([&] { AskForMenu(list); }, QStringLiteral("saveAll")); },
                [&](QWidget* dialog) {
                  walker.Picture(QStringLiteral("folder-asked"));
                  walker.SaveAs(dialog, context.received);
                });
  const QString package = QString::fromLatin1(kWalkPackage);
  walker.Await(QStringLiteral("the package has a row"),
               [&] { return StatusRow(context, package) >= 0; });
  walker.Rest(500);
  walker.Picture(QStringLiteral("package-moving"));
  AwaitFinished(context, package);
  walker.Picture(QStringLiteral("package-saved"));
  for (const WalkFile& file : kWalkFiles) {
    const QString name = u'/' + package + u'/' + QString::fromLatin1(file.name);
    context.ask({QStringLiteral("compare"), name, context.received + name});
  }
  walker.Expect(
      QStringLiteral("the header files are left out"),
      QDir(context.received + u'/' + package).entryList(QDir::Files).size() == kWalkAttachments);
  walker.Step(QStringLiteral("Save All brings all files of a package into a new folder"));
  context.close();
}

// Commands for several rows, and those of empty ground.
void SeveralLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.ask({QStringLiteral("block"), QStringLiteral("4194304")});
  const QStringList names{kSmall, QStringLiteral("minutes.doc")};
  QStringList paths;
  for (const QString& name : names) {
    paths.append(context.received + u'/' + name);
    SaveAttachment(context, name, paths.last());
    AwaitFinished(context, name);
  }
  QAbstractItemView* transfers = walker.FindView(QStringLiteral("transferList"));
  walker.Key(transfers, Qt::Key_A, Qt::ControlModifier);
  walker.Type(Qt::Key_C, Qt::ControlModifier);
  walker.Expect(QStringLiteral("the paths of both are copied"),
                QGuiApplication::clipboard()->text().split(u'\n') == paths);
  const QPoint ground(transfers->viewport()->width() / 2, transfers->viewport()->height() - 4);
  const auto askGround = [&] {
    QContextMenuEvent event(QContextMenuEvent::Mouse, ground,
                            transfers->viewport()->mapToGlobal(ground));
    QApplication::sendEvent(transfers->viewport(), &event);
  };
  walker.WithMenu(askGround, [&](QMenu*) { walker.Picture(QStringLiteral("ground-menu")); });
  walker.Choose(askGround, QStringLiteral("clearFinished"));
  walker.Await(QStringLiteral("finished rows go"), [&] { return walker.Rows(transfers) == 0; });
  walker.Picture(QStringLiteral("no-transfers"));
  walker.Step(QStringLiteral("paths are copied, and finished transfers cleared"));

  QAbstractItemView* attachments = walker.FindView(QStringLiteral("attachmentList"));
  walker.Key(attachments, Qt::Key_A, Qt::ControlModifier);
  walker.Answer([&] { walker.Type(Qt::Key_Delete); },
                [&](QWidget*) {
                  walker.Picture(QStringLiteral("several-asked"));
                  walker.Type(Qt::Key_Return);
                });
  walker.Expect(QStringLiteral("Return does no harm"),
                walker.Rows(attachments) == kWalkAttachments);
  walker.Key(attachments, Qt::Key_F6);
  QAbstractItemView* tree = walker.FindView(kTree);
  walker.Await(QStringLiteral("F6 leads to the tree"), [&] { return tree->hasFocus(); });
  walker.Type(Qt::Key_Down);
  walker.WithMenu([&] { AskForMenu(tree); },
                  [&](QMenu*) { walker.Picture(QStringLiteral("tree-menu")); });
  walker.Step(QStringLiteral("several files are asked about at once, with the harmless default"));
  context.close();
}

void ArrangeLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  QAbstractItemView* list = walker.FindView(kList);
  walker.Expect(QStringLiteral("at the first start no package is new"), BoldRows(list) == 0);
  walker.Find(kMain)->resize(kArranged);
  walker.Find<QTreeView>(kList)->sortByColumn(kFromColumn, Qt::DescendingOrder);
  walker.Key(list, Qt::Key_F6);
  walker.Await(QStringLiteral("F6 opens the tree"),
               [&] { return walker.Find(kTree)->width() > 80; });
  context.close();
  context.ask({QStringLiteral("add-package")});
}

void ArrangedLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  const QHeaderView* header = walker.Find<QTreeView>(kList)->header();
  walker.Expect(QStringLiteral("the window's size is back"),
                walker.Find(kMain)->size() == kArranged);
  walker.Expect(QStringLiteral("the order is back"),
                header->sortIndicatorSection() == kFromColumn &&
                    header->sortIndicatorOrder() == Qt::DescendingOrder);
  walker.Expect(QStringLiteral("the tree is open"), walker.Find(kTree)->width() > 80);
  walker.Step(QStringLiteral("size, order and panes are as they were left"));

  QAbstractItemView* list = walker.FindView(kList);
  walker.Expect(QStringLiteral("one package is new"), BoldRows(list) == 1);
  walker.Picture(QStringLiteral("new-package"));
  for (int row = 0; row < walker.Rows(list); ++row) {
    if (Bold(list, row)) {
      walker.Click(list, walker.Cell(list, row, 0));
      break;
    }
  }
  walker.Expect(QStringLiteral("selected, it is new no more"), BoldRows(list) == 0);
  walker.Step(QStringLiteral("a package that has come stands out until it is selected"));
  context.close();
}

}  // namespace updown::demo
