// The distinct-value pop-up, the drag list and the control positioner,
// driven through their controls (offscreen).
#include <QAbstractItemModelTester>
#include <QApplication>
#include <QDropEvent>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <random>
#include <set>

#include <gtest/gtest.h>

#include "grid/filter_join.h"
#include "grid/filter_match.h"
#include "plugin/tarn_host_api.h"
#include "widgets/control_pos.h"
#include "widgets/drag_list_ctrl.h"
#include "widgets/filter_text.h"
#include "widgets/sorted_values.h"

namespace vh {
namespace {

using Texts = std::vector<std::string>;

// Enough values for the radix passes, from bytes at the edges of the case
// fold ('@' and '[' beside the capitals, UTF-8 bytes whose low seven bits
// are capitals) and past the eight-byte keys, come out as the collation
// sorts them one by one; a fixed list shows the collation itself.
TEST(SortedValues, AgreeWithTheCollation) {
  EXPECT_EQ(SortedDistinctValues({"b", "abc", "ABC", "", "Abc", "9", "10", "b", "CLIENT-0002",
                                  "client-0001", "CLIENT-0001", "ABCDEFGHI", "abcdefgh"}),
            (Texts{"10", "9", "ABC", "Abc", "abc", "abcdefgh", "ABCDEFGHI", "b", "CLIENT-0001",
                   "client-0001", "CLIENT-0002"}));
  const std::string alphabet = "@AZ[az{09-\xC1\xDA\xE1";
  std::mt19937 random(5);
  Texts values(5000);
  for (std::string& v : values)
    for (size_t n = random() % 20; n > 0; --n)
      v += alphabet[random() % alphabet.size()];
  std::set<std::string, bool (*)(const std::string&, const std::string&)> expected(
      values.begin(), values.end(),
      [](const std::string& a, const std::string& b) { return CompareListTexts(a, b) < 0; });
  expected.erase("");
  EXPECT_EQ(SortedDistinctValues(values), Texts(expected.begin(), expected.end()));
}

// The linear join must give what the plain substring rule gives, on picks
// from a small alphabet (so that many contain others, or "~") and with
// repeated lengths (the hashed path) as well as unique ones (the direct one).
TEST(FilterJoin, AgreesWithThePlainRule) {
  std::mt19937 random(3);
  for (int trial = 0; trial < 3000; ++trial) {
    Texts picked(random() % 12);
    for (std::string& p : picked)
      for (int k = random() % 5; k > 0; --k)
        p += "ab~"[random() % 3];
    ASSERT_EQ(JoinFilterTexts(picked), JoinFilterSelection(picked)) << trial;
  }
}

class FilterTextTest : public ::testing::Test {
protected:
  void Open(Texts values) {
    popup_.Popup(std::move(values), 3, QPoint(20, 30));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&popup_));
  }
  void Click(const std::string& text, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
    const auto found = list_->model()->match(list_->model()->index(0, 0), Qt::DisplayRole,
                                             QString::fromStdString(text), 1, Qt::MatchExactly);
    ASSERT_FALSE(found.isEmpty()) << text;
    QTest::mouseClick(list_->viewport(), Qt::LeftButton, modifiers,
                      list_->visualRect(found[0]).center());
  }

  CFilterText popup_;
  QListView* list_ = qobject_cast<QListView*>(GetDlgItem(&popup_, kFilterTextListId));
  QSignalSpy applied_{&popup_, &CFilterText::Applied};
};

TEST_F(FilterTextTest, PickedValuesApplyJoinedInListOrder) {
  QAbstractItemModelTester tester(list_->model(),
                                  QAbstractItemModelTester::FailureReportingMode::Fatal);
  enum Gesture { kReturn, kKeypadEnter, kDoubleClick };
  const struct {
    const char* name;
    Texts clicks; // Ctrl+clicks in this order
    Gesture gesture;
    const char* filter;
  } cases[] = {
      {"listOrderNotClickOrder", {"XYZ", "ABC"}, kReturn, "ABC~XYZ"},
      {"valueInsideAnEarlierOneDropped", {"ABC", "B", "C1"}, kKeypadEnter, "ABC~C1"},
      {"nothingPickedClearsTheFilter", {}, kReturn, ""},
      {"doubleClickTakesTheValueUnderIt", {"ABC"}, kDoubleClick, "C1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    applied_.clear();
    Open({"XYZ", "C1", "", "B", "ABC", "XYZ"});
    ASSERT_EQ(list_->model()->rowCount(), 4);
    for (const std::string& text : c.clicks)
      Click(text);
    if (c.gesture == kDoubleClick) {
      Click("C1", Qt::NoModifier); // QTest's double click alone misses a fresh view
      QTest::mouseDClick(list_->viewport(), Qt::LeftButton, Qt::NoModifier,
                         list_->visualRect(list_->currentIndex()).center());
    } else {
      QTest::keyClick(list_, c.gesture == kReturn ? Qt::Key_Return : Qt::Key_Enter);
    }
    ASSERT_EQ(applied_.size(), 1);
    EXPECT_EQ(applied_[0][0].toInt(), 3);
    EXPECT_EQ(applied_[0][1].toString(), QString(c.filter));
    EXPECT_FALSE(popup_.isVisible());
  }
}

TEST_F(FilterTextTest, LeavingCancels) {
  QWidget elsewhere;
  auto* cancel = qobject_cast<QPushButton*>(GetDlgItem(&popup_, kFilterTextCancelId));
  const struct {
    const char* name;
    std::function<void()> leave;
  } cases[] = {
      {"anotherWindowActivated", [&] { elsewhere.show(), elsewhere.activateWindow(); }},
      {"escape", [&] { QTest::keyClick(list_, Qt::Key_Escape); }},
      {"hiddenCancelButton", [&] { cancel->click(); }},
  };
  for (const auto& c : cases) {
    Open({"C1", "C2"});
    Click("C2");
    c.leave();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !popup_.isVisible(); }, 2000)) << c.name;
    EXPECT_EQ(applied_.size(), 0) << c.name;
    elsewhere.hide();
  }
}

