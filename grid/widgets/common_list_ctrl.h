// The list control every grid derives from: the row and header menus, the
// keys, clipboard copy, fitting widths, grid lines, the spreadsheet export,
// the appearance read at set-up and the class-wide registry.
//
// Qt's defaults differ from this grid's: grid lines start off (Shift+G),
// there is no vertical header, rows are selected whole, header sections can
// be dragged, and a "header item" is a logical section (a hidden column is
// an absent section, never a hidden one).
#pragma once

#include "grid/col_info.h"
#include "grid/widgets/grid_dialogs.h"
#include "plugin/header_images.h"
#include "settings/list_appearance.h"

#include <QPointer>
#include <QProgressBar>
#include <QTableView>

#include <memory>
#include <string>
#include <vector>

#include <QMenu>

namespace vh {
class ProgressPump;
}

namespace vh {

class CustomColumnGrid;

class CCommonListCtrl : public QTableView {
  Q_OBJECT
public:
  explicit CCommonListCtrl(QWidget* parent = nullptr);
  ~CCommonListCtrl() override;

  // --- flags (set before SetUp) ---------------------------------------------
  void SetProfileName(const std::string& name) { profileName_ = name; }
  const std::string& ProfileName() const { return profileName_; }
  // The control id keys the appearance ("<profile>-<id>"); also set as the
  // widget's control id for GetDlgItem.
  void SetListControlId(int id);
  int ListControlId() const { return controlId_; }
  void SetExportAllowed(bool on) { exportAllowed_ = on; }
  void SetImportAllowed(bool on) { importAllowed_ = on; }
  void SetRepositionAllowed(bool on) { repositionAllowed_ = on; }
  bool RepositionAllowed() const { return repositionAllowed_; }
  void SetColouringAllowed(bool on) { colouringAllowed_ = on; }
  bool ColouringAllowed() const { return colouringAllowed_; }
  void SetCustomizable(bool on) { customizable_ = on; }
  bool Customizable() const { return customizable_; }

  // Set-up: marks the sort column's header item, starts green on black, and
  // reads the saved appearance only when the grid is customizable and sits
  // in a dialog. Call once the grid has its parent and flags.
  void SetUp();
  bool HasOwnSettings() const { return ownSettings_; }
  const sListAppearance& Appearance() const { return appearance_; }
  // Applies `appearance` (font always; colours when colouring is allowed);
  // `own` marks it as the grid's own saved value.
  void ApplyAppearance(const sListAppearance& appearance, bool own = false);
  // Face and size in points as decimal text; a size that is not a positive
  // number leaves the font alone.
  void SetListFont(const std::string& face, const std::string& sizeText);
  // Colours are 0x00BBGGRR.
  QColor DefaultTextColour() const;
  QColor DefaultBackground() const;

  // --- commands -------------------------------------------------------------
  // Runs a menu command or one an owner sends (4005, 33079, 33083, 33080).
  // Returns false for an id this grid does not handle.
  virtual bool OnCommand(int id);
  // The menus as they would open now (owned by the caller).
  std::unique_ptr<QMenu> MakeRowMenu();
  std::unique_ptr<QMenu> MakeHeaderMenu();
  // The menu opened last by a click or key, while it is open; else null.
  QMenu* OpenMenu() const;

  // Copies the selected rows (ascending row order) to the clipboard: a tab
  // after every cell, CR LF after every row, no heading. Returns the text.
  QString CopyToClipboard();
  // Fits every header item's width; see FitMode.
  void FitColumns(int mode);
  void ToggleGridLines() { setShowGrid(!showGrid()); }
  // On: the grid paints the area below its last row itself, in row-high
  // bands drawn as a row without data would be (see FillEmptyRow), so a
  // short list does not end in a flat block. Off (the default): the
  // viewport's plain background shows there.
  void SetEmptyAreaPainting(bool on);
  bool EmptyAreaPainting() const { return emptyAreaPainting_; }
  // Writes every row to `path` ("" = the default file); shows "No Items in
  // the List", "File is generated" or "File generation Failed". Returns 1
  // when written, 0 otherwise (also when there are no rows).
  int ExportToExcel(const std::string& path = {});
  // The file written by the last successful export.
  const std::string& LastExportPath() const { return lastExportPath_; }

