// Column profiles through UserSetting.ini in the test's own folder.
#include "tests/grid/widgets/grid_fixture.h"

#include <algorithm>

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

// Profiles written by hand or by another build: gaps, repeated positions and
// custom columns that reach one another in a ring (a column on itself is met
// by the key cache comparison).
// The grid loads them, shows blank cells for a ring, filters and sorts on it
// without losing rows, and writes a profile with rings back as it found it.
TEST_F(GridTest, ForeignProfilesCannotBreakTheTable) {
  const std::string builtins = "0,0,90,1,1,90,2,2,90,3,3,90";
  const struct {
    const char* name;
    std::string value;
    Texts headings;
    std::vector<int> ring; // header items of columns on or behind a ring
  } cases[] = {
      {"customLeavingAGap",
       builtins + ",9,4,80,Far#\"1\"#x",
       {"Client", "Symbol", "Qty", "Close"},
       {}},
      {"repeatedPositions", "0,0,90,1,0,90,2,1,90,3,2,90", {"Client", "Qty", "Close"}, {}},
      {"ringOfThreeBehindADivision",
       builtins + ",4,4,80,A# 4/\"5\"#4/B,5,5,80,B# \"6\"+1#C+1,6,6,80,C# \"4\"-1#A-1",
       {"Client", "Symbol", "Qty", "Close", "A", "B", "C"},
       {4, 5, 6}},
      {"ringThroughData",
       builtins + ",4,4,80,Value# \"2\"*\"3\"#Qty*Close,5,5,80,A# \"2\"*\"6\"#Qty*B,6,6,80,B# "
                  "\"3\"+\"5\"#Close+A",
       {"Client", "Symbol", "Qty", "Close", "Value", "A", "B"},
       {5, 6}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    WriteFile(dir_.file("UserSetting.ini"), "[testgrid]\nCOLUMNPROFILE=" + c.value + "\n");
    CFilterListCtrl& grid = MakeGrid();
    AddRows(SampleRows());
    Texts headings;
    for (int s = 0; s < grid.HeaderItemCount(); ++s)
      headings.push_back(grid.HeaderItemText(s).toStdString());
    EXPECT_EQ(headings, c.headings);
    for (int item : c.ring) {
      EXPECT_EQ(Shown(item), Texts(5, "")) << "item " << item;
      grid.SetFilter(item, ">0");
      grid.Model().Flush();
      EXPECT_EQ(grid.Model().rowCount(), 0);
      grid.Engine().ResetFilters();
      ClickSection(item); // a sort on the ring keeps every row once
      Texts clients = Shown(0);
      std::sort(clients.begin(), clients.end());
      EXPECT_EQ(clients, (Texts{"C001", "C002", "C003", "C004", "C005"}));
    }
    if (!c.ring.empty()) {
      ASSERT_TRUE(grid.SaveColumnProfile());
      EXPECT_EQ(Profile(dir_), c.value);
    }
    EXPECT_TRUE(messages_.messages().empty());
    dialog_.reset(); // saves its profile before the next case writes one
  }
}

} // namespace
} // namespace vh::test
