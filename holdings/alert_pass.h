// The alert pass: after the last present-values record the rules are tested
// against every row of the holdings grid, and each match becomes a hit on
// the "View Alert" tab's list.
//
// Shape of one pass at a million rows: the rules that apply (a custom column
// of the grid whose name has a rule) are looked up once per pass, not per
// row; each row's value is asked as a number, and its text only for a hit;
// the time stamp is formatted once per second of wall time; the list is
// repainted once at the end (a replaced row included), not per rule per row.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "holdings/alert_rules.h"

namespace vh {

inline constexpr const char* kAlertTimeFormat = "%d/%m/%Y %H:%M:%S";

// A custom column of the holdings grid: its number and name.
struct AlertColumn {
  int number = 0;
  std::string name;
};

// The holdings grid as the pass reads it.
class AlertRowSource {
public:
  // Rows in row order; item data 0 means the row carries no record.
  virtual int RowCount() = 0;
  virtual uint64_t ItemData(int row) = 0;
  // The grid's custom columns in column order.
  virtual std::vector<AlertColumn> CustomColumns() = 0;
  // Called once per pass for each rule column before the rows are read.
  virtual void PrepareColumn(int /*column*/) {}
  // The value of column `column` for the row: the decimal reading of the
  // text ValueText gives (0 for text that is not a number or no text).
  virtual double Value(uint64_t itemData, int column) = 0;
  // Value of every row at once, in row order, into `values` (one per row).
  // False when the source has no faster way than Value row by row.
  virtual bool Values(int /*column*/, std::vector<double>& /*values*/) { return false; }
  // The column's text for the row as the grid computes it; empty when it
  // cannot be computed.
  virtual std::string ValueText(uint64_t itemData, int column) = 0;
  virtual std::string_view Isin(uint64_t itemData) = 0;
  virtual std::string_view ClientId(uint64_t itemData) = 0;

protected:
  ~AlertRowSource() = default;
};

// The hits the list shows, row i being hit i. Texts are copied, so the list
// outlives the records it was made from.
class AlertHits {
public:
  void Clear();
  size_t Size() const { return hits_.size(); }
  // The hit of row `row` as a CustomAlert (field 1 column name, 2 ISIN, 3
  // value, 4 client id, 5 time stamp); all fields empty for an unknown row.
  CustomAlert Hit(size_t row) const;
  // Field 1..5 of row `row`; empty for an unknown row or field.
  std::string_view Field(size_t row, int field) const;

  // Appends the hit, or overwrites a row of the page [pageTop, pageTop +
  // pageCount) with the same client id, column name and ISIN. Returns the
  // row written; `replaced` tells which.
  size_t Add(std::string_view column, std::string_view isin, std::string_view value,
             std::string_view clientId, std::string_view stamp, size_t pageTop, size_t pageCount,
             bool& replaced);

private:
  struct Span {
    uint32_t offset = 0;
    uint32_t size = 0;
  };
  struct Row {
    Span field[5];
  };
  Span Keep(std::string_view text);
  std::string_view View(Span s) const { return std::string_view(text_).substr(s.offset, s.size); }

  std::vector<Row> hits_;
  std::string text_;
};

// The "View Alert" tab's list as the pass drives it.
class AlertListSink {
public:
  // Empties the list (its first visible row becomes 0).
  virtual void Empty() = 0;
  // Rows that fit one page of the list.
  virtual int CountPerPage() = 0;
  // The list now shows `rows` rows (hits 0..rows-1).
  virtual void ShowRows(size_t rows) = 0;
  // One repaint of the whole list.
  virtual void Redraw() = 0;

protected:
  ~AlertListSink() = default;
};

// Local time of `when` as kAlertTimeFormat; empty if it cannot be made.
std::string FormatAlertTime(std::time_t when);

// Whether `value` passes `rule` (field 1 the comparison, field 3 the
// threshold read as a decimal, 0 when not a number). Both bounds inclusive.
bool AlertMatches(const CustomAlert& rule, double value);

struct AlertPassCounts {
  size_t rowsChecked = 0;
  size_t hits = 0;     // matches, replaced ones included
  size_t replaced = 0; // matches that overwrote a row of the page
};

// Runs one pass of `rules` over `rows` into `hits` and `list`. `now`
// gives the wall time (std::time by default; tests fix it).
AlertPassCounts RunAlertPass(const CAlertRuleTable& rules, AlertRowSource& rows, AlertHits& hits,
                             AlertListSink& list, std::time_t (*now)(std::time_t*) = std::time);

} // namespace vh
