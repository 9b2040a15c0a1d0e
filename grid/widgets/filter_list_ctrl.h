// The filtering grid: a CCommonListCtrl over the row engine, with the
// header filter bar (Ctrl+F), the distinct-values pop-up of each filter
// button, header-click sorting with arrow marks, owner drawing, keyword
// colouring, custom columns and the column profile (loaded at set-up,
// saved when the grid is destroyed).
//
// The grid always runs on its row engine (what the old list called
// data-descriptor mode); without a data source cells read "no data
// descriptor initialised".
#pragma once

#include "grid/row_engine.h"
#include "grid/widgets/common_list_ctrl.h"

#include <QIcon>
#include <QList>

#include <memory>

class QComboBox;

namespace vh {

class CFilterHeader;
class CFilterText;
class FilterListColumns;
class FilterListModel;

class CFilterListCtrl : public CCommonListCtrl, private RowEngineObserver {
  Q_OBJECT
public:
  // Called once per painted row with the row's item data; may change
  // `textColour` (0x00BBGGRR, -1 default). Wins over keyword colours.
  using RowColourCallback = void (*)(CFilterListCtrl* grid, uint64_t itemData, int32_t& textColour,
                                     int row, int controlId);

  explicit CFilterListCtrl(QWidget* parent = nullptr);
  // Saves the column profile while the header items still exist.
  ~CFilterListCtrl() override;

  RowEngine& Engine() { return engine_; }
  FilterListModel& Model() { return *model_; }
  CFilterHeader* FilterHeader() const { return header_; }

  // --- set-up -----------------------------------------------------------------
  // Installs the owner's columns (they are the built-in ones), loads the
  // column profile over them, then runs CCommonListCtrl::SetUp with
  // `sortColumn` as the sort column (its mark shown, and the "previous"
  // one, so a first click on it reverses).
  void SetUpColumns(std::vector<sTarnColInfo> columns, int sortColumn = 0);
  // Reads the profile: built-in count = the table's present size. A first
  // run without a settings file shows "File Open Failed". Returns false and
  // keeps the layout when there is no profile.
  bool LoadColumnProfile();
  // Writes the profile; hidden columns and columns without a header item
  // of their name save width 0. Shows "Error while saving column profile"
  // and returns false on failure.
  bool SaveColumnProfile();
  // The sort applied when the grid is filled anew: `column` in the column
  // table (-1: none). Set-up reads it from the profile's saved default sort
  // (settings/default_sort.h) and marks that column; the column profile
  // dialog's "Sort" sets it.
  void SetDefaultSort(int column, bool descending);
  int DefaultSortColumn() const { return defaultSortColumn_; }
  bool DefaultSortDescending() const { return defaultSortDescending_; }
  // Sorts the displayed rows by the default sort, in its direction, with
  // the header mark. Does nothing without one, when its column is hidden or
  // without rows. Owners call it once a fresh fill is in.
  void ApplyDefaultSort();
  void SetAllowCustomColumns(bool on) { customColumns_ = on; }
  bool AllowCustomColumns() const { return customColumns_; }

  // --- rows (see RowEngine) ------------------------------------------------------
  int InsertItem(int position, const std::string& text = {}) {
    return engine_.InsertItem(position, text);
  }
  int DeleteItem(int position) { return engine_.DeleteItem(position); }
  bool SetItemData(int position, uint64_t itemData) {
    return engine_.SetItemData(position, itemData);
  }
  void DeleteAllItems();
  // Rows show a check box in header item 0; a click on it toggles the
  // row's check state and selects and focuses the row.
  void SetCheckBoxes(bool on) { checkBoxes_ = on; }
  bool CheckBoxes() const { return checkBoxes_; }
  // The check box's place in a cell of header item 0.
  static QRect CheckBoxRect(const QRect& cell);

  // --- columns after set-up -------------------------------------------------------
  // Adds a custom column at the end of the header. Returns its number.
  int InsertCustomColumn(const sTarnColInfo& info);
  // Removes header item `headerItem` (see RowEngine::DeleteHeaderColumn);
  // false when there is none.
  bool DeleteHeaderColumn(int headerItem);
  // Lays the header out anew after RowEngine::SetColumns: one section per
  // header item, left to right in header-item order (sections the user
  // dragged go back to their own places).
  void ColumnsReset();

