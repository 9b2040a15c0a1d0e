// Writes a widget's picture into the build tree for a look by eye, and says
// whether anything was drawn (a picture of one colour means nothing was).
#pragma once

#include <QDir>
#include <QImage>
#include <QWidget>

namespace vh::test {

inline bool SaveScreenshot(QWidget& widget, const QString& name) {
  QDir().mkpath(QStringLiteral(VH_SCREENSHOT_DIR));
  const QImage image = widget.grab().toImage();
  if (!image.save(QStringLiteral(VH_SCREENSHOT_DIR "/") + name + ".png"))
    return false;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      if (image.pixel(x, y) != image.pixel(0, 0))
        return true;
  return false;
}

} // namespace vh::test
