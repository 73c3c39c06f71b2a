#include "controls/progress_painter.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QTest>
#include <QTimerEvent>

namespace updown {
namespace {

const QColor kBar(66, 132, 132);

int BarPixels(const QImage& image) {
  int count = 0;
  while (count < image.width() && image.pixelColor(count, 0) == kBar) {
    ++count;
  }
  return count;
}

TEST(ProgressPainterTest, FillsTheTruncatedPart) {
  QWidget parent;
  CProgressPainter bar(&parent);
  bar.resize(100, 20);
  EXPECT_EQ(bar.SetPercent(50), -1);
  EXPECT_EQ(bar.Percent(), 0);
  bar.Create();
  bar.SetWaiting(false);
  struct Case {
    float percent;
    int pixels;
    const char* text;
  };
  for (const Case& c : {Case{0, 0, "0.00%"},
                        {33.339F, 33, "33.34%"},
                        {100, 100, "100.00%"},
                        {99.999F, 99, "100.00%"},
                        {250, 100, "250.00%"}}) {
    EXPECT_EQ(bar.SetPercent(c.percent), 0);
    EXPECT_EQ(bar.Text(), QLatin1String(c.text));
    EXPECT_EQ(BarPixels(bar.grab().toImage()), c.pixels) << c.text;
  }
}

TEST(ProgressPainterTest, BlinksWithoutTextUntilPaintedWithAPercentage) {
  QWidget parent;
  CProgressPainter bar(&parent);
  bar.resize(100, 20);
  bar.Create();
  const auto tick = [&bar] {
    // The timer's id is the first one that the widget takes.
    for (int id = 0; id < 100; ++id) {
      QTimerEvent event(id);
      QCoreApplication::sendEvent(&bar, &event);
    }
  };
  for (const float percent : {100.0F, 0.0F, 100.0F}) {
    tick();
    EXPECT_EQ(bar.Percent(), percent);
    EXPECT_EQ(bar.Text(), QString());
    EXPECT_EQ(BarPixels(bar.grab().toImage()), static_cast<int>(percent));
  }
  EXPECT_TRUE(bar.Blinking());

  bar.SetWaiting(false);
  bar.SetPercent(40);
  tick();
  EXPECT_EQ(bar.Percent(), 40);
  bar.grab();
  EXPECT_FALSE(bar.Blinking());
}

TEST(ProgressPainterTest, TextIsReadableOnADarkBackground) {
  QWidget parent;
  CProgressPainter bar(&parent);
  bar.resize(100, 20);
  QPalette dark;
  dark.setColor(QPalette::Base, QColor(32, 32, 32));
  dark.setColor(QPalette::Text, Qt::white);
  bar.setPalette(dark);
  bar.Create();
  bar.SetWaiting(false);
  const auto brightest = [&bar](float percent) {
    bar.SetPercent(percent);
    const QImage image = bar.grab().toImage();
    int value = 0;
    for (int x = 0; x < image.width(); ++x) {
      for (int y = 0; y < image.height(); ++y) {
        value = std::max(value, qGray(image.pixel(x, y)));
      }
    }
    return value;
  };
  EXPECT_GT(brightest(0), 200);
  EXPECT_LE(brightest(100), qGray(kBar.rgb()));
}

}  // namespace
}  // namespace updown
