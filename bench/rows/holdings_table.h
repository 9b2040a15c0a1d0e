// A holdings answer as the view's owner would hold it: 18 text columns per
// row, each column stored as numbers into its own table of distinct texts
// (the record keeps repeated texts once). Serves cells to the row engine
// through the owner data-source form, item data = row number + 1.
#pragma once

#include "grid/distinct_interner.h"
#include "grid/row_formula.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh::bench {

inline constexpr int kHoldingsColumns = 18;
inline constexpr std::string_view kHoldingsHeader =
    "client_id,product,series,nse_symbol,bse_scrip_code,bse_symbol,holdings_qty,"
    "holdings_update_qty,used_qty,collateral_qty,collateral_update_qty,withheld_holding_qty,"
    "withheld_collateral_qty,t1_qty,t1_collateral_qty,haircut,collateral_type,close_price";

enum HoldingsColumn {
  kClientId = 0,
  kNseSymbol = 3,
  kHoldingsQty = 6,
  kClosePrice = 17,
};

class HoldingsTable {
public:
  // `rows` rows over ~200,000 clients and ~2,000 symbols (popular symbols
  // held far more often), the same for the same seed.
  static HoldingsTable Generate(size_t rows, uint32_t seed);
  // Reads a CSV with kHoldingsHeader as its first line. False with a
  // message naming the line when the header or a row's field count is wrong.
  bool ReadCsv(const std::string& path, std::string& error);
  // False when the file cannot be written.
  bool WriteCsv(const std::string& path) const;

  size_t Rows() const { return columns_[0].ids.size(); }
  std::string_view Cell(size_t row, int column) const {
    const Column& c = columns_[size_t(column)];
    return c.texts.Text(c.ids[row]);
  }
  void AddRow(const std::array<std::string_view, kHoldingsColumns>& cells);

  static int Fetch(void* owner, uint64_t itemData, int column, std::string& text, CellStyle& style);
  static int View(void* owner, uint64_t itemData, int column, std::string_view& text);

private:
  struct Column {
    TextInterner texts;
    std::vector<uint32_t> ids;
  };
  std::array<Column, kHoldingsColumns> columns_;
};

} // namespace vh::bench
