#include "widgets/message_boxes.h"

#include <gmock/gmock.h>

#include <QTest>

#include "resources/texts.h"
#include "tests/support/person.h"
#include "widgets/busy_pointer.h"
#include "widgets/icons.h"

namespace updown::test {
namespace {

bool Ask(QWidget* owner = nullptr) { return Confirm(owner, StringId::ConfirmDelete); }

TEST(BoxesTest, OnlyOkConfirms) {
  Person person;
  for (const auto& [key, answer] : {std::pair{Qt::Key_Return, true}, {Qt::Key_Escape, false}}) {
    person.first = [key = key](QMessageBox& box) { QTest::keyClick(&box, key); };
    EXPECT_EQ(Ask(), answer);
  }
  person.first = [](QMessageBox& box) { box.close(); };
  EXPECT_FALSE(Ask());
}

TEST(BoxesTest, WhatIsLostIsLostByItsVerbAlone) {
  const auto ask = [] { return Confirm(nullptr, u"Delete “a”?"_qs, u"&Delete"_qs); };
  Person person;
  EXPECT_TRUE(ask());  // a click on the verb
  for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
    person.first = [key](QMessageBox& box) {
      EXPECT_EQ(box.button(QMessageBox::Ok)->text(), u"&Delete"_qs);
      QTest::keyClick(&box, key);
    };
    EXPECT_FALSE(ask());
  }
}

TEST(BoxesTest, SpeaksTheLanguageInForce) {
  Person person;
  SetStringLanguage(2052);
  person.first = [](QMessageBox& box) {
    EXPECT_EQ(box.button(QMessageBox::Ok)->text(), u"确定"_qs);
    EXPECT_EQ(box.button(QMessageBox::Cancel)->text(), u"取消"_qs);
  };
  EXPECT_TRUE(Ask());
  EXPECT_THAT(person.seen, ::testing::ElementsAre("确定要进行该删除操作吗？"));
  SetStringLanguage(1033);
}

TEST(BoxesTest, SurvivesTheEndOfItsOwner) {
  Person person;
  auto* owner = new QWidget;
  person.first = [owner](QMessageBox&) { delete owner; };
  EXPECT_FALSE(Ask(owner));
}

TEST(BusyPointerTest, StepsBackWhileABoxWaits) {
  const auto busy = [] { return QApplication::overrideCursor() != nullptr; };
  Person person;
  person.first = [&busy](QMessageBox&) { EXPECT_FALSE(busy()); };
  {
    const BusyPointer outer;
    {
      const BusyPointer inner;
      Ask();
      EXPECT_TRUE(busy());
      auto* owner = new QWidget;
      person.first = [owner](QMessageBox&) { delete owner; };
      Ask(owner);
    }
    EXPECT_TRUE(busy());
  }
  EXPECT_FALSE(busy());
  EXPECT_EQ(person.seen.size(), 2U);
}

TEST(IconsTest, AllAreThere) {
  for (int number = 0; number <= static_cast<int>(Icon::Stopped); ++number) {
    const QImage image = LoadIcon(static_cast<Icon>(number)).pixmap(QSize(16, 16)).toImage();
    EXPECT_GT(qAlpha(image.scaled(1, 1, {}, Qt::SmoothTransformation).pixel(0, 0)), 30) << number;
  }
}

}  // namespace
}  // namespace updown::test
