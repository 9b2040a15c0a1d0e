#include "holdings/holdings_columns.h"

#include <cstdio>

#include "common/c_locale.h"

namespace vh {
namespace {

struct ColumnSpec {
  const char* name;
  ColumnCompare type;
};

// "Client id" here against "Client ID" in the alert grid, deliberately.
constexpr ColumnSpec kHoldingsSpecs[kHoldingsColumnCount] = {
    {"Client id", kCompareText},
    {"Product", kCompareText},
    {"Series", kCompareText},
    {"NSE Symbol", kCompareText},
    {"BSE Scrip code", kCompareText},
    {"BSE Symbol", kCompareText},
    {"Holdings Qty", kCompareLong},
    {"Holdings Update Qty", kCompareLong},
    {"Used Qty", kCompareLong},
    {"Collateral Qty", kCompareLong},
    {"Collateral Update Qty", kCompareLong},
    {"Withheld Holding Qty", kCompareLong},
    {"Withheld Collateral Qty", kCompareLong},
    {"T1 Qty", kCompareLong},
    {"T1 Collateral Qty", kCompareLong},
    {"Hair Cut(%)", kCompareDecimal},
    {"Collateral Type", kCompareText},
    // Sorts as a long integer, so 12.50 and 12.99 tie, kept on purpose.
    {"Close Price", kCompareLong},
};

constexpr const char* kAlertNames[kAlertColumnCount] = {"Column Name", "Client ID", "ISIN", "Value",
                                                        "Time Stamp"};

sTarnColInfo Column(const char* name, int32_t format, int32_t type) {
  sTarnColInfo c;
  c.SetName(name);
  c.nWidth = kHoldingsColumnWidth;
  c.nFormat = format;
  c.nType = type;
  return c;
}

} // namespace

std::vector<sTarnColInfo> HoldingsColumns() {
  std::vector<sTarnColInfo> columns;
  for (const ColumnSpec& s : kHoldingsSpecs)
    columns.push_back(Column(s.name, kFormatLeft, s.type));
  return columns;
}

std::vector<sTarnColInfo> AlertColumns() {
  std::vector<sTarnColInfo> columns;
  for (const char* name : kAlertNames)
    columns.push_back(Column(name, kFormatRight, kCompareText));
  return columns;
}

std::string FormatClosePrice(int32_t hundredths) {
  // Single precision on purpose: large prices show a 24-bit mantissa.
  const float price = static_cast<float>(hundredths) / 100.0f;
  char text[64];
  const int n = InCLocale(
      [&] { return std::snprintf(text, sizeof text, "%0.2lf", static_cast<double>(price)); });
  return std::string(text, n > 0 ? size_t(n) : 0);
}

std::string_view HoldingCellView(const CViewHoldings& r, const HoldingsStore& store, int column,
                                 std::string& scratch) {
  const TextPool& pool = store.texts();
  switch (column) {
  case kColClientId:
    return r.clientId.View(pool);
  case kColProduct:
    return store.Text(r.product);
  case kColSeries:
    return store.Text(r.series);
  case kColNseSymbol:
    return store.Text(r.nseSymbol);
  case kColBseScripCode:
    return store.Text(r.bseScripCode);
  case kColBseSymbol:
    return store.Text(r.bseSymbol);
  case kColHaircut:
    return store.Text(r.haircut);
  case kColCollateralType:
    return store.Text(r.collateralType);
  case kColClosePrice:
    scratch = FormatClosePrice(r.closePrice);
    return scratch;
  default:
    break;
  }
  if (column >= kColFirstQuantity && column < kColFirstQuantity + int(kQuantityCount))
    return r.quantity[column - kColFirstQuantity].View(pool);
  return {};
}

int HoldingsCellSource::CellText(void* owner, uint64_t itemData, int column, std::string& text,
                                 CellStyle&) {
  std::string_view view;
  CellView(owner, itemData, column, view);
  text.assign(view);
  return 1;
}

int HoldingsCellSource::CellView(void* owner, uint64_t itemData, int column,
                                 std::string_view& text) {
  auto* self = static_cast<HoldingsCellSource*>(owner);
  const CViewHoldings* r = RecordOf(itemData);
  text =
      (self && r) ? HoldingCellView(*r, *self->store_, column, self->scratch_) : std::string_view();
  return 1;
}

} // namespace vh
