#include <gtest/gtest.h>

#include <QStandardItemModel>

#include "widgets/link_cells.h"
#include "widgets/size_texts.h"

namespace updown {
namespace {

TEST(SizeTextsTest, ChangeUnitAtEachPowerOf1024) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, ""},
      {1023, "1023 B"},
      {1024, "1 KB"},
      {1048575, "1023 KB"},
      {1048576, "1.00 MB"},
      {1610612, "1.54 MB"},
      {1073741823, "1024.00 MB"},
      {1073741824, "1.000 GB"},
      {0xFFFFFFFF, "4.000 GB"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(FormatSize(bytes), text);
  }
  EXPECT_EQ(FormatKiloBytes(0xFFFFFFFF), "4194303 KB");
}

TEST(LinkCellsTest, TextStandsByTheColumnsAlignment) {
  const QRect label(100, 20, 50, 20);
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignLeft), QRect(106, 22, 28, 16));
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignRight), QRect(116, 22, 28, 16));
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignHCenter), QRect(111, 22, 28, 16));
  EXPECT_TRUE(LinkTextRectIn(label, {0, 15}, Qt::AlignHCenter).isEmpty());
}

TEST(LinkCellsTest, HoverFollowsTheMouse) {
  const struct {
    LinkHit last;
    bool lastIsLink;
    LinkHit now;
    const char* changes;  // row, column, and "+" or "-"
  } cases[] = {
      {{0, 0, false}, false, {0, 4, true}, "04+"},  {{0, 4, true}, true, {0, 4, true}, ""},
      {{0, 4, true}, true, {0, 4, false}, "04-"},  // into the empty part of the cell
      {{0, 4, false}, true, {0, 4, true}, "04+"},   {{0, 4, true}, true, {1, 4, true}, "04-14+"},
      {{0, 4, true}, true, {-1, -1, false}, "04-"},  // off the rows
      {{0, 4, false}, true, {1, 4, false}, ""},     {{-1, -1, false}, false, {0, 4, true}, "04+"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    std::string changes;
    for (const auto& change : HoverChanges(cases[i].last, cases[i].lastIsLink, cases[i].now)) {
      changes += std::to_string(change.row) + std::to_string(change.column);
      changes += change.hover ? '+' : '-';
    }
    EXPECT_EQ(changes, cases[i].changes) << "case " << i;
  }
}

TEST(LinkCellsTest, TipIsCutAndNeverReadAsMarkup) {
  const QFont font;
  const QString hundred(100, QLatin1Char('x'));
  EXPECT_EQ(TipHtml(hundred, font, 100000).count(QLatin1Char('x')), 79);
  EXPECT_TRUE(TipHtml(QStringLiteral("a <b>\r\nc"), font, 300)
                  .contains(QStringLiteral("a &lt;b&gt;<br>c")));
  EXPECT_GE(TipHtml(hundred, font, 100).count(QStringLiteral("<br>")), 3);
  // The cut does not leave half of a character of two units.
  const QString pair = QString(78, QLatin1Char('x')) + QString::fromUtf8("\xF0\x9F\x98\x80");
  EXPECT_FALSE(TipHtml(pair, font, 100000).contains(pair.at(78)));
}

}  // namespace
}  // namespace updown
