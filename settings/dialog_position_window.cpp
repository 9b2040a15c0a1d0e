#include "settings/dialog_position_window.h"

#include <algorithm>

#include <QRect>
#include <QWidget>

#include "settings/dialog_position.h"

namespace vh {
namespace {

// A window has a sizing border unless its size is pinned.
bool IsResizable(const QWidget* w) {
  return w->minimumSize() != w->maximumSize() &&
         !w->windowFlags().testFlag(Qt::MSWindowsFixedSizeDialogHint);
}

// Width or height of a stored rectangle; a file can hold any numbers, so the
// difference is taken wide and kept within what a widget accepts.
int Extent(int from, int to) {
  const long long extent = static_cast<long long>(to) - from;
  return static_cast<int>(std::clamp<long long>(extent, 0, QWIDGETSIZE_MAX));
}

int ShowStateOf(const QWidget* w) {
  if (w->isMinimized())
    return 2;
  if (w->isMaximized())
    return 3;
  return 1;
}

} // namespace

void SaveDialogPosition(QWidget* window, const std::string& name) {
  if (name.empty() || !window || !window->testAttribute(Qt::WA_WState_Created))
    return;
  // The normal geometry is the placement the window returns to when it is
  // neither minimised nor maximised; rectangles keep the exclusive
  // right/bottom edges they have always been stored with.
  const QRect r =
      window->normalGeometry().isValid() ? window->normalGeometry() : window->geometry();
  sWindowPlacement p;
  p.normalTop = r.top();
  p.normalLeft = r.left();
  p.normalBottom = r.top() + r.height();
  p.normalRight = r.left() + r.width();
  p.showState = ShowStateOf(window);
  WriteWindowPlacement(name, p);
}

void RestoreDialogPosition(QWidget* window, const std::string& name) {
  if (!window)
    return;
  const bool resizable = IsResizable(window);
  const auto p = ReadWindowPlacement(name);
  if (!p)
    return;
  const QRect saved(p->normalLeft, p->normalTop, Extent(p->normalLeft, p->normalRight),
                    Extent(p->normalTop, p->normalBottom));
  if (resizable)
    window->setGeometry(saved);
  else
    window->move(saved.topLeft());
  window->update();
}

} // namespace vh
