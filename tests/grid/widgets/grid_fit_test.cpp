// Fitting column widths: the three modes and where each stops.
#include "grid/widgets/grid_commands.h"
#include "tests/grid/widgets/grid_fixture.h"

namespace vh::test {
namespace {

class GridFitTest : public GridTest {
protected:
  // A top-level grid of `columns` columns headed `heading`, one row of
  // `cell`s, whose rows area is exactly `client` pixels wide.
  CFilterListCtrl& Fitting(int columns, const std::string& heading, const std::string& cell,
                           int client) {
    auto grid = std::make_unique<CFilterListCtrl>();
    std::vector<sTarnColInfo> infos(static_cast<size_t>(columns));
    for (sTarnColInfo& info : infos) {
      info.SetName(heading);
      info.nWidth = 90;
    }
    grid->Engine().SetOwnerDataSource(&GridRows::Fetch, &data_);
    grid->SetProfileName("fit");
    grid->SetUpColumns(std::move(infos));
    data_.rows = {std::vector<std::string>(size_t(columns), cell)};
    grid->SetItemData(grid->InsertItem(0), 1);
    grid->Model().Flush();
    grid->resize(client + 40, 200);
    grid->show();
    grid->resize(grid->width() + client - grid->viewport()->width(), 200);
    own_ = std::move(grid);
    return *own_;
  }
  std::unique_ptr<CFilterListCtrl> own_;
};

TEST_F(GridFitTest, ModesAndTheirFloors) {
  const std::string longText(40, 'W');
  const struct {
    const char* name;
    int mode, columns;
    std::string heading, cell;
    int least, most; // every column's width lies in [least, most]
  } cases[] = {
      {"windowSevenIn500", kFitWindow, 7, "H", "1", 71, 71},
      {"windowHasNoFloor", kFitWindow, 12, "H", "1", 41, 41},
      {"dataFloor", kFitData, 3, longText, "1", 50, 50},
      {"dataWide", kFitData, 3, "H", longText, 120, 1000},
      {"headerFloor", kFitHeader, 3, "H", "1", 50, 50},
      {"headerTakesHeading", kFitHeader, 3, longText, "1", 120, 1000},
      {"headerTakesData", kFitHeader, 3, "H", longText, 120, 1000},
  };
  for (const auto& c : cases) {
    CFilterListCtrl& grid = Fitting(c.columns, c.heading, c.cell, 500);
    ASSERT_EQ(grid.viewport()->width(), 500) << c.name;
    grid.FitColumns(c.mode);
    for (int s = 0; s < grid.HeaderItemCount(); ++s) {
      EXPECT_GE(grid.horizontalHeader()->sectionSize(s), c.least) << c.name << " " << s;
      EXPECT_LE(grid.horizontalHeader()->sectionSize(s), c.most) << c.name << " " << s;
    }
  }
}

} // namespace
} // namespace vh::test
