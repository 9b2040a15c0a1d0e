#include "grid/column_reposition.h"

#include "common/message.h"
#include "settings/settings_paths.h"
#include "tests/grid/editor_test_grid.h"
// The shared settings test helpers; this test reads no fixture files.
#define VH_SETTINGS_FIXTURES ""
#include "tests/settings/temp_dir.h"

#include <gtest/gtest.h>

namespace {

class ColumnRepositionTest : public ::testing::Test {
protected:
  vh::test::TempDir dir;
  vh::ScopedSettingsPaths paths{{dir.path().string(), dir.path().string()}};
  vh::ScopedMessageRecorder recorder;
  vh::testing::EditorTestGrid grid{
      {"Client id", "Qty", "Price", "Symbol"}, {3, 4, 2, 3}, {"C1", "1", "2", "S"}};
  vh::ColumnReposition dialog;
};

TEST_F(ColumnRepositionTest, ViewFollowsTheListsAndKeepsTheFirstColumn) {
  grid.positions = {0, -1, 1, 2}; // Qty hidden
  grid.ColumnsChanged();
  grid.header[1].width = 120; // Price, widened by the user
  dialog.Open(grid, false);
  dialog.ShowColumns({0});    // Qty, to the end
  dialog.HideColumns({2, 0}); // Symbol and Client id
  dialog.MoveShown(2, 1);     // Qty before Price
  dialog.Apply();
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Client id cannot be removed"}));
  EXPECT_EQ(grid.Headings(), (std::vector<std::string>{"Client id", "Qty", "Price"}));
  EXPECT_EQ(grid.positions[3], -1);
  EXPECT_EQ(grid.header[1].width, vh::kNewlyShownWidth);
  EXPECT_EQ(grid.header[2].width, 120);
  EXPECT_TRUE(grid.saves.empty()) << "View does not save";
  for (const bool sortMode : {true, false}) {
    dialog.Open(grid, sortMode);
    dialog.HideColumns({1});
    EXPECT_EQ(dialog.Save(), !sortMode);
  }
  EXPECT_EQ(grid.saves, (std::vector<std::vector<int32_t>>{{0, -1, 1, -1}}));
}

TEST_F(ColumnRepositionTest, SortIsKeptInTheProfileAndComesBackAsDefault) {
  grid.SetProfileName("rmsholdview");
  dialog.Open(grid, true);
  EXPECT_FALSE(dialog.Sort("Volume"));
  EXPECT_FALSE(dialog.Sort("Qty,X")) << "an unknown direction is part of the name";
  EXPECT_TRUE(dialog.Sort(" price , d "));
  EXPECT_EQ(grid.sort, std::make_pair(2, true));
  EXPECT_EQ(vh::test::ReadFile(dir.file("UserSetting.ini")),
            "[rmsholdview]\nDEFAULTSORT=Price,D\n");
  vh::ColumnReposition reopened;
  reopened.Open(grid, false);
  EXPECT_EQ(reopened.SavedDefaultSort(), "Price,D");
  vh::ScopedSettingsPaths missing{{dir.file("no-such-dir"), ""}};
  EXPECT_FALSE(reopened.Sort("Qty"));
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Volume is not a column of this grid",
                                                           "Qty,X is not a column of this grid",
                                                           "Error while saving column profile"}));
}

} // namespace