  // --- filters ----------------------------------------------------------------------
  void ToggleFilterBar();
  bool FilterBarShown() const;
  void SetFilter(int dataColumn, const std::string& text, bool exact = false) {
    engine_.SetFilter(dataColumn, text, exact);
  }
  void ResetFilters() { engine_.ResetFilters(); }
  // Opens the distinct-values pop-up of header item `headerItem` at
  // `globalPos`, as a click on its filter button does.
  void PopupDistinctValues(int headerItem, const QPoint& globalPos);
  // The one pop-up all grids share; null before the first use.
  static CFilterText* SharedFilterPopup();
  // Deletes the shared pop-up and custom-column editor (module unload).
  static void DestroySharedWindows();
  // "--ALL-- " and the distinct texts of data column `column`, first
  // selected.
  void FillComboWithColumn(QComboBox* combo, int column);

  // --- drawing ------------------------------------------------------------------------
  // 0x00BBGGRR; -1 keeps the palette's.
  void SetDefaultColours(int32_t text, int32_t background);
  void SetGradient(bool on) { gradient_ = on; }
  bool Gradient() const { return gradient_; }
  void SetRowColourCallback(RowColourCallback callback) { rowColour_ = callback; }
  void EnableRowColourCallback(bool on) { rowColourOn_ = on; }
  // Images of image columns and of header position 0, by index.
  void SetImageList(QList<QIcon> icons) { icons_ = std::move(icons); }
  const QList<QIcon>& ImageList() const { return icons_; }
  // The colours the drawing uses for `row` (keyword and callback applied).
  struct RowColours {
    QColor text;
    QColor background;
    uint64_t itemData = 0;
  };
  RowColours ColoursOfRow(int row);
  // Counts paints of the rows, so drawing can tell one paint from the next.
  unsigned PaintCount() const { return paintCount_; }

  bool OnCommand(int id) override;
  static void SetCustomColumnEditorFactory(GridDialogFactory factory);

  // Never null.
  CustomColumnGrid* CustomColumns() override;
  std::vector<std::string> ColumnNames() const override;
  const sTarnColInfo* FindColumnByName(const std::string& name) const override;
  QString GetCellText(int row, int headerItem) override;
  std::string GetCellBytes(int row, int headerItem) override;

signals:
  // The owner learns of filter button clicks and filter changes too.
  void FilterButtonClicked(int headerItem);
  void FilterChanged(int headerItem, const QString& text);

protected:
  void AddMenuItems(QMenu& menu, bool header) override;
  void SetHeaderImage(int headerItem, int image) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void FillEmptyRow(QPainter& painter, const QRect& band) override;

private:
  // RowEngineObserver (forwarded by the model)
  void OnSortMark(int clearColumn, int column, int image) override;
  void OnHeaderFilterText(int headerItem, std::string_view text) override;
  void OnClearHeaderFilters() override;
  void OnRowDeleted(int position) override;

  void ScrollFieldIntoView(int headerItem);
  void ApplyWidths(const std::vector<int>& widthOfColumn);
  void ReadDefaultSort();
  bool KeywordColour(uint64_t itemData, int32_t& colour);

  RowEngine engine_;
  CFilterHeader* header_;
  std::unique_ptr<FilterListModel> model_;
  std::unique_ptr<FilterListColumns> columnEdit_;
  int defaultSortColumn_ = -1;
  bool defaultSortDescending_ = false;
  bool customColumns_ = false;
  bool columnsInstalled_ = false;
  bool restoringOrder_ = false; // ColumnsReset is moving sections back
  bool deletedWasSelected_ = false;
  bool checkBoxes_ = false;
  unsigned paintCount_ = 0;
  bool gradient_ = false;
  int32_t defaultText_ = -1;
  int32_t defaultBackground_ = -1;
  RowColourCallback rowColour_ = nullptr;
  bool rowColourOn_ = true;
  QList<QIcon> icons_;
};

} // namespace vh
