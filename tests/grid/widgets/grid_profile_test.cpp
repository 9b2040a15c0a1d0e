// Column profiles through UserSetting.ini in the test's own folder.
#include "tests/grid/widgets/grid_fixture.h"

namespace vh::test {
namespace {

std::string Profile(const TempDir& dir) {
  return Get("testgrid", "COLUMNPROFILE", dir.file("UserSetting.ini"), 4096);
}

TEST_F(GridTest, ProfileRoundTripKeepsOrderWidthsAndCustomColumns) {
  CFilterListCtrl& first = MakeGrid();
  first.AddToRegistry();
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{"File Open Failed"});
  sTarnColInfo value;
  value.SetName("Value");
  value.strExpression = " \"2\"*\"3\"";
  value.strDisplayExpression = "Qty*Close";
  value.nWidth = 120;
  first.InsertCustomColumn(value);
  first.horizontalHeader()->resizeSection(1, 133);
  AddRows({{"C1", "S", "4", "2.5"}, {"C2", "S", "5", "1.5"}});
  first.SetFilter(2, ">1");
  first.SetFilter(3, ">2");
  first.horizontalHeader()->moveSection(3, 0); // Close dragged to the front
  ASSERT_TRUE(first.DeleteHeaderColumn(2));    // Qty leaves the header
  dialog_.reset();                             // destroy saves, and leaves the registry
  EXPECT_TRUE(CCommonListCtrl::Registry().empty());
  EXPECT_EQ(Profile(dir_), "0,1,90,1,2,133,2,-1,0,3,0,90,4,3,120,Value# \"2\"*\"3\"#Qty*Close");

  messages_.clear();
  CFilterListCtrl& second = MakeGrid();
  EXPECT_TRUE(messages_.messages().empty());
  data_.rows.clear();
  AddRows({{"C1", "S", "4", "2.5"}});
  std::vector<std::pair<std::string, int>> shown; // heading and width, left to right
  for (int s = 0; s < second.HeaderItemCount(); ++s)
    shown.emplace_back(second.HeaderItemText(s).toStdString(),
                       second.horizontalHeader()->sectionSize(s));
  EXPECT_EQ(shown, (std::vector<std::pair<std::string, int>>{
                       {"Close", 90}, {"Client", 90}, {"Symbol", 133}, {"Value", 120}}));
  EXPECT_EQ(second.GetCellText(0, 3).toStdString(), "10.00");
}

TEST_F(GridTest, ForeignProfilesCannotBreakTheTable) {
  const struct {
    const char* name;
    const char* value;
    Texts headings;
  } cases[] = {
      {"customLeavingAGap",
       "0,0,90,1,1,90,2,2,90,3,3,90,9,4,80,Far#\"1\"#x",
       {"Client", "Symbol", "Qty", "Close"}},
      {"repeatedPositions", "0,0,90,1,0,90,2,1,90,3,2,90", {"Client", "Qty", "Close"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    WriteFile(dir_.file("UserSetting.ini"),
              std::string("[testgrid]\nCOLUMNPROFILE=") + c.value + "\n");
    CFilterListCtrl& grid = MakeGrid();
    Texts headings;
    for (int s = 0; s < grid.HeaderItemCount(); ++s)
      headings.push_back(grid.HeaderItemText(s).toStdString());
    EXPECT_EQ(headings, c.headings);
    dialog_.reset(); // saves its profile before the next case writes one
  }
}

} // namespace
} // namespace vh::test