  // --- what the grid shows (header items, not hidden columns) ---------------
  virtual int HeaderItemCount() const;
  virtual QString HeaderItemText(int headerItem) const;
  virtual int DisplayedRowCount() const;
  virtual QString GetCellText(int row, int headerItem);
  // The same as UTF-8 bytes, for passes over every row.
  virtual std::string GetCellBytes(int row, int headerItem);
  // Column names by column number (the keyword column is one of them).
  virtual std::vector<std::string> ColumnNames() const;
  // The column record whose name is `name`, or null.
  virtual const sTarnColInfo* FindColumnByName(const std::string& name) const;
  // What the column editors change; null for a grid without a column table.
  virtual CustomColumnGrid* CustomColumns() { return nullptr; }

  // Top visible row (-1 without rows), rows that fit the viewport, and a
  // repaint of one row.
  int GetTopIndex() const;
  int GetCountPerPage() const;
  void RedrawItem(int row);

  // --- class-wide -----------------------------------------------------------
  // Sort marks for every grid's header, built at plug-in start.
  static void SetHeaderImageList(HeaderImageList images);
  static const HeaderImageList& HeaderImages();
  static void SetAppearanceDialogFactory(GridDialogFactory factory);
  static void SetColumnProfileDialogFactory(GridDialogFactory factory);
  // Drops the class-wide dialogs (module unload).
  static void DestroySharedDialogs();
  // The registry: grids added by their owners for class-wide operations; a
  // grid leaves it when destroyed; the module empties it on unload.
  void AddToRegistry();
  static const std::vector<CCommonListCtrl*>& Registry();
  static void ClearRegistry();

signals:
  // A long pass (copy, fit, export) made progress: `done` of `total` rows.
  void ProgressChanged(int done, int total);

protected:
  // Derived grids add their items; `header` tells which menu.
  virtual void AddMenuItems(QMenu& menu, bool header);
  // Opens the dialog made by `factory` (kept in `slot`) for this grid.
  void OpenDialog(const GridDialogFactory& factory, std::unique_ptr<GridDialog>& slot,
                  QWidget* parent, int mode);
  // Header marks: image 0 ascending, 1 descending, -1 none.
  virtual void SetHeaderImage(int headerItem, int image);
  void OpenColumnProfileDialog(bool sortMode);
  void OpenHeaderMenuAt(const QPoint& globalPos) { ShowMenu(MakeHeaderMenu(), globalPos); }
  // The sort column the grid starts with.
  void SetInitialSortColumn(int column) { sortColumn_ = column; }
  int InitialSortColumn() const { return sortColumn_; }
  // Reports to ProgressChanged and shows a progress bar over the bottom of
  // the rows until `done` reaches `total`.
  void ReportProgress(int done, int total);

  // One row-high band of the empty area; the plain grid fills it with its
  // default background.
  virtual void FillEmptyRow(QPainter& painter, const QRect& band);
  void paintEvent(QPaintEvent* event) override;
  void setSelectionModel(QItemSelectionModel* selectionModel) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void changeEvent(QEvent* event) override;

private:
  void ShowMenu(std::unique_ptr<QMenu> menu, const QPoint& globalPos);
  void OpenAppearanceDialog();
  void ApplyRowHeight();
  bool InDialog() const;
  int MeasureColumn(int headerItem, bool withHeader, ProgressPump& pump, int done);

  std::string profileName_;
  int controlId_ = 0;
  bool exportAllowed_ = true;
  bool importAllowed_ = true;
  bool repositionAllowed_ = false;
  bool colouringAllowed_ = true;
  bool customizable_ = false;
  bool ownSettings_ = false;
  bool emptyAreaPainting_ = false;
  int sortColumn_ = 0;
  int sortMarkerIndex_ = -1;
  sListAppearance appearance_;
  std::string lastExportPath_;
  QPointer<QMenu> openMenu_;
  QPointer<QProgressBar> progress_;
  std::unique_ptr<GridDialog> profileDialog_;
};

} // namespace vh
