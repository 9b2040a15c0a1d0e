#include "grid/column_reposition.h"

#include "common/message.h"
#include "settings/settings_paths.h"
#include "tests/grid/editor_test_grid.h"
// The shared settings test helpers; this test reads no fixture files.
#define VH_SETTINGS_FIXTURES ""
#include "tests/settings/temp_dir.h"

#include <gtest/gtest.h>

namespace {

using vh::testing::EditorTestGrid;

class ColumnRepositionTest : public ::testing::Test {
protected:
  ColumnRepositionTest() { grid.SetProfileName("rmsholdview"); }
  std::vector<std::string> Names(const std::vector<int>& columns) {
    std::vector<std::string> names;
    for (const int c : columns)
      names.push_back(dialog.NameOf(c));
    return names;
  }

  vh::test::TempDir dir;
  vh::ScopedSettingsPaths paths{{dir.path().string(), dir.path().string()}};
  vh::ScopedMessageRecorder recorder;
  EditorTestGrid grid{
      {"Client id", "Qty", "Price", "Symbol"}, {3, 4, 2, 3}, {{"C1", "1", "2", "S"}}};
  vh::ColumnReposition dialog;
};

TEST_F(ColumnRepositionTest, DefaultSortTexts) {
  const struct {
    const char* name;
    const char* text;
    bool ok;
    int column;
    bool descending;
  } cases[] = {
      {"name alone sorts ascending", "Qty", true, 1, false},
      {"descending, any case, blanks", " qty , d ", true, 1, true},
      {"ascending spelt out", "Price,A", true, 2, false},
      {"empty clears", "", true, -1, false},
      {"blank clears", "   ", true, -1, false},
      {"unknown column", "Volume", false, -1, false},
      {"unknown direction is part of the name", "Qty,X", false, -1, false},
  };
  for (const auto& c : cases) {
    vh::DefaultSort sort;
    EXPECT_EQ(vh::ParseDefaultSort(c.text, grid.table, sort), c.ok) << c.name;
    EXPECT_EQ(sort.column, c.column) << c.name;
    EXPECT_EQ(sort.descending, c.descending) << c.name;
  }
}

TEST_F(ColumnRepositionTest, FirstDataColumnCannotBeHidden) {
  dialog.Open(grid, false);
  dialog.HideColumns({2, 0});
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Client id cannot be removed"}));
  EXPECT_EQ(Names(dialog.Shown()), (std::vector<std::string>{"Client id", "Qty", "Symbol"}));
  EXPECT_EQ(Names(dialog.Hidden()), (std::vector<std::string>{"Price"}));
}

TEST_F(ColumnRepositionTest, ViewLaysTheHeaderOutInListOrder) {
  grid.positions = {0, -1, 1, 2}; // Qty hidden
  grid.ColumnsChanged();
  grid.header[1].width = 120; // Price, widened by the user
  dialog.Open(grid, false);
  EXPECT_EQ(Names(dialog.Hidden()), (std::vector<std::string>{"Qty"}));
  dialog.ShowColumns({0});
  dialog.HideColumns({2}); // Symbol
  dialog.MoveShown(2, 1);  // Qty before Price
  dialog.Apply();
  EXPECT_EQ(grid.positions, (std::vector<int32_t>{0, 1, 2, -1}));
  EXPECT_EQ(grid.Headings(), (std::vector<std::string>{"Client id", "Qty", "Price"}));
  EXPECT_EQ(grid.header[1].width, vh::kNewlyShownWidth);
  EXPECT_EQ(grid.header[2].width, 120);
  EXPECT_TRUE(grid.saves.empty()) << "View does not save";
}

TEST_F(ColumnRepositionTest, SaveOnlyInNormalMode) {
  dialog.Open(grid, true);
  dialog.HideColumns({1});
  EXPECT_FALSE(dialog.Save());
  EXPECT_TRUE(grid.saves.empty());
  EXPECT_EQ(grid.positions[1], 1);
  dialog.Open(grid, false);
  dialog.HideColumns({1});
  EXPECT_TRUE(dialog.Save());
  ASSERT_EQ(grid.saves.size(), 1u);
  EXPECT_EQ(grid.saves[0].positions, (std::vector<int32_t>{0, -1, 1, 2}));
}

TEST_F(ColumnRepositionTest, SortIsKeptInTheProfileAndComesBackAsDefault) {
  dialog.Open(grid, true);
  EXPECT_EQ(dialog.SavedDefaultSort(), "");
  EXPECT_FALSE(dialog.Sort("Volume"));
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Volume is not a column of this grid"}));
  EXPECT_TRUE(dialog.Sort("price, d"));
  EXPECT_EQ(grid.sortColumn, 2);
  EXPECT_TRUE(grid.sortDescending);
  EXPECT_EQ(vh::test::ReadFile(dir.file("UserSetting.ini")),
            "[rmsholdview]\nDEFAULTSORT=Price,D\n");
  vh::ColumnReposition reopened;
  reopened.Open(grid, false);
  EXPECT_EQ(reopened.SavedDefaultSort(), "Price,D");
}

TEST_F(ColumnRepositionTest, UnwritableProfileIsReported) {
  vh::ScopedSettingsPaths missing{{dir.file("no-such-dir"), ""}};
  dialog.Open(grid, false);
  EXPECT_FALSE(dialog.Sort("Qty"));
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"Error while saving column profile"}));
}

} // namespace
