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

void LooksLeg(LegContext& context) {
  context.start();
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.walker.Picture(QStringLiteral("double-density"));
  context.walker.Step(QStringLiteral("at double density"));
  context.close();
}

void DarkLeg(LegContext& context) {
  QApplication::setPalette(DarkPalette());
  context.start();
  AwaitFullList(context);
  SelectWalkPackage(context);
  context.walker.Picture(QStringLiteral("dark-palette"));
  SaveAttachment(context, QStringLiteral("site-north.jpg"),
                 context.received + QStringLiteral("/dark.jpg"));
  context.walker.Rest(1300);
  context.walker.Picture(QStringLiteral("dark-status"));
  context.walker.Step(QStringLiteral("with a dark palette"));
  context.close();
}

}  // namespace updown::demo
