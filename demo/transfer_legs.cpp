#include <QAbstractItemView>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

#include "demo/legs.h"
#include "demo/walk_package.h"
#include "packages/attachment_model.h"
#include "resources/qt/texts.h"
#include "transfers/transfer_row.h"

namespace updown::demo {

namespace {

constexpr QSize kAllColumns(1210, 240);
const QString kTransfers = QStringLiteral("transferList");
const QString kBig = QStringLiteral("photos.tar.gz");
const QString kBig2 = QStringLiteral("figures-q3.xls");
const QString kPlan = QStringLiteral("floor plan.pdf");
const QString kSmall = QStringLiteral("agenda.txt");
const QString kEmpty = QStringLiteral("readme");

QString RemoteOf(const QString& name) {
  return u'/' + QString::fromLatin1(kWalkPackage) + u'/' + name;
}

QString LocalOf(const LegContext& context, const QString& name) {
  return context.received + u'/' + name;
}

QString Cell(LegContext& context, const QString& name, TransferColumn column) {
  const int row = StatusRow(context, name);
  return row < 0 ? QString()
                 : context.walker.CellText(context.walker.FindView(kTransfers), row,
                                           static_cast<int>(column));
}

// Whether the list of transfers on the disk has one of this name.
bool IsStored(const QString& name) {
  const QDir folder(qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/oxapp"));
  const QStringList lists = folder.entryList({QStringLiteral("*.lst")});
  return std::any_of(lists.begin(), lists.end(), [&](const QString& list) {
    QFile file(folder.filePath(list));
    return file.open(QIODevice::ReadOnly) && file.readAll().contains(name.toUtf8());
  });
}

bool Finished(LegContext& context, const QString& name) {
  return Cell(context, name, TransferColumn::State) == Text(StringId::Completed);
}

void AwaitMoving(LegContext& context, const QString& name) {
  context.walker.Await(name + QStringLiteral(" moves"), [&] {
    const QString moved = Cell(context, name, TransferColumn::Transferred).section(u' ', 0, 1);
    return moved.endsWith(QStringLiteral("B")) && !moved.startsWith(QStringLiteral("0 "));
  });
}

void Compare(LegContext& context, const QString& name) {
  context.ask({QStringLiteral("compare"), RemoteOf(name), LocalOf(context, name)});
}

void Command(LegContext& context, const QString& name, const QString& action) {
  QAbstractItemView* transfers = context.walker.FindView(kTransfers);
  const int row = StatusRow(context, name);
  context.walker.Expect(name + QStringLiteral(" has a row"), row >= 0);
  context.walker.Click(transfers, context.walker.Cell(transfers, row, 0));
  context.walker.Choose([&] { AskForMenu(transfers); }, action);
}

bool Offers(LegContext& context, const QString& name, const QString& action,
            const QString& picture = QString()) {
  QAbstractItemView* transfers = context.walker.FindView(kTransfers);
  bool enabled = false;
  context.walker.Click(transfers, context.walker.Cell(transfers, StatusRow(context, name), 0));
  context.walker.WithMenu([&] { AskForMenu(transfers); },
                          [&](QMenu* menu) {
                            if (!picture.isEmpty()) {
                              context.walker.Picture(picture);
                            }
                            const QList<QAction*> actions = menu->actions();
                            for (const QAction* item : actions) {
                              enabled =
                                  enabled || (item->objectName() == action && item->isEnabled());
                            }
                          });
  return enabled;
}

void SaveInto(LegContext& context, const QString& name) {
  SaveAttachment(context, name, LocalOf(context, name));
}

// A paused transfer is deleted, its partial file with it.
void DeletePaused(LegContext& context) {
  Walker& walker = context.walker;
  context.ask({QStringLiteral("block"), QStringLiteral("65536")});
  SaveInto(context, kBig);
  AwaitMoving(context, kBig);
  Command(context, kBig, QStringLiteral("pause"));
  walker.Await(QStringLiteral("Delete is offered"),
               [&] { return Offers(context, kBig, QStringLiteral("delete")); });
  walker.Answer([&] { Command(context, kBig, QStringLiteral("delete")); },
                [&](QWidget* box) { walker.PressButton(box, Text(StringId::MenuStatusDelete)); });
  walker.Await(QStringLiteral("the row is gone"), [&] { return StatusRow(context, kBig) < 0; });
  walker.Await(QStringLiteral("the partial file is gone"),
               [&] { return !QFileInfo::exists(LocalOf(context, kBig)); });
  walker.Step(QStringLiteral("Delete takes the row and the partial file away"));
}

}  // namespace

void AwaitFinished(LegContext& context, const QString& name) {
  context.walker.Await(
      name + QStringLiteral(" is Completed"), [&] { return Finished(context, name); }, 40000);
}

void SaveLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  SelectWalkPackage(context);
  SaveInto(context, kBig);
  SaveInto(context, kBig2);
  AwaitMoving(context, kBig);
  AwaitMoving(context, kBig2);
  walker.Rest(1200);  // the second block tells the rate
  QWidget* main = walker.Find(QStringLiteral("mainWindow"));
  main->hide();
  walker.Find(QStringLiteral("transferStatus"))->resize(kAllColumns);
  walker.Picture(QStringLiteral("status-moving"));
  main->show();
  walker.Step(QStringLiteral("two attachments are under way, the status window shows them move"));
  context.close();
  const qint64 arrived = QFileInfo(LocalOf(context, kBig)).size();
  walker.Expect(QStringLiteral("closed in mid-transfer"), arrived > 0 && arrived < 2400000);
  walker.Step(QStringLiteral("closed in mid-transfer, with %1 bytes of %2").arg(arrived).arg(kBig));
}

void ResumeLeg(LegContext& context) {
  const qint64 before = QFileInfo(LocalOf(context, kBig)).size();
  context.start();
  Walker& walker = context.walker;
  walker.Await(QStringLiteral("the transfers come back"),
               [&] { return StatusRow(context, kBig) >= 0 && StatusRow(context, kBig2) >= 0; });
  walker.Expect(QStringLiteral("the file was not begun anew"),
                QFileInfo(LocalOf(context, kBig)).size() >= before);
  AwaitFinished(context, kBig);
  AwaitFinished(context, kBig2);
  walker.Find(QStringLiteral("transferStatus"))->showNormal();
  walker.Picture(QStringLiteral("status-completed"));
  walker.Step(QStringLiteral("started anew, both transfers went on and are Completed"));
  Compare(context, kBig);
  Compare(context, kBig2);
  context.close();
}

void SteerLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.ask({QStringLiteral("block"), QStringLiteral("131072")});

