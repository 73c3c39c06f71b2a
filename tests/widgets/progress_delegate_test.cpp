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

QColor PaintedAt(float percent, int x) {
  QStandardItemModel model(1, 1);
  model.setData(model.index(0, 0), percent, kPercentRole);
  QStyleOptionViewItem option;
  option.rect = QRect(0, 0, 106, 20);
  QImage image(option.rect.size(), QImage::Format_RGB32);
  QPainter painter(&image);
  ProgressDelegate().paint(&painter, option, model.index(0, 0));
  return image.pixelColor(x, 4);  // above the text
}

TEST(ProgressDelegate, FillsItsPart) {
  const std::pair<float, int> cases[] = {{0, 0}, {33.339F, 33}, {100, 100}, {250, 100}};
  for (const auto& [percent, filled] : cases) {
    for (int x = 0; x < 100; ++x) {
      EXPECT_EQ(PaintedAt(percent, 3 + x) == kBar, x < filled) << percent;
    }
  }
  EXPECT_EQ(PercentText(kWaitingBar), QString());
}

TEST(Contrast, TextCanBeReadOnEveryGround) {
  EXPECT_NEAR(Contrast(QColor(u"#777777"_qs), Qt::white), 4.48, 0.01);
  for (const char* const ground : {"#ffffff", "#1e1e1e", "#777777", "#808080", "#0000ff"}) {
    const QColor back(QLatin1String{ground});
    for (const QColor& wanted : {QColor(Qt::black), QColor(Qt::white), QColor(Qt::red)}) {
      const QColor used = ReadableOn(back, wanted);
      EXPECT_GE(Contrast(back, used), 4.5) << ground;
      EXPECT_EQ(used == wanted, Contrast(back, wanted) >= 4.5) << "else it stays";
    }
  }
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
  model.removeRows(1, 2);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !bars->Blinking(); }));
}

}  // namespace
}  // namespace updown
