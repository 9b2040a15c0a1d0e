#include "widgets/distinct_value_model.h"

#include <algorithm>
#include <climits>

namespace vh {

void DistinctValueModel::SetValues(std::vector<std::string> values) {
  beginResetModel();
  values_ = std::move(values);
  order_.clear();
  endResetModel();
}

void DistinctValueModel::SetValues(std::vector<std::string> values, std::vector<uint32_t> order) {
  beginResetModel();
  values_ = std::move(values);
  order_ = std::move(order);
  endResetModel();
}

const std::string& DistinctValueModel::Value(int row) const {
  static const std::string kNone;
  if (row < 0 || static_cast<size_t>(row) >= (order_.empty() ? values_.size() : order_.size()))
    return kNone;
  const size_t at = order_.empty() ? size_t(row) : order_[size_t(row)];
  return at < values_.size() ? values_[at] : kNone;
}

int DistinctValueModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid())
    return 0;
  return static_cast<int>(
      std::min<size_t>(order_.empty() ? values_.size() : order_.size(), INT_MAX));
}

QVariant DistinctValueModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
    return {};
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
    return {};
  return QString::fromUtf8(Value(index.row()));
}

} // namespace vh
