// Pictures of a filled grid for a person to look at (written into the build
// tree), with checks of the colours that matter in them.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"

#include <QDir>
#include <QImage>

namespace vh::test {
namespace {

// Whether any pixel of `area` (in the grid's viewport) is close to colour
// `c` (text edges are blended with the background).
bool HasColour(CFilterListCtrl& grid, const QImage& image, QRect area, QColor c) {
  area.translate(grid.viewport()->mapTo(grid.window(), QPoint(0, 0)));
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      if (const QColor p = image.pixelColor(x, y); std::abs(p.red() - c.red()) < 24 &&
                                                   std::abs(p.green() - c.green()) < 24 &&
                                                   std::abs(p.blue() - c.blue()) < 24)
        return true;
  return false;
}

bool RowHasColour(CFilterListCtrl& grid, const QImage& image, int row, QColor c) {
  return HasColour(
      grid, image,
      QRect(0, grid.rowViewportPosition(row), grid.viewport()->width(), grid.rowHeight(row)), c);
}

class GridPictures : public GridTest {
protected:
  QImage Shoot(const char* name) {
    QCoreApplication::processEvents();
    QImage image = dialog_->grab().toImage();
    QDir().mkpath(VH_SCREENSHOT_DIR);
    image.save(QString(VH_SCREENSHOT_DIR) + "/" + name + ".png");
    return image;
  }
};

TEST_F(GridPictures, FilledGrid) {
  CFilterListCtrl& grid = MakeGrid();
  const char* symbols[] = {"INFY", "TCS", "SBIN", "ABB", "HDFC"};
  for (int i = 0; i < 40; ++i)
    AddRows({{"C" + std::to_string(1000 + i), symbols[i % 5], std::to_string(i * 25),
              std::to_string(100 + i) + ".75"}});
  dialog_->resize(520, 360);
  Show();
  grid.FitColumns(kFitHeader);
  const QImage plain = Shoot("grid_plain");
  EXPECT_FALSE(RowHasColour(grid, plain, 5, Qt::white));
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
  EXPECT_TRUE(RowHasColour(grid, Shoot("grid_selected"), 3, Qt::white));
  grid.clearSelection();

  sListAppearance a = grid.Appearance();
  a.keywordColumn = 1;
  a.keywordColouring = true;
  a.keywordTexts = std::make_shared<Texts>(Texts{"infy", "tcs"});
  a.keywordColours = std::make_shared<std::vector<uint32_t>>(std::vector<uint32_t>{0xFF, 0xFFFF00});
  grid.ApplyAppearance(a);
  const QImage keyword = Shoot("grid_keywords");
  EXPECT_TRUE(RowHasColour(grid, keyword, 0, QColor(255, 0, 0)));   // INFY red
  EXPECT_TRUE(RowHasColour(grid, keyword, 1, QColor(0, 255, 255))); // TCS cyan
  EXPECT_FALSE(RowHasColour(grid, keyword, 2, QColor(255, 0, 0)));

  // The owner's row colour wins over the keyword colour.
  grid.SetRowColourCallback([](CFilterListCtrl*, uint64_t item, int32_t& colour, int, int) {
    if (item == 2)
      colour = 0x00FFFF;
  });
  const QImage owner = Shoot("grid_row_colour");
  EXPECT_TRUE(RowHasColour(grid, owner, 1, QColor(255, 255, 0)));
  EXPECT_FALSE(RowHasColour(grid, owner, 1, QColor(0, 255, 255)));
  EXPECT_TRUE(RowHasColour(grid, owner, 0, QColor(255, 0, 0)));

  // Filtered down to 8 rows, with the gradient flag: rows fade to white,
  // and so does the area below them only while the grid paints it.
  grid.SetRowColourCallback(nullptr);
  grid.SetGradient(true);
  grid.ToggleFilterBar();
  QTest::keyClicks(grid.FilterHeader()->FilterField(1), "s");
  QTest::keyClick(grid.FilterHeader()->FilterField(1), Qt::Key_Return);
  ASSERT_EQ(grid.Model().rowCount(), 8);
  const int below = grid.rowViewportPosition(7) + grid.rowHeight(7) + 1;
  for (const bool painted : {false, true}) {
    grid.SetEmptyAreaPainting(painted);
    const QImage image = Shoot(painted ? "grid_gradient_filled" : "grid_gradient");
    EXPECT_TRUE(RowHasColour(grid, image, 5, Qt::white));
    const QRect area(0, below, grid.viewport()->width(), grid.rowHeight(0));
    EXPECT_EQ(HasColour(grid, image, area, Qt::white), painted);
  }
}

// An image column draws the image at the cell's right edge, or says it
// could not, in the row's text colour.
TEST_F(GridPictures, ImageColumn) {
  columns_[3].nFormat = kFormatImage;
  QPixmap red(8, 8);
  red.fill(Qt::red);
  for (const int image : {1, 2}) { // the list has no image 2
    CFilterListCtrl& grid = MakeGrid();
    grid.SetImageList({QIcon(), QIcon(red)});
    data_.image = image;
    AddRows(SampleRows());
    Show();
    const QImage shot = Shoot(image == 1 ? "grid_image" : "grid_image_failed");
    const QRect cell = grid.visualRect(grid.model()->index(0, 3));
    EXPECT_EQ(HasColour(grid, shot, cell.adjusted(cell.width() - 30, 0, 0, 0), Qt::red),
              image == 1);
    EXPECT_EQ(HasColour(grid, shot, cell, Qt::green), image == 2);
  }
}

} // namespace
} // namespace vh::test
