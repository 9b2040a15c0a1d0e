// The table model over the row engine. rowCount() is the count the model
// last announced, not the engine's live count: rows that stream in are
// announced together once the event loop runs (or at Flush), so a million
// inserts never relayout the view per row. Cell texts are fetched only when
// the view asks for a visible cell.
//
// The engine reports each change after making it; the model maps the
// view's rows onto the engine's while an announcement is pending, so what
// the view reads always matches what was announced.
#pragma once

#include "grid/row_engine.h"

#include <QAbstractTableModel>

#include <vector>

namespace vh {

class FilterListModel final : public QAbstractTableModel, public RowEngineObserver {
  Q_OBJECT
public:
  // `engine` outlives the model; header events go on to `forward` (may be
  // null).
  FilterListModel(RowEngine& engine, RowEngineObserver* forward, QObject* parent = nullptr);
  ~FilterListModel() override;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

  // Announces the rows inserted since the last announcement.
  void Flush();
  // The engine row shown at view row `row`, -1 for none.
  int EngineRow(int row) const;
  // The columns changed wholesale (set-up, profile); announces a reset.
  void ColumnsReset();
  // One column was added at the end / header item `headerItem` removed.
  void ColumnAppended();
  void ColumnRemoved(int headerItem);
  // Header tooltips: a data column's name, a custom column's display
  // expression, unless set otherwise since the columns last changed (an
  // edited custom column keeps the tooltip it had). Nothing happens for a
  // header item the model does not have.
  void SetHeaderToolTip(int headerItem, const QString& text);
  QString HeaderToolTip(int headerItem) const;

  // RowEngineObserver
  void OnRowInsertedAt(int position, std::string_view text, int displayRow) override;
  void OnRowDeleted(int position) override;
  void OnRowsReset() override;
  void OnFiltered(int displayedCount) override;
  void OnRowsReordered() override;
  void OnSortMark(int clearColumn, int column, int image) override;
  void OnHeaderFilterText(int headerItem, std::string_view text) override;
  void OnClearHeaderFilters() override;

private:
  void Reset();
  void ScheduleFlush();

  RowEngine& engine_;
  RowEngineObserver* forward_;
  // Tooltips set by SetHeaderToolTip, by header item; null = the default.
  std::vector<QString> tips_;
  int announced_ = 0;
  int columns_ = 0;
  // Rows the engine holds beyond the announced ones, all at the end or all
  // at the top (reverse display).
  int pending_ = 0;
  bool pendingAtTop_ = false;
  bool flushQueued_ = false;
  // The view row being removed while the removal is announced, else -1.
  int removing_ = -1;
};

} // namespace vh
