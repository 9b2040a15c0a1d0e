#include "holdings/engine_alert_source.h"

namespace vh {

std::vector<AlertColumn> EngineAlertSource::CustomColumns() {
  std::vector<AlertColumn> columns;
  for (int c = engine_.DataColumnCount(); c < engine_.ColumnCount(); ++c)
    if (const sTarnColInfo* info = engine_.ColumnInfo(c))
      columns.push_back({c, std::string(info->Name())});
  return columns;
}

void EngineAlertSource::PrepareColumn(int column) {
  if (!IsCustom(column)) {
    prepared_.erase(column);
    return;
  }
  prepared_[column] =
      std::make_unique<CompiledCustomColumn>(engine_.ColumnInfo(column)->strExpression);
}

double EngineAlertSource::Value(uint64_t itemData, int column) {
  const auto it = prepared_.find(column);
  if (it == prepared_.end())
    return 0;
  // The number the cell's text reads as, without making the text.
  double key = 0;
  (void)it->second->ComputeSortKey(itemData, engine_, key);
  return key;
}

std::string EngineAlertSource::ValueText(uint64_t itemData, int column) {
  std::string text;
  if (IsCustom(column))
    (void)engine_.GetCellText(itemData, column, text);
  return text;
}

} // namespace vh
