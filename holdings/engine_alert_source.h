// The holdings grid's row engine as the alert pass reads it. The records
// behind the item data are the view's; this source asks it for their ISIN
// and client id.
#pragma once

#include <map>
#include <memory>

#include "grid/custom_column.h"
#include "grid/row_engine.h"
#include "holdings/alert_pass.h"

namespace vh {

// What the record behind a row's item data says of itself.
class AlertRecordFields {
public:
  virtual std::string_view Isin(uint64_t itemData) = 0;
  virtual std::string_view ClientId(uint64_t itemData) = 0;

protected:
  ~AlertRecordFields() = default;
};

class EngineAlertSource final : public AlertRowSource {
public:
  // Both outlive the source.
  EngineAlertSource(RowEngine& engine, AlertRecordFields& records)
      : engine_(engine), records_(records) {}

  // The displayed rows, in display order.
  int RowCount() override { return engine_.DisplayedCount(); }
  uint64_t ItemData(int row) override { return engine_.GetItemData(row); }
  // Columns at and past the engine's data column count.
  std::vector<AlertColumn> CustomColumns() override;
  // Compiles the column's stored expression once for the pass.
  void PrepareColumn(int column) override;
  // A number that is not a custom column of the engine (deleted since the
  // rule was stored, or a data column) has no value: 0 and the empty text.
  double Value(uint64_t itemData, int column) override;
  // The engine's kept values of a custom column (RowEngine::
  // DisplayedCustomNumbers); false for any other column.
  bool Values(int column, std::vector<double>& values) override {
    return IsCustom(column) && engine_.DisplayedCustomNumbers(column, values);
  }
  std::string ValueText(uint64_t itemData, int column) override;
  std::string_view Isin(uint64_t itemData) override { return records_.Isin(itemData); }
  std::string_view ClientId(uint64_t itemData) override { return records_.ClientId(itemData); }

private:
  bool IsCustom(int column) const {
    return column >= engine_.DataColumnCount() && column < engine_.ColumnCount();
  }

  RowEngine& engine_;
  AlertRecordFields& records_;
  std::map<int, std::unique_ptr<CompiledCustomColumn>> prepared_;
};

} // namespace vh
