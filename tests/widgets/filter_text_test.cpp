// The distinct-value pop-up, driven through its controls (offscreen).
#include "widgets/filter_text.h"

#include <QAbstractItemModelTester>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "plugin/tarn_host_api.h"

namespace vh {
namespace {

using Texts = std::vector<std::string>;

class FilterTextTest : public ::testing::Test {
protected:
  QListView* List() { return qobject_cast<QListView*>(GetDlgItem(&popup_, kFilterTextListId)); }

  void Open(Texts values, int column = 4) {
    popup_.Popup(std::move(values), column, QPoint(20, 30));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&popup_));
    ASSERT_NE(List(), nullptr);
  }

  // What the list shows, top to bottom.
  Texts Shown() {
    Texts shown;
    for (int row = 0; row < List()->model()->rowCount(); ++row)
      shown.push_back(List()->model()->index(row, 0).data().toString().toStdString());
    return shown;
  }

  QPoint Center(const std::string& text) {
    const auto* model = List()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
      const QModelIndex index = model->index(row, 0);
      if (index.data().toString().toStdString() == text) {
        List()->scrollTo(index);
        return List()->visualRect(index).center();
      }
    }
    ADD_FAILURE() << "no row " << text;
    return {};
  }

  void CtrlClick(const std::string& text) {
    QTest::mouseClick(List()->viewport(), Qt::LeftButton, Qt::ControlModifier, Center(text));
  }

  CFilterText popup_;
  QSignalSpy applied_{&popup_, &CFilterText::Applied};
};

TEST_F(FilterTextTest, ShowsTheValuesSortedOnceInFrontWithNothingSelected) {
  QAbstractItemModelTester tester(List()->model(),
                                  QAbstractItemModelTester::FailureReportingMode::Fatal);
  Open({"TCS", "infy", "", "Reliance", "TCS", "10", "9"});
  EXPECT_EQ(Shown(), (Texts{"10", "9", "infy", "Reliance", "TCS"}));
  EXPECT_TRUE(popup_.isActiveWindow());
  EXPECT_TRUE(List()->selectionModel()->selectedRows().isEmpty());
  EXPECT_EQ(List()->selectionMode(), QAbstractItemView::ExtendedSelection);
  EXPECT_EQ(popup_.Column(), 4);

  // Opening again replaces the list and forgets the selection.
  CtrlClick("TCS");
  Open({"b", "a"}, 7);
  EXPECT_EQ(Shown(), (Texts{"a", "b"}));
  EXPECT_TRUE(List()->selectionModel()->selectedRows().isEmpty());
  EXPECT_EQ(popup_.Column(), 7);
}

TEST_F(FilterTextTest, SelectedValuesApplyJoinedInListOrder) {
  const struct {
    const char* name;
    Texts values;
    Texts clicks; // Ctrl+clicks, in this order
    const char* filter;
  } cases[] = {
      {"one", {"ABC", "XYZ"}, {"XYZ"}, "XYZ"},
      {"twoInListOrderNotClickOrder", {"ABC", "MNO", "XYZ"}, {"XYZ", "ABC"}, "ABC~XYZ"},
      {"valueInsideAnEarlierOneDropped", {"ABC", "B", "C1"}, {"ABC", "B", "C1"}, "ABC~C1"},
      {"earlierInsideALaterOneKept", {"AB", "XAB"}, {"AB", "XAB"}, "AB~XAB"},
      {"caseMatters", {"abc", "B"}, {"abc", "B"}, "abc~B"},
      {"clickedTwiceIsUnselected", {"ABC", "XYZ"}, {"ABC", "XYZ", "ABC"}, "XYZ"},
      {"nothingSelectedClearsTheFilter", {"ABC"}, {}, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    applied_.clear();
    Open(c.values, 3);
    for (const std::string& text : c.clicks)
      CtrlClick(text);
    QTest::keyClick(List(), Qt::Key_Return);
    ASSERT_EQ(applied_.size(), 1);
    EXPECT_EQ(applied_[0][0].toInt(), 3);
    EXPECT_EQ(applied_[0][1].toString(), QString(c.filter));
    EXPECT_FALSE(popup_.isVisible());
  }
}

TEST_F(FilterTextTest, EveryApplyGestureApplies) {
  const struct {
    const char* name;
    void (*gesture)(QListView* list, QPoint at);
  } cases[] = {
      {"doubleClick",
       [](QListView* list, QPoint at) {
         // QTest's double click alone misses on a view never clicked before;
         // a user's double click starts with a click anyway.
         QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
         QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
       }},
      {"return",
       [](QListView* list, QPoint at) {
         QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
         QTest::keyClick(list, Qt::Key_Return);
       }},
      {"keypadEnter",
       [](QListView* list, QPoint at) {
         QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
         QTest::keyClick(list, Qt::Key_Enter, Qt::KeypadModifier);
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    applied_.clear();
    Open({"INFY", "TCS", "WIPRO"}, 2);
    c.gesture(List(), Center("TCS"));
    ASSERT_EQ(applied_.size(), 1);
    EXPECT_EQ(applied_[0][0].toInt(), 2);
    EXPECT_EQ(applied_[0][1].toString(), QString("TCS"));
    EXPECT_FALSE(popup_.isVisible());
  }
}

TEST_F(FilterTextTest, EveryWayOfLeavingCancels) {
  QWidget elsewhere;
  elsewhere.setGeometry(400, 300, 100, 100);
  const struct {
    const char* name;
    std::function<void()> leave;
  } cases[] = {
      {"anotherWindowActivated",
       [&] {
         elsewhere.show();
         elsewhere.activateWindow();
       }},
      {"escape", [&] { QTest::keyClick(List(), Qt::Key_Escape); }},
      {"hiddenCancelButton",
       [&] {
         auto* cancel = qobject_cast<QPushButton*>(GetDlgItem(&popup_, kFilterTextCancelId));
         ASSERT_NE(cancel, nullptr);
         EXPECT_FALSE(cancel->isVisible());
         cancel->click();
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Open({"INFY", "TCS"});
    CtrlClick("TCS");
    c.leave();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !popup_.isVisible(); }, 2000));
    EXPECT_EQ(applied_.size(), 0);
    elsewhere.hide();
  }
}

TEST_F(FilterTextTest, OpensAtThePointButStaysOnTheScreen) {
  const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
  const struct {
    const char* name;
    QPoint at;
    QPoint expected;
  } cases[] = {
      {"insideTheScreen", area.topLeft() + QPoint(10, 20), area.topLeft() + QPoint(10, 20)},
      {"pastTheBottomRight", area.bottomRight(),
       area.bottomRight() + QPoint(1, 1) - QPoint(popup_.width(), popup_.height())},
      {"aboveTheTopLeft", area.topLeft() - QPoint(50, 50), area.topLeft()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    popup_.Popup({"a"}, 0, c.at);
    EXPECT_EQ(popup_.pos(), c.expected);
  }
}

} // namespace
} // namespace vh
