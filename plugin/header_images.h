// The three 9 x 5 header marks (ascending, descending, filtered) that the
// list controls hand to their header. Drawn anew each time: the pure-black
// strokes take the palette's disabled text colour, white is transparent.
#pragma once

#include <QList>
#include <QPixmap>

namespace vh {

struct HeaderImageList {
  static constexpr int kWidth = 9;
  static constexpr int kHeight = 5;
  QList<QPixmap> images; // in resource order 131, 132, 133
};

// Resource ids of the three marks, in list order.
inline constexpr int kHeaderImageIds[3] = {131, 132, 133};

// Builds a new list of the three marks.
HeaderImageList MakeHeaderImageList();

} // namespace vh
