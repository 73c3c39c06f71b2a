#include <QAbstractItemView>
#include <QApplication>
#include <QLineEdit>
#include <QPalette>
#include <QTest>

#include "demo/legs.h"
#include "resources/qt/texts.h"

namespace updown::demo {

namespace {

QPalette DarkPalette() {
  QPalette palette(QColor(0x2b, 0x2b, 0x2b));
  palette.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
  palette.setColor(QPalette::Highlight, QColor(0x2f, 0x65, 0xa0));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

void TypeLogin(LegContext& context, QWidget* dialog, const QString& password,
               const QString& picture) {
  auto* user = dialog->findChild<QLineEdit*>(QStringLiteral("loginUser"));
  auto* secret = dialog->findChild<QLineEdit*>(QStringLiteral("loginPassword"));
  if (user == nullptr || secret == nullptr) {
    throw WalkFailure("the login box lacks a field");
  }
  user->clear();
  QTest::keyClicks(user, QStringLiteral("maria@office"));
  QTest::keyClicks(secret, password);
  context.walker.Picture(picture);
  context.walker.PressButton(dialog, Text(StringId::Ok));
}

void ShowSizes(LegContext& context) {
  QWidget* window = context.walker.Find(QStringLiteral("mainWindow"));
  for (const QSize& size : {QSize(320, 240), QSize(2560, 1440), QSize(960, 720)}) {
    window->resize(size);
    context.walker.Rest(100);
    context.walker.Picture(QStringLiteral("%1x%2").arg(size.width()).arg(size.height()));
  }
}

void ShowMenuAndBox(LegContext& context) {
  Walker& walker = context.walker;
  QAbstractItemView* list = walker.FindView(QStringLiteral("packageList"));
  walker.WithMenu([&] { AskForMenu(list); },
                  [&](QMenu*) { walker.Picture(QStringLiteral("menu")); });
  walker.Answer([&] { walker.Key(list, Qt::Key_Delete); },
                [&](QWidget* box) {
                  walker.Picture(QStringLiteral("box"));
                  walker.PressButton(box, Text(StringId::Cancel));
                });
}

void ShowTransfersAndHelp(LegContext& context) {
  Walker& walker = context.walker;
  SaveAttachment(context, QStringLiteral("site-north.jpg"),
                 context.received + QStringLiteral("/looks.jpg"));
  walker.Rest(1300);
  walker.Picture(QStringLiteral("transfers"));
  walker.Key(walker.Find(QStringLiteral("transferStatus")), Qt::Key_Escape);
  walker.Key(walker.FindView(QStringLiteral("packageList")), Qt::Key_F1);
  walker.Await(QStringLiteral("help shows"),
               [&] { return walker.Find(QStringLiteral("helpWindow"))->isVisible(); });
  walker.Find(QStringLiteral("mainWindow"))->hide();
  walker.Picture(QStringLiteral("help"));
  walker.Find(QStringLiteral("mainWindow"))->show();
}

// All windows in the look that the application has by now.
void ShowAll(LegContext& context, const QString& look) {
  context.start();
  AwaitFullList(context);
  SelectWalkPackage(context);
  ShowSizes(context);
  ShowMenuAndBox(context);
  ShowTransfersAndHelp(context);
  context.walker.Step(look);
  context.close();
}

}  // namespace

void LoginLeg(LegContext& context) {
  Walker& walker = context.walker;
  walker.AnswerEach(context.start, {[&](QWidget* dialog) {
                                      TypeLogin(context, dialog, QStringLiteral("wrong"),
                                                QStringLiteral("login"));
                                    },
                                    [&](QWidget* dialog) {
                                      walker.Step(QStringLiteral("a refused password asks again"));
                                      TypeLogin(context, dialog, QStringLiteral("correct horse"),
                                                QStringLiteral("login-refused"));
                                    }});
  walker.Step(QStringLiteral("the right one opens the session"));
  AwaitFullList(context);
  context.close();
}

void PlainLeg(LegContext& context) {
  ShowAll(context, QStringLiteral("sizes, menu, box, transfers and help as they come"));
}

void DoubleLeg(LegContext& context) { ShowAll(context, QStringLiteral("at double density")); }

void DarkLeg(LegContext& context) {
  QApplication::setPalette(DarkPalette());
  ShowAll(context, QStringLiteral("with a dark palette"));
}

void LargeLeg(LegContext& context) {
  QFont font = QApplication::font();
  font.setPointSize(16);
  QApplication::setFont(font);
  ShowAll(context, QStringLiteral("with letters of 16 points"));
}

void RightToLeftLeg(LegContext& context) {
  QApplication::setLayoutDirection(Qt::RightToLeft);
  ShowAll(context, QStringLiteral("from right to left"));
}

void OtherStyleLeg(LegContext& context) {
  QApplication::setStyle(QStringLiteral("windows"));
  ShowAll(context, QStringLiteral("in another style"));
}

}  // namespace updown::demo