  SaveInto(context, kSmall);
  AwaitFinished(context, kSmall);
  Compare(context, kSmall);
  SaveInto(context, kEmpty);
  AwaitFinished(context, kEmpty);
  walker.Expect(QStringLiteral("an empty file arrives"),
                QFileInfo::exists(LocalOf(context, kEmpty)));
  walker.Step(QStringLiteral("an attachment of 0 bytes arrives as an empty file"));

  SaveInto(context, kPlan);
  AwaitMoving(context, kPlan);
  Command(context, kPlan, QStringLiteral("pause"));
  walker.Await(QStringLiteral("the worker has ended"),
               [&] { return Offers(context, kPlan, QStringLiteral("resume")); });
  const qint64 paused = QFileInfo(LocalOf(context, kPlan)).size();
  walker.Rest(1500);
  walker.Expect(QStringLiteral("a paused transfer stands still"),
                QFileInfo(LocalOf(context, kPlan)).size() == paused);
  walker.Expect(QStringLiteral("Pause is not offered"),
                !Offers(context, kPlan, QStringLiteral("pause"), QStringLiteral("status-menu")));
  walker.Picture(QStringLiteral("status-paused"));
  walker.Step(QStringLiteral("Pause stops at %1 bytes").arg(paused));

  context.ask({QStringLiteral("forget-sessions")});
  context.ask({QStringLiteral("block"), QStringLiteral("400000")});
  Command(context, kPlan, QStringLiteral("resume"));
  AwaitFinished(context, kPlan);
  walker.Picture(QStringLiteral("status-renewed"));
  Compare(context, kPlan);
  walker.Step(
      QStringLiteral("a session that the service has forgotten is opened anew, Resume goes on"));

