// The "View Alert" tab's list: a filtering grid showing the hits of the
// last alert pass, and the pass's way to empty, fill and repaint it.
#pragma once

#include "grid/row_formula.h"
#include "holdings/alert_pass.h"

namespace vh {

class CFilterListCtrl;

class CAlertList final : public AlertListSink {
public:
  // Installs itself as `grid`'s data source: columns 0..4 show a hit's
  // column name, client id, ISIN, value and time stamp. `grid` (already
  // set up with those five columns) outlives this object.
  explicit CAlertList(CFilterListCtrl* grid);

  AlertHits& Hits() { return hits_; }
  CFilterListCtrl* Grid() const { return grid_; }

  // AlertListSink
  void Empty() override;
  int CountPerPage() override;
  void ShowRows(size_t rows) override;
  void Redraw() override;
  // Repaints of the whole list so far.
  int Repaints() const { return repaints_; }

private:
  static int Cell(void* owner, uint64_t itemData, int column, std::string& text, CellStyle& style);

  CFilterListCtrl* grid_;
  AlertHits hits_;
  int repaints_ = 0;
};

} // namespace vh
