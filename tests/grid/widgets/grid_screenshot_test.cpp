// Pictures of a filled grid for a person to look at (written into the build
// tree), with checks of the colours that matter in them.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"

#include <QDir>
#include <QImage>

namespace vh::test {
namespace {

// Whether any pixel of row `row` of the grid's viewport is close to colour
// `c` (text edges are blended with the background).
bool RowHasColour(CFilterListCtrl& grid, const QImage& image, int row, QColor c) {
  const QPoint origin = grid.viewport()->mapTo(grid.window(), QPoint(0, 0));
  const int top = origin.y() + grid.rowViewportPosition(row);
  for (int y = top; y < top + grid.rowHeight(row); ++y)
    for (int x = origin.x(); x < origin.x() + grid.viewport()->width(); ++x)
      if (const QColor p = image.pixelColor(x, y); std::abs(p.red() - c.red()) < 24 &&
                                                   std::abs(p.green() - c.green()) < 24 &&
                                                   std::abs(p.blue() - c.blue()) < 24)
        return true;
  return false;
}

TEST_F(GridTest, ScreenshotsOfAFilledGrid) {
  CFilterListCtrl& grid = MakeGrid();
  const char* symbols[] = {"INFY", "TCS", "SBIN", "ABB", "HDFC"};
  std::vector<std::vector<std::string>> rows;
  for (int i = 0; i < 40; ++i)
    rows.push_back({"C" + std::to_string(1000 + i), symbols[i % 5], std::to_string(i * 25),
                    std::to_string(100 + i) + ".75"});
  AddRows(rows);
  dialog_->resize(520, 360);
  Show();
  grid.FitColumns(kFitHeader);
  QDir().mkpath(VH_SCREENSHOT_DIR);
  const auto shoot = [&](const char* name) {
    QCoreApplication::processEvents();
    QImage image = dialog_->grab().toImage();
    image.save(QString(VH_SCREENSHOT_DIR) + "/" + name + ".png");
    return image;
  };
  const QImage plain = shoot("grid_plain");
  // The sort mark of the set-up sort column, and none on the next column.
  const QImage header = grid.horizontalHeader()->grab().toImage();
  const QColor mark = CCommonListCtrl::HeaderImages().images[0].toImage().pixelColor(4, 4);
  const auto markPixels = [&](int section) {
    int n = 0;
    const int left = grid.horizontalHeader()->sectionViewportPosition(section);
    for (int x = left; x < left + grid.horizontalHeader()->sectionSize(section); ++x)
      for (int y = 0; y < header.height(); ++y)
        n += header.pixelColor(x, y) == mark;
    return n;
  };
  EXPECT_GE(markPixels(0), 20);
  EXPECT_LT(markPixels(1), 5);

  grid.setFocus();
  grid.selectionModel()->select(
      QItemSelection(grid.model()->index(2, 0), grid.model()->index(4, 3)),
      QItemSelectionModel::Select);
  const QImage selected = shoot("grid_selected");
  EXPECT_TRUE(RowHasColour(grid, selected, 3, Qt::white));
  grid.clearSelection();

  grid.ToggleFilterBar();
  QTest::keyClicks(grid.FilterHeader()->FilterField(1), "s");
  QTest::keyClick(grid.FilterHeader()->FilterField(1), Qt::Key_Return);
  shoot("grid_filtered");
  EXPECT_EQ(grid.Model().rowCount(), 8);
  grid.ResetFilters();
  grid.ToggleFilterBar();
  grid.clearSelection();

  sListAppearance a = grid.Appearance();
  a.keywordColumn = 1;
  a.keywordColouring = true;
  a.keywordTexts =
      std::make_shared<std::vector<std::string>>(std::vector<std::string>{"infy", "tcs"});
  a.keywordColours =
      std::make_shared<std::vector<uint32_t>>(std::vector<uint32_t>{0x0000FF, 0xFFFF00});
  grid.ApplyAppearance(a);
  const QImage keyword = shoot("grid_keywords");
  EXPECT_TRUE(RowHasColour(grid, keyword, 0, QColor(255, 0, 0)));   // INFY red
  EXPECT_TRUE(RowHasColour(grid, keyword, 1, QColor(0, 255, 255))); // TCS cyan
  EXPECT_FALSE(RowHasColour(grid, keyword, 2, QColor(255, 0, 0)));

  // The owner's row colour wins over the keyword colour.
  grid.SetRowColourCallback([](CFilterListCtrl*, uint64_t item, int32_t& colour, int, int) {
    if (item == 2)
      colour = 0x00FFFF;
  });
  const QImage owner = shoot("grid_row_colour");
  EXPECT_TRUE(RowHasColour(grid, owner, 1, QColor(255, 255, 0)));
  EXPECT_FALSE(RowHasColour(grid, owner, 1, QColor(0, 255, 255)));
  EXPECT_TRUE(RowHasColour(grid, owner, 0, QColor(255, 0, 0)));
}

} // namespace
} // namespace vh::test
