// The three header marks: drawn anew, 9 x 5, strokes in the palette's
// disabled text colour on a transparent ground, each a different shape.
#include <QGuiApplication>
#include <QImage>
#include <QPalette>
#include <gtest/gtest.h>

#include "plugin/header_images.h"

namespace {

TEST(HeaderImages, ThreeDistinctNineByFiveMarksInTheGreyTextColour) {
  const vh::HeaderImageList list = vh::MakeHeaderImageList();
  ASSERT_EQ(list.images.size(), 3);
  const QRgb grey =
      QGuiApplication::palette().color(QPalette::Disabled, QPalette::WindowText).rgba();
  QList<QImage> images;
  for (const QPixmap& p : list.images) {
    ASSERT_EQ(p.size(), QSize(9, 5));
    const QImage image = p.toImage().convertToFormat(QImage::Format_ARGB32);
    int strokes = 0;
    for (int y = 0; y < 5; ++y)
      for (int x = 0; x < 9; ++x)
        if (qAlpha(image.pixel(x, y)) != 0) {
          EXPECT_EQ(image.pixel(x, y), grey) << "(" << x << "," << y << ")";
          ++strokes;
        }
    EXPECT_TRUE(strokes > 0 && strokes < 45) << "a mark, not a filled box: " << strokes;
    EXPECT_FALSE(images.contains(image)) << "the same mark twice";
    images.append(image);
  }
  // Ascending and descending are mirror images of each other.
  EXPECT_EQ(images[0].mirrored(false, true), images[1]);
}

} // namespace
