// CViewHold: the holdings view window (dialog 21000). The user picks one
// scrip (NSE row, BSE row or both) or one client and presses "View
// Hold/Pos"; the answer streams into the holdings grid. The window owns the
// controls and forwards to its CViewHoldCore, which owns the link, the
// record tables and every rule that needs no widget.
//
// Column profiles: both grids carry the profile name "rmsholdview"; only
// the holdings grid loads and saves its columns under it. The alert grid
// installs its five columns without reading the profile and is never
// saved, so the eighteen holdings columns (and the user's custom columns)
// are the only ones the key ever holds. The alert grid still uses the name
// for its appearance key.
#pragma once

#include <QDialog>
#include <QPointer>

#include <memory>
#include <optional>
#include <string>

#include "holdings/holdings_columns.h"
#include "holdings/view_hold_core.h"

class QButtonGroup;
class ReportDialogs;
class QComboBox;
class QGroupBox;
class QPushButton;
class QRadioButton;
class QTabBar;

namespace vh {

class CFilterListCtrl;
class CViewHoldFeatures;

class CViewHold final : public QDialog, public ViewHoldHost, public HoldingsGridSink {
  Q_OBJECT
public:
  // Builds the controls; Initialise() does the rest.
  explicit CViewHold(QWidget* parent = nullptr);
  ~CViewHold() override;

  // Once, after construction: placement, link, host combos, icon, grids,
  // tabs, the initial layout, reset, saved title.
  void Initialise(const std::string& userId, uint32_t userType);
  // Back to the opening selection: "--" and the user's exchanges in both
  // exchange combos (emptied first, so repeated resets add nothing),
  // "Scrip" checked.
  void ResetSelection();
  // Title, alert rules, then the five placements.
  void SaveOnExit();
  // Alerts and mark/unmark; made by Initialise.
  CViewHoldFeatures* Features() const { return features_; }
  // A mark/unmark command of the row menu (4011..4014).
  void OnMarkCommand(int command);

  CViewHoldCore& Core() { return core_; }
  CFilterListCtrl* HoldingsGrid() const { return holdingsGrid_; }
  CFilterListCtrl* AlertGrid() const { return alertGrid_; }
  QTabBar* Tabs() const { return tabs_; }

  // The row menu as it would open now (mark/unmark popups first when the
  // host grants the right). Owned by the caller.
  std::unique_ptr<QMenu> MakeRowMenu();
  // Tab 0 shows the holdings grid, tab 1 the alert grid.
  void SelectTab(int tab);
  // The holdings grid's selection bookkeeping (its item-changed event): the
  // record of the row the user selected last, while that row stays
  // selected; else that of the topmost selected row; null with no row
  // selected and once the grid is emptied for a new answer. Kept as the
  // record, not a row number, since a streaming answer inserts rows above.
  const CViewHoldings* SelectedRecord() const { return selected_; }
  // The last status text of the view ("<n> records" after an answer).
  QString StatusText() const { return status_; }

  // --- what a host may ask by name (QMetaObject::invokeMethod), so that it
  // needs none of the view's code: the headless run uses these ---------------
  // The holdings grid's header labels, left to right.
  Q_INVOKABLE QStringList HeaderNames() const;
  // Adds a custom column `name` computed from `displayExpression` (column
  // names in double quotes, as typed in the editor). Returns "" when added,
  // else the reason.
  Q_INVOKABLE QString AddCustomColumn(const QString& name, const QString& displayExpression);
  // Filters the column labelled `column` with `text` (the filter bar's
  // grammar). False for an unknown column.
  Q_INVOKABLE bool FilterColumn(const QString& column, const QString& text);
  // Clicks the header label `column` (a press and release of the mouse).
  // False for an unknown column.
  Q_INVOKABLE bool ClickHeader(const QString& column);
  // Direction of the holdings grid's sort: 1 ascending, -1 descending, 0 none.
  Q_INVOKABLE int SortDirection() const;
  // Writes the holdings grid to `path`; 1 written, 0 not (message shown).
  Q_INVOKABLE int ExportGrid(const QString& path);
  Q_INVOKABLE int DisplayedRows() const;

  // --- ViewHoldHost -----------------------------------------------------------
  bool ScripDetails(std::string_view segment, std::string_view symbol,
                    ScripDetailFields& out) override;
  void LookupNseTradingSymbol() override;
  void OnBseCounterpart(const std::optional<std::string>& bseSymbol) override;

  // --- HoldingsGridSink -----------------------------------------------------
  void ClearRows() override;
  void InsertRecord(CViewHoldings* record) override;
  void FlushRecords() override;
  void OnPriceSlotChanged(uint32_t slot) override;

signals:
  // An answer ended and its rows are in the grid.
  void AnswerShown(int rows);

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  void BuildControls();
  void SetUpGrids();
  void LoadHostCombos();
  void RefillClientIndex();
  void LayOutInitial();
  void SetMode(bool client);
  void FillScripCombos(bool nseRow, int mode);
  void OnViewHoldPos();
  void OnLoadBse();
  void ResetBseRow();
  bool SelectBseSymbol(const QString& symbol);
  void ShowRowMenu(const QPoint& globalPos);
  void OnHoldingsItemChanged();
  QComboBox* AddCombo(int id, const QRect& geometry);
  int HeaderItemOf(const QString& column) const;

  CViewHoldCore core_;
  // After the core: the report dialogs let go of its link before it goes.
  std::unique_ptr<ReportDialogs> reports_;
  HoldingsCellSource cells_;
  std::string userId_;
  uint32_t userType_ = 0;
  QString status_;
  bool initialised_ = false;
  const CViewHoldings* selected_ = nullptr;

  QRadioButton* scrip_ = nullptr;
  QRadioButton* client_ = nullptr;
  QGroupBox* clientGroup_ = nullptr;
  QComboBox* exchanges_ = nullptr;
  QComboBox* nseExchange_ = nullptr;
  QComboBox* nseSymbol_ = nullptr;
  QComboBox* nseSeries_ = nullptr;
  QComboBox* bseExchange_ = nullptr;
  QComboBox* bseSymbol_ = nullptr;
  QComboBox* bseSeries_ = nullptr;
  QComboBox* bseGroup_ = nullptr;
  QComboBox* clients_ = nullptr;
  CFilterListCtrl* holdingsGrid_ = nullptr;
  CFilterListCtrl* alertGrid_ = nullptr;
  QTabBar* tabs_ = nullptr;
  CViewHoldFeatures* features_ = nullptr;
};

} // namespace vh
