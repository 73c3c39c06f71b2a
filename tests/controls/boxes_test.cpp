#include "controls/boxes.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "controls/icons.h"
#include "resources/strings.h"

namespace updown {
namespace {

// Runs `act` on the box as soon as it stands.
template <typename Act>
void WithBox(Act act) {
  auto* timer = new QTimer(qApp);
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, qApp, [act, timer] {
    timer->deleteLater();
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->objectName(), QStringLiteral("messageBox"));
    act(*box);
  });
  timer->start(0);
}

TEST(BoxesTest, OnlyOkConfirms) {
  for (const auto& [key, answer] : {std::pair{Qt::Key_Return, true}, {Qt::Key_Escape, false}}) {
    WithBox([key = key](QMessageBox& box) { QTest::keyClick(&box, key); });
    EXPECT_EQ(Confirm(nullptr, StringId::ConfirmDelete, u""), answer);
  }
  WithBox([](QMessageBox& box) { box.close(); });
  EXPECT_FALSE(Confirm(nullptr, StringId::ConfirmDelete, u""));
}

TEST(BoxesTest, SpeaksTheLanguageInForce) {
  SetStringLanguage(2052);
  WithBox([](QMessageBox& box) {
    EXPECT_EQ(box.text(), QStringLiteral("确定要进行该删除操作吗？"));
    EXPECT_EQ(box.button(QMessageBox::Ok)->text(), QStringLiteral("确定"));
    EXPECT_EQ(box.button(QMessageBox::Cancel)->text(), QStringLiteral("取消"));
    box.reject();
  });
  EXPECT_FALSE(Confirm(nullptr, StringId::ConfirmDelete, u""));
  SetStringLanguage(1033);
}

TEST(BoxesTest, SurvivesTheEndOfItsOwner) {
  auto* owner = new QWidget;
  WithBox([owner](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), owner);
    delete owner;
  });
  EXPECT_FALSE(Confirm(owner, StringId::ConfirmRedo, u""));
}

TEST(IconsTest, AllAreThereAtEachSize) {
  for (const int number : {128, 132, 134, 135, 136, 137, 141, 142, 144, 146}) {
    for (const int size : {16, 32, 48}) {
      const QImage image = LoadIcon(number).pixmap(QSize(size, size)).toImage();
      ASSERT_EQ(image.size(), QSize(size, size)) << number;
      int opaque = 0;
      for (int i = 0; i < size * size; ++i) {
        opaque += qAlpha(image.pixel(i % size, i / size)) > 200 ? 1 : 0;
      }
      EXPECT_GT(opaque, size * size / 8) << number;
      EXPECT_LT(opaque, size * size) << number;
    }
  }
  EXPECT_TRUE(LoadIcon(129).isNull());
}

}  // namespace
}  // namespace updown
