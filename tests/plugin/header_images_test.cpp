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
      for (int x = 0; x < 9; ++x) {
        const QRgb px = image.pixel(x, y);
        if (qAlpha(px) == 0)
          continue;
        EXPECT_EQ(px, grey) << "(" << x << "," << y << ")";
        ++strokes;
      }
    EXPECT_GT(strokes, 0);
    EXPECT_LT(strokes, 45) << "some of the mark must be transparent";
    images.append(image);
  }
  EXPECT_NE(images[0], images[1]);
  EXPECT_NE(images[0], images[2]);
  EXPECT_NE(images[1], images[2]);
  // Ascending and descending are mirror images of each other.
  EXPECT_EQ(images[0].mirrored(false, true), images[1]);
}

} // namespace
