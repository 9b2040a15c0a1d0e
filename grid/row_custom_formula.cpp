#include "grid/row_custom_formula.h"

#include "grid/custom_column.h"

namespace vh {
namespace {

class RowFormula final : public CustomColumnFormula {
public:
  explicit RowFormula(std::string_view stored) : column_(stored) {}

  void Calculate(uint64_t itemData, CellTextSource& cells, int, std::string& outText) override {
    column_.Compute(itemData, cells, outText);
  }

  // A cell left unchanged reads as the empty text it started from: 0.
  bool CalculateSortKey(uint64_t itemData, CellTextSource& cells, int, double& key) override {
    double value = 0;
    key = column_.ComputeSortKey(itemData, cells, value) == kCustomWritten ? value : 0.0;
    return true;
  }

  bool CalculateCellValue(uint64_t itemData, CellTextSource& cells, int dataColumnCount,
                          CustomCellValue& value) override {
    return column_.CalculateCellValue(itemData, cells, dataColumnCount, value);
  }

  std::vector<int> FormColumns() const override { return column_.FormColumns(); }
  bool CalculateFromForms(const uint64_t* forms, CustomCellValue& value) override {
    return column_.CalculateFromForms(forms, value);
  }

private:
  CompiledCustomColumn column_;
};

} // namespace

std::unique_ptr<CustomColumnFormula> CompileRowFormula(std::string_view storedExpression) {
  return std::make_unique<RowFormula>(storedExpression);
}

} // namespace vh
