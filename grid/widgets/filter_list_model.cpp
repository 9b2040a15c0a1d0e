#include "grid/widgets/filter_list_model.h"

#include <QTimer>

namespace vh {

FilterListModel::FilterListModel(RowEngine& engine, RowEngineObserver* forward, QObject* parent)
    : QAbstractTableModel(parent), engine_(engine), forward_(forward) {
  announced_ = engine_.DisplayedCount();
  columns_ = engine_.HeaderItemCount();
  engine_.SetObserver(this);
}

FilterListModel::~FilterListModel() {
  engine_.SetObserver(nullptr);
}

int FilterListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : announced_;
}

int FilterListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns_;
}

int FilterListModel::EngineRow(int row) const {
  if (row < 0 || row >= announced_ || row == removing_)
    return -1;
  if (removing_ >= 0 && row > removing_)
    return row - 1;
  return pendingAtTop_ ? row + pending_ : row;
}

QVariant FilterListModel::data(const QModelIndex& index, int role) const {
  // A row's tooltip is its cell's whole text, for cells cut short by an ellipsis.
  if (!checkIndex(index, CheckIndexOption::IndexIsValid) ||
      (role != Qt::DisplayRole && role != Qt::ToolTipRole))
    return {};
  const int row = EngineRow(index.row());
  if (row < 0)
    return QString();
  return QString::fromStdString(engine_.GetItemText(row, index.column()));
}

QVariant FilterListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columns_)
    return {};
  if (role == Qt::ToolTipRole)
    return HeaderToolTip(section);
  if (role != Qt::DisplayRole)
    return {};
  const sTarnColInfo* info = engine_.ColumnInfo(engine_.DataColumnAt(section));
  return info ? QString::fromLatin1(info->Name().data(), qsizetype(info->Name().size()))
              : QString();
}

// --- streaming rows ---------------------------------------------------------------

void FilterListModel::ScheduleFlush() {
  if (flushQueued_)
    return;
  flushQueued_ = true;
  QTimer::singleShot(0, this, [this] {
    flushQueued_ = false;
    Flush();
  });
}

void FilterListModel::Flush() {
  if (pending_ <= 0)
    return;
  const int first = pendingAtTop_ ? 0 : announced_;
  const int count = pending_;
  // Inside the announcement the view may read the new rows already.
  beginInsertRows({}, first, first + count - 1);
  announced_ += count;
  pending_ = 0;
  pendingAtTop_ = false;
  endInsertRows();
}

void FilterListModel::OnRowInsertedAt(int /*position*/, std::string_view /*text*/, int displayRow) {
  const int engineCount = announced_ + pending_ + 1;
  const bool atEnd = displayRow == engineCount - 1 && (pending_ == 0 || !pendingAtTop_);
  const bool atTop = displayRow == 0 && (pending_ == 0 || pendingAtTop_);
  // With nothing announced yet every row is new, wherever it landed.
  if (announced_ == 0 || atEnd || atTop) {
    pendingAtTop_ = announced_ > 0 && !atEnd;
    ++pending_;
    ScheduleFlush();
    return;
  }
  // Landed in the middle: the rows announced so far are no longer where the
  // view thinks, so everything is announced anew.
  Reset();
}

void FilterListModel::OnRowDeleted(int position) {
  if (pending_ > 0 || position < 0 || position >= announced_) {
    Reset();
  } else {
    removing_ = position;
    beginRemoveRows({}, position, position);
    removing_ = -1;
    --announced_;
    endRemoveRows();
  }
  if (forward_)
    forward_->OnRowDeleted(position);
}

void FilterListModel::Reset() {
  beginResetModel();
  tips_.clear();
  announced_ = engine_.DisplayedCount();
  columns_ = engine_.HeaderItemCount();
  pending_ = 0;
  pendingAtTop_ = false;
  endResetModel();
}

void FilterListModel::OnRowsReset() {
  Reset();
  if (forward_)
    forward_->OnRowsReset();
}

void FilterListModel::OnFiltered(int displayedCount) {
  Reset();
  if (forward_)
    forward_->OnFiltered(displayedCount);
}

// Same rows, new order. Announced as changed data rather than a layout
// change: the selection stays on positions, as in a virtual list, and a
// million selected rows are not turned into persistent indexes.
void FilterListModel::OnRowsReordered() {
  Flush();
  if (announced_ > 0 && columns_ > 0)
    emit dataChanged(index(0, 0), index(announced_ - 1, columns_ - 1), {Qt::DisplayRole});
  if (forward_)
    forward_->OnRowsReordered();
}

void FilterListModel::OnSortMark(int clearColumn, int column, int image) {
  if (forward_)
    forward_->OnSortMark(clearColumn, column, image);
}

void FilterListModel::OnHeaderFilterText(int headerItem, std::string_view text) {
  if (forward_)
    forward_->OnHeaderFilterText(headerItem, text);
}

void FilterListModel::OnClearHeaderFilters() {
  if (forward_)
    forward_->OnClearHeaderFilters();
}

// --- columns ----------------------------------------------------------------------

void FilterListModel::ColumnsReset() {
  Reset();
}

void FilterListModel::ColumnAppended() {
  Flush();
  const int count = engine_.HeaderItemCount();
  if (count <= columns_) {
    Reset();
    return;
  }
  beginInsertColumns({}, columns_, count - 1);
  columns_ = count;
  endInsertColumns();
}

void FilterListModel::ColumnRemoved(int headerItem) {
  Flush();
  if (headerItem < 0 || headerItem >= columns_ || engine_.HeaderItemCount() != columns_ - 1) {
    Reset();
    return;
  }
  beginRemoveColumns({}, headerItem, headerItem);
  if (size_t(headerItem) < tips_.size())
    tips_.erase(tips_.begin() + headerItem);
  columns_ = engine_.HeaderItemCount();
  endRemoveColumns();
}

void FilterListModel::SetHeaderToolTip(int headerItem, const QString& text) {
  if (headerItem < 0 || headerItem >= columns_)
    return;
  if (size_t(headerItem) >= tips_.size())
    tips_.resize(size_t(headerItem) + 1);
  tips_[size_t(headerItem)] = text.isNull() ? QString(QLatin1String("")) : text;
  emit headerDataChanged(Qt::Horizontal, headerItem, headerItem);
}

QString FilterListModel::HeaderToolTip(int headerItem) const {
  if (headerItem < 0 || headerItem >= columns_)
    return {};
  if (size_t(headerItem) < tips_.size() && !tips_[size_t(headerItem)].isNull())
    return tips_[size_t(headerItem)];
  const int column = engine_.DataColumnAt(headerItem);
  const sTarnColInfo* info = engine_.ColumnInfo(column);
  if (!info)
    return QString();
  if (column >= engine_.DataColumnCount() && !info->strDisplayExpression.empty())
    return QString::fromStdString(info->strDisplayExpression);
  return QString::fromLatin1(info->Name().data(), qsizetype(info->Name().size()));
}

} // namespace vh
