// The column profile dialog through its controls, over the test grid and a
// settings directory of its own.
#include "grid/editor/reposition_columns.h"

#include "common/message.h"
#include "plugin/tarn_host_api.h"
#include "settings/settings_paths.h"
#include "tests/grid/editor_test_grid.h"
#include "widgets/drag_list_ctrl.h"
// The shared settings test helpers; this test reads no fixture files.
#define VH_SETTINGS_FIXTURES ""
#include "tests/settings/temp_dir.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;
using C = CRepositionColumns;

class RepositionColumnsTest : public ::testing::Test {
protected:
  template <typename T> T* Control(int id) { return qobject_cast<T*>(GetDlgItem(&dlg, id)); }
  void Click(int id) { QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton); }
  // Clicks the entries, the later ones with Ctrl held.
  void Select(int listId, std::initializer_list<const char*> names) {
    auto* list = Control<vh::CNTDragListCtrl>(listId);
    Qt::KeyboardModifiers modifiers;
    for (const char* name : names) {
      const QRect r = list->visualItemRect(list->findItems(name, Qt::MatchExactly).at(0));
      QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, r.center());
      modifiers = Qt::ControlModifier;
    }
  }

  vh::test::TempDir dir;
  vh::ScopedSettingsPaths paths{{dir.path().string(), dir.path().string()}};
  vh::ScopedMessageRecorder recorder;
  vh::testing::EditorTestGrid grid{
      {"Client id", "Qty", "Price", "Symbol"}, {3, 4, 2, 3}, {"C1", "1", "2", "S"}};
  C dlg;
};

TEST_F(RepositionColumnsTest, MovesAndViewLayTheHeaderOut) {
  grid.positions = {0, -1, 1, 2}; // Qty hidden
  grid.ColumnsChanged();
  grid.header[1].width = 120; // Price, widened by the user
  dlg.Open(grid, false);
  EXPECT_EQ(dlg.windowTitle(), " Column Profile");
  Select(C::kHiddenListId, {"Qty"});
  Click(C::kShowId);
  Select(C::kShownListId, {"Client id", "Symbol"});
  Click(C::kHideId);
  EXPECT_EQ(recorder.messages(), Texts{"Client id cannot be removed"});
  EXPECT_TRUE(dlg.grab().save(VH_SCREENSHOT_DIR "/reposition.png"));
  QTest::keyClick(Control<QWidget>(C::kShownListId), Qt::Key_Return); // "&View", the default
  EXPECT_TRUE(dlg.isVisible());
  EXPECT_EQ(grid.Headings(), (Texts{"Client id", "Price", "Qty"}));
  EXPECT_EQ(grid.positions[3], -1);
  EXPECT_EQ(grid.header[1].width, 120);
  EXPECT_EQ(grid.header[2].width, vh::kNewlyShownWidth);
  EXPECT_TRUE(grid.saves.empty()) << "View does not save";
}

TEST_F(RepositionColumnsTest, SortModeKeepsTheDefaultSortInTheProfile) {
  grid.SetProfileName("rmsholdview");
  dlg.Open(grid, true);
  EXPECT_FALSE(Control<QPushButton>(C::kSaveId)->isEnabled());
  for (const char* typed : {"Volume", " price , d "}) {
    Control<QLineEdit>(C::kSortEditId)->clear();
    QTest::keyClicks(Control<QWidget>(C::kSortEditId), typed);
    QTest::keyClick(Control<QWidget>(C::kSortEditId), Qt::Key_Return); // "Sort", the default
  }
  EXPECT_EQ(grid.sort, std::make_pair(2, true));
  EXPECT_EQ(vh::test::ReadFile(dir.file("UserSetting.ini")),
            "[rmsholdview]\r\nDEFAULTSORT=Price,D\r\n");
  EXPECT_TRUE(dlg.grab().save(VH_SCREENSHOT_DIR "/reposition_sort.png"));
  dlg.Open(grid, false);
  Click(C::kDefaultId);
  EXPECT_EQ(Control<QLineEdit>(C::kSortEditId)->text(), "Price,D");
  Select(C::kShownListId, {"Qty"});
  Click(C::kHideId);
  Click(C::kSaveId);
  EXPECT_FALSE(dlg.isVisible());
  EXPECT_EQ(grid.saves, (std::vector<std::vector<int32_t>>{{0, -1, 1, 2}}));
  vh::ScopedSettingsPaths missing{{dir.file("no-such-dir"), ""}};
  dlg.Open(grid, true);
  Click(C::kDefaultId);
  Click(C::kSortId);
  EXPECT_EQ(recorder.messages(),
            (Texts{"Volume is not a column of this grid", "Error while saving column profile"}));
}

} // namespace
