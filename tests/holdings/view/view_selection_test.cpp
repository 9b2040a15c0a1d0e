// The holdings grid's selection bookkeeping, through mouse clicks on the
// real grid over a tarn-riskd answer; and the message the answers are read into.
#include <QTest>
#include <gtest/gtest.h>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "kdl/message.h"
#include "tests/holdings/view/view_fixture.h"
#include "tests/kdl/wire_bytes.h"

namespace vh::test {
namespace {

class ViewSelection : public BackendFixture {};

TEST_F(ViewSelection, TheSelectedRowsRecordIsKeptUntilTheNextAnswer) {
  auto view = MakeView();
  ASSERT_TRUE(Click(view.get(), kRadioClient) && Pick(view.get(), kComboClient, BusiestClient()) &&
              Click(view.get(), kButtonViewHoldPos) && WaitForAnswers(*view));
  CFilterListCtrl* grid = view->HoldingsGrid();
  ASSERT_GE(grid->Engine().DisplayedCount(), 3);
  const auto click = [&](int row, Qt::KeyboardModifiers keys = {}) {
    const QRect cell = grid->visualRect(grid->model()->index(row, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, keys, cell.center());
  };
  // Each case: clicks (row, with Ctrl), then the row whose record is kept (-1: none).
  const struct {
    const char* name;
    std::vector<std::pair<int, bool>> clicks;
    int kept;
  } cases[] = {
      {"aClick", {{1, false}}, 1},
      {"ctrlClickAddsAndIsKept", {{0, false}, {2, true}}, 2},
      {"ctrlClickOffFallsBackToTheTopmost", {{2, false}, {0, true}, {0, true}}, 2},
      {"lastRowCtrlClickedOff", {{1, false}, {1, true}}, -1},
  };
  const auto recordAt = [&](int row) {
    return row < 0 ? 0 : grid->Engine().GetItemData(grid->Model().EngineRow(row));
  };
  for (const auto& c : cases) {
    for (const auto& [row, ctrl] : c.clicks)
      click(row, ctrl ? Qt::ControlModifier : Qt::NoModifier);
    EXPECT_EQ(reinterpret_cast<uint64_t>(view->SelectedRecord()), recordAt(c.kept)) << c.name;
  }
  click(1);
  ASSERT_TRUE(view->SelectedRecord() && Click(view.get(), kButtonViewHoldPos));
  EXPECT_EQ(view->SelectedRecord(), nullptr) << "a new answer starts without a selection";
}

// The view's answers are read one after another through one reused
// message: a refused message must leave nothing behind for the next.
TEST(ReusedMessage, RefusesRepeatedTagsAndReadsTheNextAnswerWhole) {
  // Fields tagged 1000, 1001, ... (the first and last as given), each
  // holding its position.
  const auto build = [](uint32_t fields, uint32_t firstTag, uint32_t lastTag) {
    std::string bytes = kdltest::U32(fields);
    for (uint32_t i = 0; i < fields; ++i)
      bytes += kdltest::FieldBytes(i == 0           ? firstTag
                                   : i + 1 < fields ? 1000 + i
                                                    : lastTag,
                                   {std::to_string(i)});
    return bytes;
  };
  const struct {
    const char* name;
    uint32_t fields, firstTag, lastTag;
    bool ok;
  } cases[] = {
      {"fewFieldsRepeatingTheFirst", 10, 1000, 1000, false},
      {"manyFieldsRepeatingTheFirst", 70, 1000, 1000, false},
      {"largestTagTwice", 10, UINT32_MAX, UINT32_MAX, false},
      {"largestTagOnce", 10, 1000, UINT32_MAX, true},
      {"manyFieldsNoRepeat", 70, 1000, 1069, true},
  };
  kdl::Message reader = kdl::Message::Reader();
  for (const auto& c : cases) {
    EXPECT_EQ(reader.ParseInto(build(c.fields, c.firstTag, c.lastTag)), c.ok) << c.name;
    EXPECT_EQ(reader.Text(1001).has_value(), c.ok) << c.name;
    if (c.ok) {
      EXPECT_EQ(reader.Text(c.lastTag), std::to_string(c.fields - 1)) << c.name;
    }
  }
}

} // namespace
} // namespace vh::test
