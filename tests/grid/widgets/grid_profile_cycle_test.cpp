// Stored column profiles whose custom columns refer to themselves or to one
// another in a ring: the grid loads them, shows blank cells for the ring,
// filters on it without losing rows, and writes the profile back
// as it found it.
#include "tests/grid/widgets/grid_fixture.h"

#include <algorithm>

namespace vh::test {
namespace {

std::string StoredProfile(const TempDir& dir) {
  return Get("testgrid", "COLUMNPROFILE", dir.file("UserSetting.ini"), 4096);
}

constexpr const char* kBuiltins = "0,0,90,1,1,90,2,2,90,3,3,90";

TEST_F(GridTest, StoredRingsOfCustomColumnsLoadAndStayBlank) {
  const struct {
    const char* name;
    std::string custom;    // the profile's custom column groups
    std::vector<int> ring; // header items of columns on or behind a ring
    int sound;             // header item of Qty*Close
  } cases[] = {
      {"itself", ",4,4,80,Self# \"4\"+1#Self+1,5,5,80,Value# \"2\"*\"3\"#Qty*Close", {4}, 5},
      {"sound column first, then a ring through data",
       ",4,4,80,Value# \"2\"*\"3\"#Qty*Close,5,5,80,A# \"2\"*\"6\"#Qty*B,6,6,80,B# "
       "\"3\"+\"5\"#Close+A",
       {5, 6},
       4},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string stored = kBuiltins + c.custom;
    WriteFile(dir_.file("UserSetting.ini"), "[testgrid]\nCOLUMNPROFILE=" + stored + "\n");
    CFilterListCtrl& grid = MakeGrid();
    AddRows(SampleRows());
    const int rows = int(SampleRows().size());
    ASSERT_EQ(grid.HeaderItemCount(), 4 + int(c.ring.size()) + 1);

    for (int item : c.ring) {
      EXPECT_EQ(Shown(item), Texts(size_t(rows), "")) << "item " << item;
      grid.SetFilter(item, ">0");
      grid.Model().Flush();
      EXPECT_EQ(grid.Model().rowCount(), 0);
      grid.Engine().ResetFilters();
      grid.Model().Flush();
      EXPECT_EQ(grid.Model().rowCount(), rows);
    }
    Texts products = Shown(c.sound);
    std::sort(products.begin(), products.end());
    EXPECT_EQ(products, (Texts{"0.00", "1202800.00", "181230.00", "453600.00", "49807.50"}));
    EXPECT_TRUE(messages_.messages().empty());

    ASSERT_TRUE(grid.SaveColumnProfile());
    EXPECT_EQ(StoredProfile(dir_), stored);
    dialog_.reset(); // saves its profile before the next case writes one
  }
}

} // namespace
} // namespace vh::test
