// Owner drawing of the filtering grid's cells: the row's colours (owner
// outputs, keyword colour, row-colour callback), the selection gradients,
// white selected text, and each column's format with 3-pixel margins and an
// ellipsis. Image columns draw their icon 30 pixels wide at the right edge.
#pragma once

#include "grid/widgets/filter_list_ctrl.h"

#include <QAbstractItemDelegate>

namespace vh {

// The background of a row that is not selected: solid, or with `gradient`
// from `colour` at the top to white at the bottom.
void FillRowBackground(QPainter* painter, const QRect& rect, const QColor& colour, bool gradient);

class RowDelegate final : public QAbstractItemDelegate {
public:
  explicit RowDelegate(CFilterListCtrl* grid);
  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
  CFilterListCtrl* grid_;
  // The view paints row by row, so the row's colours are worked out once
  // per row and paint, not once per cell.
  mutable int cachedRow_ = -1;
  mutable unsigned cachedPaint_ = 0;
  mutable CFilterListCtrl::RowColours cached_;
};

} // namespace vh
