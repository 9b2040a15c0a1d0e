// The columns of the view's two grids and the cell texts of the holdings
// grid, in the forms the row engine asks for them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "grid/col_info.h"
#include "grid/row_formula.h"
#include "holdings/view_holdings.h"

namespace vh {

// Both grids save their column profiles under this name.
inline constexpr const char* kHoldingsProfileName = "rmsholdview";
inline constexpr int kHoldingsColumnCount = 18;
inline constexpr int kAlertColumnCount = 5;
inline constexpr int kHoldingsColumnWidth = 80;

// Column numbers of the holdings grid.
enum HoldingsColumn : int {
  kColClientId = 0,
  kColProduct = 1,
  kColSeries = 2,
  kColNseSymbol = 3,
  kColBseScripCode = 4,
  kColBseSymbol = 5,
  kColFirstQuantity = 6, // 6..14 in HoldingQuantity order
  kColHaircut = 15,
  kColCollateralType = 16,
  kColClosePrice = 17,
};

// "Client id" .. "Close Price": width 80, format 0, the comparison types of
// the holdings grid ("Close Price" compares as a long integer).
std::vector<sTarnColInfo> HoldingsColumns();
// "Column Name", "Client ID", "ISIN", "Value", "Time Stamp": width 80,
// format 1, type 3.
std::vector<sTarnColInfo> AlertColumns();

// The text of `column` for `record`, written into `scratch` when it must be
// made (the close price) and otherwise a view into the record or `store`.
// Valid until the next call with the same scratch or a change of either.
// Columns outside 0..17 give the empty text.
std::string_view HoldingCellView(const CViewHoldings& record, const HoldingsStore& store,
                                 int column, std::string& scratch);

// The close price column: the hundredths converted to float, divided by 100
// in float, widened and formatted "%0.2lf" (so 123456701 shows 1234567.00).
std::string FormatClosePrice(int32_t hundredths);

// Row-engine data sources over a HoldingsCellSource. `owner` is the
// source, `itemData` a CViewHoldings pointer of its store. Both return 1,
// and the empty text for item data 0 or a column outside 0..17.
class HoldingsCellSource {
public:
  explicit HoldingsCellSource(const HoldingsStore& store) : store_(&store) {}

  // OwnerDataSource form: writes a copy into `text`.
  static int CellText(void* owner, uint64_t itemData, int column, std::string& text,
                      CellStyle& style);
  // ViewDataSource form: a view valid until the next call on this source.
  static int CellView(void* owner, uint64_t itemData, int column, std::string_view& text);

  static uint64_t ItemData(const CViewHoldings* record) {
    return reinterpret_cast<uintptr_t>(record);
  }
  static const CViewHoldings* RecordOf(uint64_t itemData) {
    return reinterpret_cast<const CViewHoldings*>(static_cast<uintptr_t>(itemData));
  }

private:
  const HoldingsStore* store_;
  std::string scratch_;
};

} // namespace vh
