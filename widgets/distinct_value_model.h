// A read-only list model over a vector of texts (UTF-8 bytes), for lists of a
// million entries: texts are converted to QString only when a visible row is
// painted.
#pragma once

#include <QAbstractListModel>

#include <cstdint>
#include <string>
#include <vector>

namespace vh {

class DistinctValueModel : public QAbstractListModel {
  Q_OBJECT
public:
  using QAbstractListModel::QAbstractListModel;

  // Replaces every row (a model reset).
  void SetValues(std::vector<std::string> values);
  // The same, row r showing values[order[r]]; indexes past the end show an
  // empty text.
  void SetValues(std::vector<std::string> values, std::vector<uint32_t> order);
  // The text of `row`; empty for a row out of range.
  const std::string& Value(int row) const;

  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
  std::vector<std::string> values_;
  std::vector<uint32_t> order_; // empty: rows in `values_` order
};

} // namespace vh
