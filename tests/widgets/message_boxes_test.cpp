#include "widgets/message_boxes.h"

#include <gmock/gmock.h>

#include <QTest>

#include "resources/texts.h"
#include "tests/support/person.h"
#include "widgets/busy_pointer.h"
#include "widgets/icons.h"

namespace updown::test {
namespace {

bool Ask(QWidget* owner = nullptr) { return Confirm(owner, u"Delete “a”?"_qs, u"&Delete"_qs); }

TEST(BoxesTest, WhatIsLostIsLostByItsVerbAlone) {
  Person person;
  EXPECT_TRUE(Ask());  // a click on the verb
  for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
    person.first = [key](QMessageBox& box) {
      EXPECT_EQ(box.button(QMessageBox::Ok)->text(), u"&Delete"_qs);
      QTest::keyClick(&box, key);
    };
    EXPECT_FALSE(Ask());
  }
  person.first = [](QMessageBox& box) { box.close(); };
  EXPECT_FALSE(Ask());
}

TEST(BoxesTest, SpeaksTheLanguageInForce) {
  Person person;
  SetStringLanguage(2052);
  person.first = [](QMessageBox& box) {
    EXPECT_EQ(box.button(QMessageBox::Cancel)->text(), u"取消"_qs);
  };
  Ask();
  person.first = {};
  ShowNotice(nullptr, StringId::LostConnection);
  EXPECT_EQ(person.seen.back(), "与服务器连接中断。");
  SetStringLanguage(1033);
}

TEST(BusyPointerTest, StepsBackWhileABoxWaits) {
  const auto busy = [] { return QApplication::overrideCursor() != nullptr; };
  Person person;
  {
    const BusyPointer outer;
    {
      const BusyPointer inner;
      auto* owner = new QWidget;
      person.first = [&](QMessageBox&) {
        EXPECT_FALSE(busy());
        delete owner;
      };
      EXPECT_FALSE(Ask(owner));
    }
    EXPECT_TRUE(busy());
  }
  EXPECT_FALSE(busy());
}

TEST(IconsTest, AllAreThere) {
  for (int number = 0; number <= static_cast<int>(Icon::Stopped); ++number) {
    const QImage image = LoadIcon(static_cast<Icon>(number)).pixmap(QSize(16, 16)).toImage();
    EXPECT_GT(qAlpha(image.scaled(1, 1, {}, Qt::SmoothTransformation).pixel(0, 0)), 30) << number;
  }
}

}  // namespace
}  // namespace updown::test
