#include "widgets/distinct_value_model.h"

#include <algorithm>
#include <climits>

namespace vh {

void DistinctValueModel::SetValues(std::vector<std::string> values) {
  beginResetModel();
  values_ = std::move(values);
  endResetModel();
}

const std::string& DistinctValueModel::Value(int row) const {
  static const std::string kNone;
  return row >= 0 && static_cast<size_t>(row) < values_.size() ? values_[row] : kNone;
}

int DistinctValueModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid())
    return 0;
  return static_cast<int>(std::min<size_t>(values_.size(), INT_MAX));
}

QVariant DistinctValueModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
    return {};
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
    return {};
  return QString::fromUtf8(values_[index.row()]);
}

} // namespace vh
