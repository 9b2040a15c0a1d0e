// Writes a widget's picture into the build tree, for a look by eye.
#pragma once

#include <QDir>
#include <QWidget>

namespace vh::test {

// False when the picture could not be written.
inline bool SaveScreenshot(QWidget& widget, const QString& name) {
  return QDir().mkpath(QStringLiteral(VH_SCREENSHOT_DIR)) &&
         widget.grab().save(QStringLiteral(VH_SCREENSHOT_DIR "/") + name + ".png");
}

} // namespace vh::test
