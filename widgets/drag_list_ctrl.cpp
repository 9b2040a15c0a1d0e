#include "widgets/drag_list_ctrl.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>

#include <algorithm>

namespace vh {
namespace {

// The drag carries no data of its own: the drop reads the source's selection,
// which cannot change while the drag runs.
constexpr const char* kDragFormat = "application/x-vh-drag-list-items";

} // namespace

CNTDragListCtrl::CNTDragListCtrl(QWidget* parent) : QListWidget(parent) {
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setDragEnabled(true);
  setAcceptDrops(true);
  setDropIndicatorShown(true);
  setDragDropMode(QAbstractItemView::DragDrop);
  setDefaultDropAction(Qt::MoveAction);
}

DragListItem CNTDragListCtrl::ItemOf(const QListWidgetItem* item) {
  return {item->text(), item->data(Qt::UserRole).toInt()};
}

QListWidgetItem* CNTDragListCtrl::NewItem(const DragListItem& item) {
  auto* w = new QListWidgetItem(item.text);
  w->setData(Qt::UserRole, item.value);
  return w;
}

void CNTDragListCtrl::SetItems(const std::vector<DragListItem>& items) {
  clear();
  for (const DragListItem& item : items)
    addItem(NewItem(item));
  emit ItemsChanged();
}

std::vector<DragListItem> CNTDragListCtrl::Items() const {
  std::vector<DragListItem> items;
  for (int row = 0; row < count(); ++row)
    items.push_back(ItemOf(item(row)));
  return items;
}

std::vector<DragListItem> CNTDragListCtrl::SelectedItems() const {
  std::vector<DragListItem> items;
  for (int row = 0; row < count(); ++row)
    if (item(row)->isSelected())
      items.push_back(ItemOf(item(row)));
  return items;
}

void CNTDragListCtrl::SetLeaveFilter(LeaveFilter filter) {
  leaveFilter_ = std::move(filter);
}

int CNTDragListCtrl::MoveSelectedTo(CNTDragListCtrl* target, int row) {
  if (target == nullptr)
    return 0;
  if (row < 0 || row > target->count())
    row = target->count();
  std::vector<QListWidgetItem*> taken;
  // Taken from the bottom up so the rows above stay where they are.
  for (int r = count() - 1; r >= 0; --r) {
    QListWidgetItem* candidate = item(r);
    if (!candidate->isSelected())
      continue;
    if (target != this && leaveFilter_ && !leaveFilter_(ItemOf(candidate))) {
      emit MoveRefused(ItemOf(candidate));
      continue;
    }
    if (target == this && r < row)
      --row;
    taken.push_back(takeItem(r));
  }
  if (taken.empty())
    return 0;
  std::reverse(taken.begin(), taken.end());
  target->clearSelection();
  for (size_t i = 0; i < taken.size(); ++i) {
    target->insertItem(row + static_cast<int>(i), taken[i]);
    taken[i]->setSelected(true);
  }
  target->setCurrentItem(taken.front(), QItemSelectionModel::NoUpdate);
  emit ItemsChanged();
  if (target != this)
    emit target->ItemsChanged();
  return static_cast<int>(taken.size());
}

void CNTDragListCtrl::startDrag(Qt::DropActions) {
  if (selectedItems().isEmpty())
    return;
  auto* mime = new QMimeData;
  mime->setData(kDragFormat, QByteArray());
  auto* drag = new QDrag(this);
  drag->setMimeData(mime);
  // The drop does the move (MoveSelectedTo); nothing is left to do here
  // whatever the drag's outcome.
  drag->exec(Qt::MoveAction);
}

bool CNTDragListCtrl::AcceptsDrag(const QDropEvent* event) const {
  return qobject_cast<CNTDragListCtrl*>(event->source()) != nullptr &&
         event->mimeData()->hasFormat(kDragFormat);
}

void CNTDragListCtrl::dragEnterEvent(QDragEnterEvent* event) {
  if (!AcceptsDrag(event)) {
    event->ignore();
    return;
  }
  event->setDropAction(Qt::MoveAction);
  event->accept();
}

void CNTDragListCtrl::dragMoveEvent(QDragMoveEvent* event) {
  if (!AcceptsDrag(event)) {
    event->ignore();
    return;
  }
  event->setDropAction(Qt::MoveAction);
  event->accept();
}

int CNTDragListCtrl::DropSelectionOf(CNTDragListCtrl* source, QPoint viewportPos) {
  if (source == nullptr)
    return 0;
  const QModelIndex index = indexAt(viewportPos);
  int row = count();
  if (index.isValid())
    row = index.row() + (viewportPos.y() > visualRect(index).center().y() ? 1 : 0);
  return source->MoveSelectedTo(this, row);
}

void CNTDragListCtrl::dropEvent(QDropEvent* event) {
  if (!AcceptsDrag(event)) {
    event->ignore();
    return;
  }
  DropSelectionOf(qobject_cast<CNTDragListCtrl*>(event->source()), event->position().toPoint());
  event->setDropAction(Qt::MoveAction);
  event->accept();
}

} // namespace vh
