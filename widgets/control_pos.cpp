#include "widgets/control_pos.h"

#include <QEvent>
#include <QWidget>

#include <algorithm>

#include "plugin/tarn_host_api.h"

namespace vh {

CControlPos::CControlPos(QWidget* dialog) : QObject(dialog), dialog_(dialog) {
  if (dialog_ != nullptr)
    dialog_->installEventFilter(this);
}

bool CControlPos::AddControl(QWidget* control, unsigned anchors) {
  if (control == nullptr || dialog_ == nullptr || anchors == kAnchorNone)
    return false;
  RemoveControl(control);
  entries_.push_back({control, anchors, control->geometry(), dialog_->size()});
  return true;
}

bool CControlPos::AddControl(int controlId, unsigned anchors) {
  return AddControl(GetDlgItem(dialog_, controlId), anchors);
}

void CControlPos::RemoveControl(QWidget* control) {
  entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                [control](const Entry& e) { return e.control == control; }),
                 entries_.end());
}

void CControlPos::Place(const Entry& entry, QSize dialogSize) const {
  const int dx = dialogSize.width() - entry.dialogSize.width();
  const int dy = dialogSize.height() - entry.dialogSize.height();
  QRect g = entry.geometry;
  if (entry.anchors & kFollowRight)
    g.moveLeft(g.left() + dx);
  if (entry.anchors & kFollowBottom)
    g.moveTop(g.top() + dy);
  if (entry.anchors & kStretchWidth)
    g.setWidth(std::max(0, g.width() + dx));
  if (entry.anchors & kStretchHeight)
    g.setHeight(std::max(0, g.height() + dy));
  entry.control->setGeometry(g);
}

bool CControlPos::eventFilter(QObject* watched, QEvent* event) {
  if (watched == dialog_ && event->type() == QEvent::Resize) {
    for (const Entry& entry : entries_)
      if (entry.control)
        Place(entry, dialog_->size());
  }
  return QObject::eventFilter(watched, event);
}

} // namespace vh