  walker.Answer([&] { Command(context, kPlan, QStringLiteral("redo")); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("redo-asked"));
                  walker.PressButton(box, Text(StringId::MenuRedo));
                });
  walker.Await(QStringLiteral("Redo begins from nothing"),
               [&] { return !Finished(context, kPlan); });
  AwaitFinished(context, kPlan);
  Compare(context, kPlan);
  walker.Step(QStringLiteral("Redo fetches the file once more"));
  DeletePaused(context);

  context.ask({QStringLiteral("block"), QStringLiteral("131072")});
  SaveInto(context, kBig2);
  AwaitMoving(context, kBig2);
  walker.Await(QStringLiteral("the list on disk has the transfer"), [] { return IsStored(kBig2); });
  context.ask({QStringLiteral("kill")});
}

void SteerAgainLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  walker.Await(QStringLiteral("the killed transfer comes back"),
               [&] { return StatusRow(context, kBig2) >= 0; });
  AwaitFinished(context, kBig2);
  Compare(context, kBig2);
  walker.Step(QStringLiteral("after kill -9 in mid-transfer the file is whole"));
  context.close();
}

void StoredLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFinished(context, kSmall);
  context.ask({QStringLiteral("compare"), RemoteOf(kSmall),
               context.received + QStringLiteral("/stored.txt")});
  walker.Step(QStringLiteral("a stored transfer runs by itself"));

  const QString package = QString::fromLatin1(kWalkPackage);
  AwaitFinished(context, package);
  // As a click in the task bar does: the window of restored transfers starts minimised.
  walker.Find(QStringLiteral("transferStatus"))->showNormal();
  walker.Picture(QStringLiteral("status-folder"));
  for (const WalkFile& file : kWalkFiles) {
    const QString name = QString::fromLatin1(file.name);
    context.ask({QStringLiteral("compare"), RemoteOf(name),
                 context.received + QStringLiteral("/stored/") + name});
  }
  walker.Step(QStringLiteral("a stored folder walks its tree, its files arrive whole"));
  context.close();
}

void LimitLeg(LegContext& context) {
  context.start();
  Walker& walker = context.walker;
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.ask({QStringLiteral("block"), QStringLiteral("1024")});
  QAbstractItemView* attachments = walker.FindView(QStringLiteral("attachmentList"));
  const auto save = [&](const QString& name) {
    return walker.Cell(attachments, AttachmentRow(context, name), attachment_column::kSave);
  };
  SaveAttachment(context, kBig, context.received + QStringLiteral("/limit-1"));
  walker.Answer([&] { walker.Click(attachments, save(kBig)); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("duplicate"));
                  walker.PressButton(box, Text(StringId::Ok));
                });
  walker.Step(QStringLiteral("the same attachment twice is told as a duplicate"));
  int number = 1;
  for (const QString& name :
       {kBig2, kPlan, QStringLiteral("site-north.jpg"), QStringLiteral("site-south.jpg")}) {
    SaveAttachment(context, name, context.received + QStringLiteral("/limit-%1").arg(++number));
  }
  walker.Answer([&] { walker.Click(attachments, save(kSmall)); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("limit-reached"));
                  walker.PressButton(box, Text(StringId::Ok));
                });
  walker.Step(QStringLiteral("the sixth Save is refused"));
  walker.Key(walker.Find(QStringLiteral("transferStatus")), Qt::Key_Escape);
  walker.Await(QStringLiteral("Escape hides the status window"),
               [&] { return !walker.Find(QStringLiteral("transferStatus"))->isVisible(); });
  context.close();
}

}  // namespace updown::demo
