#include "widgets/progress_painter.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimerEvent>

namespace updown {
namespace {

const QColor kBar(66, 132, 132);

class ProgressPainterTest : public ::testing::Test {
 protected:
  ProgressPainterTest() { bar_.resize(100, 20); }

  int BarPixels() {
    const QImage image = bar_.grab().toImage();
    int count = 0;
    while (count < image.width() && image.pixelColor(count, 0) == kBar) {
      ++count;
    }
    return count;
  }
  void Tick() {
    // The timer's id is the first one that the widget takes.
    for (int id = 0; id < 100; ++id) {
      QTimerEvent event(id);
      QCoreApplication::sendEvent(&bar_, &event);
    }
  }

  QWidget parent_;
  CProgressPainter bar_{&parent_};
};

TEST_F(ProgressPainterTest, FillsTheTruncatedPart) {
  EXPECT_EQ(bar_.SetPercent(50), -1);
  EXPECT_EQ(bar_.Percent(), 0);
  bar_.Create();
  bar_.SetWaiting(false);
  const std::tuple<float, int, QString> cases[] = {{0, 0, u"0.00%"_qs},
                                                   {33.339F, 33, u"33.34%"_qs},
                                                   {99.999F, 99, u"100.00%"_qs},
                                                   {100, 100, u"100.00%"_qs},
                                                   {250, 100, u"250.00%"_qs}};
  for (const auto& [percent, pixels, text] : cases) {
    EXPECT_EQ(bar_.SetPercent(percent), 0);
    EXPECT_EQ(bar_.Text(), text);
    EXPECT_EQ(BarPixels(), pixels) << percent;
  }
}

TEST_F(ProgressPainterTest, BlinksWithoutTextUntilPaintedWithAPercentage) {
  bar_.Create();
  for (const int percent : {100, 0, 100}) {
    Tick();
    EXPECT_EQ(bar_.Percent(), static_cast<float>(percent));
    EXPECT_EQ(bar_.Text(), QString());
    EXPECT_EQ(BarPixels(), percent);
  }
  EXPECT_TRUE(bar_.Blinking());
  bar_.SetWaiting(false);
  bar_.SetPercent(40);
  Tick();
  EXPECT_EQ(bar_.Percent(), 40);
  bar_.grab();
  EXPECT_FALSE(bar_.Blinking());
}

}  // namespace
}  // namespace updown
