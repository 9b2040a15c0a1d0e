// Keeps a dialog's child controls in place as the dialog is resized: each
// registered control follows the right or bottom edge, or stretches with the
// dialog's width or height, by the change of the dialog's size since the
// control was registered.
//
// Positions are recomputed from the geometry each control had at
// registration, not added up resize after resize, so a dialog that is
// shrunk below its minimum and grown again puts every control back exactly.
// A width or height never goes below 0.
#pragma once

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>

#include <vector>

class QWidget;

namespace vh {

// Anchor flags, combined with |.
enum ControlAnchor : unsigned {
  kAnchorNone = 0,
  kFollowRight = 1,   // moves right by the width change
  kFollowBottom = 2,  // moves down by the height change
  kStretchWidth = 4,  // grows by the width change
  kStretchHeight = 8, // grows by the height change
};

class CControlPos : public QObject {
  Q_OBJECT
public:
  // Watches `dialog`'s resizes; `dialog` also owns this object.
  explicit CControlPos(QWidget* dialog);

  // Registers `control` (a child of the dialog) with its present geometry
  // and the dialog's present size. Registering it again replaces its anchors
  // and geometry. Returns false for a null control or no anchors.
  bool AddControl(QWidget* control, unsigned anchors);
  // The same for the dialog's control with id `controlId` (SetControlId);
  // false when there is none.
  bool AddControl(int controlId, unsigned anchors);
  // Stops moving `control`; it stays where it is.
  void RemoveControl(QWidget* control);

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  struct Entry {
    QPointer<QWidget> control;
    unsigned anchors;
    QRect geometry;   // at registration
    QSize dialogSize; // at registration
  };
  void Place(const Entry& entry, QSize dialogSize) const;

  QWidget* dialog_;
  std::vector<Entry> entries_;
};

} // namespace vh
