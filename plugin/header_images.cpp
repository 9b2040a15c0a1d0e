#include "plugin/header_images.h"

#include <QGuiApplication>
#include <QImage>
#include <QPalette>

namespace vh {
namespace {

// 9 x 5 masks, '#' = stroke. 131: up (ascending), 132: down (descending),
// 133: a small funnel for a filtered column.
constexpr const char* kMarks[3][5] = {
    {"....#....", "...###...", "..#####..", ".#######.", "#########"},
    {"#########", ".#######.", "..#####..", "...###...", "....#...."},
    {"#########", ".#######.", "...###...", "...###...", "....#...."},
};

QPixmap drawMark(const char* const rows[5], QRgb stroke) {
  QImage image(HeaderImageList::kWidth, HeaderImageList::kHeight, QImage::Format_ARGB32);
  image.fill(Qt::transparent); // the white mask colour
  for (int y = 0; y < HeaderImageList::kHeight; ++y)
    for (int x = 0; x < HeaderImageList::kWidth; ++x)
      if (rows[y][x] == '#')
        image.setPixel(x, y, stroke);
  return QPixmap::fromImage(image);
}

} // namespace

HeaderImageList MakeHeaderImageList() {
  // Black in the bitmaps stands for "grey text", so the marks follow the theme.
  const QRgb stroke =
      QGuiApplication::palette().color(QPalette::Disabled, QPalette::WindowText).rgba();
  HeaderImageList list;
  for (const auto& rows : kMarks)
    list.images.append(drawMark(rows, stroke));
  return list;
}

} // namespace vh
