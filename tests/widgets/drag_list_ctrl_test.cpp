// The drag list, through its API and one real drag between two lists.
#include "widgets/drag_list_ctrl.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace vh {

void PrintTo(const DragListItem& item, std::ostream* os) {
  *os << item.text.toStdString() << "=" << item.value;
}

namespace {

using Items = std::vector<DragListItem>;

Items Columns(std::initializer_list<int> numbers) {
  Items items;
  for (int n : numbers)
    items.push_back({QString("Col%1").arg(n), n});
  return items;
}

void Select(CNTDragListCtrl& list, std::initializer_list<int> rows) {
  list.clearSelection();
  for (int row : rows)
    list.item(row)->setSelected(true);
}

TEST(DragList, SelectedItemsMoveInListOrder) {
  const struct {
    const char* name;
    std::initializer_list<int> selected;
    bool toSelf;
    int row;
    Items source, target; // afterwards
    int moved;
  } cases[] = {
      {"appendToOther", {1, 3}, false, -1, Columns({0, 2, 4}), Columns({10, 11, 1, 3}), 2},
      {"beforeFirstOfOther", {4, 0}, false, 0, Columns({1, 2, 3}), Columns({0, 4, 10, 11}), 2},
      {"betweenInOther", {2}, false, 1, Columns({0, 1, 3, 4}), Columns({10, 2, 11}), 1},
      {"rowBeyondTheEndAppends", {0}, false, 99, Columns({1, 2, 3, 4}), Columns({10, 11, 0}), 1},
      {"downWithinTheList", {0, 1}, true, 4, Columns({2, 3, 0, 1, 4}), Columns({10, 11}), 2},
      {"upWithinTheList", {3, 4}, true, 1, Columns({0, 3, 4, 1, 2}), Columns({10, 11}), 2},
      {"toTheEndOfItself", {2}, true, -1, Columns({0, 1, 3, 4, 2}), Columns({10, 11}), 1},
      {"nothingSelected", {}, false, -1, Columns({0, 1, 2, 3, 4}), Columns({10, 11}), 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CNTDragListCtrl source, target;
    source.SetItems(Columns({0, 1, 2, 3, 4}));
    target.SetItems(Columns({10, 11}));
    Select(source, c.selected);
    QSignalSpy sourceChanged(&source, &CNTDragListCtrl::ItemsChanged);
    QSignalSpy targetChanged(&target, &CNTDragListCtrl::ItemsChanged);
    CNTDragListCtrl& to = c.toSelf ? source : target;

    EXPECT_EQ(source.MoveSelectedTo(&to, c.row), c.moved);
    EXPECT_EQ(source.Items(), c.source);
    EXPECT_EQ(target.Items(), c.target);
    EXPECT_EQ(sourceChanged.size(), c.moved ? 1 : 0);
    EXPECT_EQ(targetChanged.size(), c.moved && !c.toSelf ? 1 : 0);
    if (c.moved) {
      // The moved items are the selection where they landed.
      EXPECT_EQ(static_cast<int>(to.SelectedItems().size()), c.moved);
      EXPECT_TRUE(to.currentItem()->isSelected());
    }
  }
}

TEST(DragList, TheLeaveFilterKeepsItemsButAllowsReordering) {
  CNTDragListCtrl shown, hidden;
  shown.SetItems(Columns({0, 1, 2}));
  shown.SetLeaveFilter([](const DragListItem& item) { return item.value != 0; });
  QSignalSpy refused(&shown, &CNTDragListCtrl::MoveRefused);

  Select(shown, {0, 2});
  EXPECT_EQ(shown.MoveSelectedTo(&hidden), 1);
  EXPECT_EQ(shown.Items(), Columns({0, 1}));
  EXPECT_EQ(hidden.Items(), Columns({2}));
  ASSERT_EQ(refused.size(), 1);
  EXPECT_EQ(refused[0][0].value<DragListItem>(), (DragListItem{"Col0", 0}));

  Select(shown, {0});
  EXPECT_EQ(shown.MoveSelectedTo(&shown), 1);
  EXPECT_EQ(shown.Items(), Columns({1, 0}));
  EXPECT_EQ(refused.size(), 1);
}

// Qt's offscreen platform ends every drag at once, so the drop is driven
// through what the drop handler does with the point it is given.
TEST(DragList, ADropLandsWhereThePointerIs) {
  const struct {
    const char* name;
    int onto; // target row under the pointer; -1 below the items
    bool lowerHalf;
    Items target;
  } cases[] = {
      {"upperHalfOfFirst", 0, false, {{"Col1", 1}, {"Col10", 10}, {"Col11", 11}}},
      {"lowerHalfOfFirst", 0, true, {{"Col10", 10}, {"Col1", 1}, {"Col11", 11}}},
      {"lowerHalfOfLast", 1, true, {{"Col10", 10}, {"Col11", 11}, {"Col1", 1}}},
      {"belowTheItems", -1, false, {{"Col10", 10}, {"Col11", 11}, {"Col1", 1}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QWidget window;
    CNTDragListCtrl from(&window), to(&window);
    from.setGeometry(0, 0, 150, 200);
    to.setGeometry(200, 0, 150, 200);
    from.SetItems(Columns({0, 1, 2}));
    to.SetItems(Columns({10, 11}));
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QTest::mouseClick(from.viewport(), Qt::LeftButton, Qt::NoModifier,
                      from.visualItemRect(from.item(1)).center());

    QPoint at(10, to.viewport()->height() - 2);
    if (c.onto >= 0) {
      const QRect rect = to.visualItemRect(to.item(c.onto));
      at = rect.center() + QPoint(0, (c.lowerHalf ? 1 : -1) * rect.height() / 4);
    }
    EXPECT_EQ(to.DropSelectionOf(&from, at), 1);
    EXPECT_EQ(from.Items(), Columns({0, 2}));
    EXPECT_EQ(to.Items(), c.target);
  }
}

TEST(DragList, DragsFromElsewhereAreRefused) {
  CNTDragListCtrl list;
  list.SetItems(Columns({0}));
  QMimeData text;
  text.setText("Col9");
  QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(list.viewport(), &enter);
  EXPECT_FALSE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::MoveAction, &text, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(list.viewport(), &drop);
  EXPECT_FALSE(drop.isAccepted());
  EXPECT_EQ(list.Items(), Columns({0}));
}

} // namespace
} // namespace vh