std::vector<DragListItem> Columns(std::initializer_list<int> numbers) {
  std::vector<DragListItem> items;
  for (int n : numbers)
    items.push_back({QString("Col%1").arg(n), n});
  return items;
}

// Qt's offscreen platform ends every drag at once, so drops are driven with
// the point a drop would bring: from {0..4} (whose column 0 may not leave)
// onto {10, 11}, or within {0..4}.
TEST(DragList, ADropMovesTheSelectionInListOrderToThePointerAndOnlyFromADragList) {
  const struct {
    const char* name;
    std::vector<int> selected;
    bool toSelf;
    int onto, half; // row under the pointer (-1 below the items); -1 upper, +1 lower half
    std::vector<DragListItem> source, target;
  } cases[] = {
      {"aboveARow", {1}, false, 0, -1, Columns({0, 2, 3, 4}), Columns({1, 10, 11})},
      {"belowARow", {1}, false, 0, 1, Columns({0, 2, 3, 4}), Columns({10, 1, 11})},
      {"belowTheItems", {3, 1}, false, -1, 0, Columns({0, 2, 4}), Columns({10, 11, 1, 3})},
      {"column0StaysBehind", {4, 0}, false, 0, -1, Columns({0, 1, 2, 3}), Columns({4, 10, 11})},
      {"downWithinTheList", {0, 1}, true, 4, -1, Columns({2, 3, 0, 1, 4}), Columns({10, 11})},
      {"upWithinTheList", {3, 4}, true, 1, -1, Columns({0, 3, 4, 1, 2}), Columns({10, 11})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CNTDragListCtrl source, target;
    source.SetItems(Columns({0, 1, 2, 3, 4}));
    source.SetLeaveFilter([](const DragListItem& item) { return item.value != 0; });
    target.SetItems(Columns({10, 11}));
    CNTDragListCtrl& to = c.toSelf ? source : target;
    to.show();
    for (int row : c.selected)
      source.item(row)->setSelected(true);
    QSignalSpy changed(&target, &CNTDragListCtrl::ItemsChanged);
    QPoint at(5, to.viewport()->height() - 2);
    if (c.onto >= 0)
      at = to.visualItemRect(to.item(c.onto)).center() + QPoint(0, c.half * 4);
    const bool stays = !c.toSelf && std::count(c.selected.begin(), c.selected.end(), 0);
    const size_t moved = c.selected.size() - (stays ? 1 : 0);
    EXPECT_EQ(to.DropSelectionOf(&source, at), static_cast<int>(moved));
    EXPECT_TRUE(source.Items() == c.source && target.Items() == c.target);
    EXPECT_EQ(to.SelectedItems().size(), moved) << "moved items stay selected";
    EXPECT_EQ(changed.size(), c.toSelf ? 0 : 1);
  }
  CNTDragListCtrl list;
  QMimeData text;
  text.setText("Col9");
  QDropEvent drop(QPointF(5, 5), Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(list.viewport(), &drop);
  EXPECT_FALSE(drop.isAccepted());
}

// The lien report dialog's test grows a dialog whose controls follow its
// right edge and stretch both ways; here the bottom edge, and a shrink far
// below the first size, which must not give a negative width.
TEST(ControlPos, ControlsFollowTheBottomAndNeverStretchBelowZero) {
  QWidget dialog;
  dialog.resize(300, 200);
  auto* button = new QPushButton(&dialog);
  button->setGeometry(10, 20, 80, 30);
  ASSERT_TRUE((new CControlPos(&dialog))->AddControl(button, kFollowBottom | kStretchWidth));
  dialog.show();
  for (const auto& [size, expected] : {std::pair{QSize(350, 240), QRect(10, 60, 130, 30)},
                                       {QSize(100, 100), QRect(10, -80, 0, 30)}}) {
    dialog.resize(size);
    QApplication::processEvents();
    EXPECT_EQ(button->geometry(), expected);
  }
}

} // namespace
} // namespace vh
