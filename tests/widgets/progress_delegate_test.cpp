#include "widgets/progress_delegate.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include "widgets/contrast.h"

namespace updown {
namespace {

const QColor kBar(66, 132, 132);

QColor PaintedAt(const QColor& base, const QColor& text, float percent, int x) {
  QStandardItemModel model(1, 1);
  model.setData(model.index(0, 0), percent, kPercentRole);
  QStyleOptionViewItem option;
  option.rect = QRect(0, 0, 106, 20);
  option.palette.setColor(QPalette::Base, base);
  option.palette.setColor(QPalette::Text, text);
  QImage image(option.rect.size(), QImage::Format_RGB32);
  QPainter painter(&image);
  ProgressDelegate().paint(&painter, option, model.index(0, 0));
  return image.pixelColor(x, 4);  // above the text
}

TEST(ProgressDelegate, FillsItsPart) {
  const std::pair<float, int> cases[] = {
      {0, 0}, {33.339F, 33}, {99.99F, 99}, {100, 100}, {250, 100}};
  for (const auto& [percent, filled] : cases) {
    for (int x = 0; x < 100; ++x) {
      EXPECT_EQ(PaintedAt(Qt::white, Qt::black, percent, 3 + x) == kBar, x < filled) << percent;
    }
  }
  EXPECT_EQ(PercentText(33.339F), u"33.34%"_qs);
  EXPECT_EQ(PercentText(kWaitingBar), QString());
}

TEST(ProgressDelegate, CanBeReadInEveryPalette) {
  const std::pair<const char*, const char*> palettes[] = {
      {"#ffffff", "#000000"}, {"#1e1e1e", "#eeeeee"}, {"#2d2d2d", "#909090"},
      {"#808080", "#000000"}, {"#777777", "#ffffff"}, {"#000000", "#00ff00"},
      {"#fdf6e3", "#657b83"}, {"#ffff00", "#ffffff"}, {"#0000ff", "#000000"}};
  EXPECT_NEAR(Contrast(Qt::black, Qt::white), 21, 0.01);
  EXPECT_NEAR(Contrast(QColor(u"#777777"_qs), Qt::white), 4.48, 0.01);
  for (const auto& [base, text] : palettes) {
    const QColor back(QLatin1String{base});
    const QColor wanted(QLatin1String{text});
    const QColor used = ReadableOn(back, wanted);
    EXPECT_GE(Contrast(back, used), 4.5) << base << " " << text;
    EXPECT_TRUE(used == wanted || Contrast(back, wanted) < 4.5) << "the palette's own goes before";
    EXPECT_EQ(PaintedAt(back, wanted, 50, 90), back);
  }
  EXPECT_GE(Contrast(kBar, ReadableOn(kBar, Qt::black)), 4.5);
}

TEST(ProgressDelegate, BlinksOnlyWhileAWaitingBarIsSeen) {
  QStandardItemModel model(3, 1);
  for (int row = 0; row < 3; ++row) {
    model.setData(model.index(row, 0), row == 0 ? 50.0F : kWaitingBar, kPercentRole);
  }
  QTreeView view;
  auto* const bars = new ProgressDelegate(&view);
  view.setItemDelegate(bars);
  view.setModel(&model);
  view.show();
  ASSERT_TRUE(QTest::qWaitFor([&] { return bars->Blinking(); }));
  view.hide();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !bars->Blinking(); }));
  view.show();
  EXPECT_TRUE(QTest::qWaitFor([&] { return bars->Blinking(); }));
  model.removeRows(1, 2);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !bars->Blinking(); }));
}

}  // namespace
}  // namespace updown
