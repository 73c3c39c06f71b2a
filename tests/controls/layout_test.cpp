#include <gtest/gtest.h>

#include <QStandardItemModel>

#include "controls/link_cells.h"
#include "controls/list_layout.h"
#include "controls/progress_painter.h"
#include "controls/sort_header_ctrl.h"

namespace updown {
namespace {

using Kind = ProgressCell::Kind;

TEST(ProgressCellTest, FollowsTheTask) {
  struct Case {
    ProgressFacts facts;
    Kind kind;
    float percent = 0;
  };
  constexpr auto kQueued = TransferState::Queued;
  constexpr auto kStopped = TransferState::Stopped;
  const Case cases[] = {
      {{0, 0, kQueued, false, false}, Kind::WaitingBar},
      {{0, 0, kQueued, true, false}, Kind::WaitingBar},
      {{0, 0, kQueued, false, true}, Kind::Text},
      {{0, 0, kQueued, true, true}, Kind::NotAvailable},
      {{0, 0, kStopped, false, false}, Kind::NotAvailable},
      {{0, 0, kStopped, true, true}, Kind::NotAvailable},
      {{0, 0, TransferState::Finished, true, false}, Kind::Text},
      {{0, 0, TransferState::Failed, false, false}, Kind::Text},
      {{9, 9, TransferState::Finished, false, true}, Kind::Text},
      {{9, 3, TransferState::Failed, true, true}, Kind::Text},
      {{2000, 500, kQueued, true, true}, Kind::NotAvailable},
      {{2000, 500, kQueued, false, false}, Kind::PercentBar, 25},
      {{2000, 2000, kStopped, false, true}, Kind::PercentBar, 100},
      // The product of bytes and 100 must not wrap.
      {{0x80000000U, 0x40000000U, kQueued, false, true}, Kind::PercentBar, 50},
      {{3, 1, static_cast<TransferState>(7), false, true}, Kind::PercentBar, 33.3333F},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const ProgressCell cell = ChooseProgressCell(cases[i].facts);
    EXPECT_EQ(cell.kind, cases[i].kind) << "case " << i;
    EXPECT_NEAR(cell.percent, cases[i].percent, 0.001) << "case " << i;
  }
}

TEST(BarGeometryTest, LeavesAQuarterOfTheRow) {
  EXPECT_EQ(BarRect(QRect(300, 40, 110, 19)), QRect(300, 42, 110, 15));
  EXPECT_EQ(BarRect(QRect(0, 0, 10, 24)), QRect(0, 4, 10, 16));
}

TEST(HintGeometryTest, StandsAtThreeEighthsOrBelowOneLine) {
  struct Case {
    int height;
    int line;
    int top;
  };
  // Not higher than two lines: one line down; 3/8 of the height, but never above one line.
  for (const Case& c :
       {Case{400, 16, 150}, {32, 16, 16}, {33, 16, 16}, {43, 16, 16}, {48, 16, 18}, {16, 16, 16}}) {
    const HintGeometry hint = LayOutHint(QRect(1, 2, 300, c.height), c.line);
    EXPECT_EQ(hint.text, QRect(1, 2 + c.top, 300, c.height - c.top)) << c.height;
    EXPECT_EQ(hint.cover, QRect(1, 2 + c.line, 300, c.top - c.line)) << c.height;
  }
  EXPECT_TRUE(LayOutHint(QRect(0, 0, 300, 5), 16).text.isEmpty());
}

TEST(SortArrowTest, TurnsWithTheDirection) {
  // Height 24 gives a unit of 6; the right edge lies at 200, the bottom at 24.
  const QRect item(100, 0, 100, 24);
  using Strokes = std::array<ArrowStroke, 3>;
  const Strokes up{
      {{true, {188, 6}, {194, 17}}, {true, {194, 17}, {180, 17}}, {false, {181, 17}, {188, 5}}}};
  const Strokes down{
      {{true, {193, 6}, {187, 18}}, {false, {186, 18}, {181, 6}}, {false, {181, 6}, {193, 6}}}};
  for (std::size_t i = 0; i < up.size(); ++i) {
    for (const bool ascending : {true, false}) {
      const ArrowStroke want = ascending ? up.at(i) : down.at(i);
      const ArrowStroke got = SortArrow(item, ascending).at(i);
      EXPECT_EQ(got.light, want.light) << i << ascending;
      EXPECT_EQ(got.from, want.from) << i << ascending;
      EXPECT_EQ(got.to, want.to) << i << ascending;
    }
  }
  EXPECT_EQ(HeaderTextRect(item, false), QRect(106, 0, 88, 24));
  EXPECT_EQ(HeaderTextRect(item, true), QRect(106, 0, 70, 24));
}

TEST(SortHeaderTest, NewColumnStartsUpAndTheSameOneTurns) {
  CSortHeaderCtrl header;
  EXPECT_EQ(header.GetSortColumn(), -1);
  EXPECT_TRUE(header.GetAscending());
  struct Step {
    int column;
    bool ascending;
  };
  for (const Step& step :
       {Step{2, true}, {2, false}, {2, true}, {2, false}, {0, true}, {2, true}}) {
    header.SetSortColumn(step.column);
    EXPECT_EQ(header.GetSortColumn(), step.column);
    EXPECT_EQ(header.GetAscending(), step.ascending);
  }
}

TEST(LinkCellsTest, TextStandsByTheColumnsAlignment) {
  const QRect label(100, 20, 50, 20);
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignLeft), QRect(106, 22, 28, 16));
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, {}), QRect(106, 22, 28, 16));
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignRight), QRect(116, 22, 28, 16));
  EXPECT_EQ(LinkTextRectIn(label, {28, 15}, Qt::AlignHCenter), QRect(111, 22, 28, 16));
  EXPECT_TRUE(LinkTextRectIn(label, {0, 15}, Qt::AlignHCenter).isEmpty());
}

TEST(LinkCellsTest, HoverFollowsTheMouse) {
  struct Case {
    LinkHit last;
    bool lastIsLink;
    LinkHit now;
    std::vector<std::array<int, 3>> changes;
  };
  const Case cases[] = {
      {{0, 0, false}, false, {0, 4, true}, {{0, 4, 1}}},
      {{0, 4, true}, true, {0, 4, true}, {}},
      {{0, 4, true}, true, {0, 4, false}, {{0, 4, 0}}},  // into the empty part of the cell
      {{0, 4, false}, true, {0, 4, true}, {{0, 4, 1}}},
      {{0, 4, true}, true, {1, 4, true}, {{0, 4, 0}, {1, 4, 1}}},
      {{0, 4, true}, true, {-1, -1, false}, {{0, 4, 0}}},  // off the rows
      {{0, 4, false}, true, {1, 4, false}, {}},
      {{-1, -1, false}, false, {0, 4, true}, {{0, 4, 1}}},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto changes = HoverChanges(cases[i].last, cases[i].lastIsLink, cases[i].now);
    ASSERT_EQ(changes.size(), cases[i].changes.size()) << "case " << i;
    for (std::size_t k = 0; k < changes.size(); ++k) {
      const std::array<int, 3> got{changes[k].row, changes[k].column, changes[k].hover ? 1 : 0};
      EXPECT_EQ(got, cases[i].changes[k]) << "case " << i;
    }
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
