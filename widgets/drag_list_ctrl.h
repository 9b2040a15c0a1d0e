// A list of (text, number) items, here column names with their column
// numbers, that the user reorders by drag and drop and drags into another
// CNTDragListCtrl (the shown and hidden columns of the column profile).
//
// Items are selected with extended selection (Shift and Ctrl clicks); a drag
// carries the selected items, in list order, and drops them before or after
// the item under the cursor (after the last one below the items). Only drags
// from a CNTDragListCtrl are accepted; anything else is refused.
#pragma once

#include <QListWidget>
#include <QString>

#include <functional>
#include <vector>

namespace vh {

struct DragListItem {
  QString text;
  int value = 0;
  bool operator==(const DragListItem&) const = default;
};

class CNTDragListCtrl : public QListWidget {
  Q_OBJECT
public:
  // Decides whether an item may leave this list for another one.
  using LeaveFilter = std::function<bool(const DragListItem&)>;

  explicit CNTDragListCtrl(QWidget* parent = nullptr);

  // Replaces every item.
  void SetItems(const std::vector<DragListItem>& items);
  // Every item, top to bottom.
  std::vector<DragListItem> Items() const;
  // The selected items, top to bottom.
  std::vector<DragListItem> SelectedItems() const;

  // Items for which `filter` returns false stay in this list when a move or
  // a drag would take them to another list (reordering here is still
  // allowed); each refusal emits MoveRefused. An empty filter lets all go.
  void SetLeaveFilter(LeaveFilter filter);

  // Moves the selected items, in list order, into `target` (which may be
  // this list) before its row `row`, or after its last item when `row` is
  // negative or beyond the end. The moved items end up selected in
  // `target`, the first one current. Returns how many moved; 0 for a null
  // target or nothing selected.
  int MoveSelectedTo(CNTDragListCtrl* target, int row = -1);

  // What a drop of `source`'s selection at `viewportPos` (in this list's
  // viewport) does: the items land before the item under that point when it
  // is in the item's upper half, after it in its lower half, and after the
  // last item below the items. Returns MoveSelectedTo's result.
  int DropSelectionOf(CNTDragListCtrl* source, QPoint viewportPos);

signals:
  // The items or their order changed, by the API above or by a drop; a
  // drop is reported once, complete, by both lists.
  void ItemsChanged();
  // `item` was kept back by the leave filter.
  void MoveRefused(const DragListItem& item);

protected:
  void startDrag(Qt::DropActions supportedActions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private:
  static DragListItem ItemOf(const QListWidgetItem* item);
  static QListWidgetItem* NewItem(const DragListItem& item);
  bool AcceptsDrag(const QDropEvent* event) const;

  LeaveFilter leaveFilter_;
};

} // namespace vh
