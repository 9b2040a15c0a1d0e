// The Qt-free row engine beneath the filtering grid: it keeps, per row, only
// the owner's 64-bit item data and a check state, plus the display index map
// that filters and sorts rearrange. Cell texts are asked of the owner (or
// computed, for custom columns) at the moment they are needed.
//
//   row store   [d0 d1 d2 d3 ...]        insertion order, data index = slot
//   display map [d2 d0 d3]               one data index per displayed row
//   position p  -> map[p], or map[count-1-p] with the reverse-display flag
//
// The widget above calls in only in data-descriptor mode; what it must do
// on its side (base list insertion, selection, header marks, item count) is
// reported through RowEngineObserver. Single-threaded.
#pragma once

#include "grid/col_info.h"
#include "grid/row_formula.h"
#include "grid/sort_keys.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

class TextInterner;
class KeyCache;
struct ColumnKeys;
struct FilterKeys;
struct FilterSweep;
struct FreshKey;
class FilterPattern;

// Owner form: called with the owner window; preferred when both are set.
using OwnerDataSource = int (*)(void* owner, uint64_t itemData, int column, std::string& text,
                                CellStyle& style);
// Plain form: the same less the window.
using PlainDataSource = int (*)(uint64_t itemData, int column, std::string& text, CellStyle& style);

// Optional third form for whole-column passes (filter, sort, distinct
// values): sets `text` to the very text the installed form would write, as
// a view valid until the next call, and returns non-zero on success. Saves
// a copy per cell; display and drawing keep using the forms above.
using ViewDataSource = int (*)(void* owner, uint64_t itemData, int column, std::string_view& text);

// Everything here happens after the engine's own state is consistent.
class RowEngineObserver {
public:
  virtual ~RowEngineObserver() = default;
  // The base list must insert a row at `position` with `text`.
  virtual void OnRowInserted(int /*position*/, std::string_view /*text*/) {}
  // The same, with the displayed row where the new row landed: the end, the
  // top with the reverse-display flag, or the insertion point. The engine
  // calls this one; by default it forwards to OnRowInserted.
  virtual void OnRowInsertedAt(int position, std::string_view text, int /*displayRow*/) {
    OnRowInserted(position, text);
  }
  // The row shown at `position` is gone; the count is already lowered. If
  // that row was selected and was not the last one, select the next; with
  // the reverse-display flag and no focus, scroll the first row into view.
  virtual void OnRowDeleted(int /*position*/) {}
  // A reindexing fault emptied the rows.
  virtual void OnRowsReset() {}
  // A filter pass finished: the displayed rows are new; repaint all.
  virtual void OnFiltered(int /*displayedCount*/) {}
  // A sort rewrote the display order (same rows, same count).
  virtual void OnRowsReordered() {}
  // Header sort marks: clear the image of `clearColumn` (-1: none) and show
  // `image` (0 or 1) on `column`, right of the text.
  virtual void OnSortMark(int /*clearColumn*/, int /*column*/, int /*image*/) {}
  // Show `text` in the filter field of header item `headerItem`. The engine
  // applies the change itself right after; the header must not report it
  // back.
  virtual void OnHeaderFilterText(int /*headerItem*/, std::string_view /*text*/) {}
  virtual void OnClearHeaderFilters() {}
};

class RowEngine final : public CellTextSource {
public:
  RowEngine();
  ~RowEngine();
  RowEngine(const RowEngine&) = delete;
  RowEngine& operator=(const RowEngine&) = delete;

  // --- data source and observer ---------------------------------------
  void SetOwnerDataSource(OwnerDataSource source, void* owner);
  void SetPlainDataSource(PlainDataSource source);
  // Used only while one of the two forms above is installed.
  void SetViewDataSource(ViewDataSource source, void* owner);
  bool HasDataSource() const { return ownerSource_ != nullptr || plainSource_ != nullptr; }
  void SetObserver(RowEngineObserver* observer) { observer_ = observer; }

  // --- columns ----------------------------------------------------------
  // Columns [0, dataColumnCount) come from the data source, the rest are
  // custom. `positions` gives each column's header position (-1 hidden);
  // empty means every column in its own order. A duplicate position, or
  // one at or past the column count, makes that column hidden.
  void SetColumns(std::vector<sTarnColInfo> columns, int dataColumnCount,
                  std::vector<int32_t> positions = {});
  // Replaces one column's description (recompiling a custom one); false
  // for an unknown column.
  bool SetColumnInfo(int column, const sTarnColInfo& info);
  // Installs the compiler of custom columns and recompiles them all.
  void SetCustomColumnCompiler(CustomColumnCompiler compiler);
  int ColumnCount() const { return int(columns_.size()); }
  int DataColumnCount() const { return dataColumnCount_; }
  // Null for an unknown column.
  const sTarnColInfo* ColumnInfo(int column) const;
  // Header position of `column`, -1 when hidden or unknown.
  int ColumnPosition(int column) const;
  // The column shown at header position `displayColumn`, -1 when none.
  int DataColumnAt(int displayColumn) const;
  int HeaderItemCount() const { return int(columnAt_.size()); }

  // --- rows -------------------------------------------------------------
  void SetReverseDisplay(bool reverse) { reverse_ = reverse; }
  bool ReverseDisplay() const { return reverse_; }
  // Adds a row with zero item data. Position 0, or one at or past the store
  // size, appends (deliberately not the top). Returns the new data index
  // (mirrored with the reverse flag); 0 without a data source or after a
  // reindexing fault ("Insert Item: Reindexing Error", rows reset).
  int InsertItem(int position, std::string_view text);
  // Removes the row shown at `position`. Returns 1, or 0 when the position
  // is not displayed or on a fault ("Delete item: Item not found",
  // "Delete item: Reindexing Error", which also resets the rows).
  int DeleteItem(int position);
  // Removes the row at store slot `dataIndex`, displayed or not. Returns 1,
  // or 0 for an unknown slot or a fault of DeleteItem; a displayed slot
  // beyond the displayed count shows "Error occured while deleting map item".
  int DeleteItemByDataIndex(int dataIndex);
  // Empties the store and the map.
  void DeleteAllItems();
  // Pre-sizes the store for `rows` rows (a known answer size).
  void Reserve(size_t rows);
  // Sets the item data of the row shown at `position`; false when nothing
  // is shown there.
  bool SetItemData(int position, uint64_t itemData);
  // 0 when nothing is shown at `position`.
  uint64_t GetItemData(int position) const;
  // Check state of the row shown at `position`; 0 when nothing is shown.
  int GetCheck(int position) const;
  // False (nothing written) when nothing is shown at `position`.
  bool SetCheck(int position, int state);
  int DisplayedCount() const { return displayedCount_; }
  size_t RowCount() const { return items_.size(); }
  // Store slot shown at `position` (after mirroring), -1 when none.
  int DataIndexAt(int position) const;
  uint64_t ItemDataOfIndex(int dataIndex) const;

  // The text of display cell (position, displayColumn): empty when nothing
  // is shown there or the row has no item data; "no data descriptor
  // initialised" without a data source.
  std::string GetItemText(int position, int displayColumn);
  // The text of `column` for `itemData`: false without a data source; true
  // for a custom column (computed, never stored; `text` unchanged when it
  // cannot be computed or refers to itself); otherwise, a negative column
  // included, the data source's result.
  bool GetCellText(uint64_t itemData, int column, std::string& text, CellStyle& style) override;
  using CellTextSource::GetCellText;

  // --- filters ----------------------------------------------------------
  // The header reported a new filter text at `headerItem`: an empty text
  // removes that column's filter, another replaces or adds it; then filters.
  void OnHeaderFilterChanged(int headerItem, std::string_view text);
  // Filters `dataColumn` with `text`; `exact` asks whole-text equality for
  // this one pass. A hidden column's filter is stored directly and the
  // filter field of header item 0 is cleared (deliberately). An unknown
  // column changes nothing.
  void SetFilter(int dataColumn, std::string_view text, bool exact);
  void ResetFilters();
  // Flips the persistent exact-match mode and filters again.
  void ToggleExactMatch();
  bool ExactMatchMode() const { return (exactFlags_ & 0xFF00) != 0; }
  // Takes a saved filter set as is; unequal lengths are reported by the
  // next pass ("Error occured while filtering") and show no rows.
  void RestoreFilters(std::vector<int32_t> columns, std::vector<std::string> texts);
  const std::vector<int32_t>& FilterColumns() const { return filterColumns_; }
  const std::vector<std::string>& FilterTexts() const { return filterTexts_; }
  // Rebuilds the display map from every row with item data that passes
  // all filters. Nothing happens without a data source or header items.
  void Filter();

  // --- sort ---------------------------------------------------------------
  // A click on header position `displayColumn`: the same column again
  // reverses, another starts ascending (latest first for dates and times).
  void SortOnColumn(int displayColumn);
  int SortColumn() const { return sortColumn_; }
  int PreviousSortColumn() const { return previousSortColumn_; }
  int SortDirection() const { return direction_; }
  // Store slots of the `n` displayed rows with the largest values of
  // `column`, largest first, equal values in display map order; empty for
  // an unknown column.
  std::vector<int32_t> LargestRows(int column, size_t n);

  // --- distinct values ------------------------------------------------------
  // Non-empty texts of `column` over the displayed rows, each once, in
  // display order of first appearance.
  std::vector<std::string> DistinctValues(int column);
  // The same with "--ALL-- " on top, for a combo box.
  std::vector<std::string> ComboValues(int column);

  // Bytes the engine holds per row store and map (capacity, not size).
  size_t ResidentBytes() const;

  // --- set-up and column edits for the widgets (row_columns.cpp) ------------
  // The sort state a grid starts with: `displayColumn` becomes both the sort
  // column and the previous one, so a first click on it reverses at once.
  void SetSortState(int displayColumn);
  // Adds `info` as the last column, shown after the last header item; only
  // its own formula is compiled. Returns its column number.
  int AppendColumn(const sTarnColInfo& info);
  // Removes the column shown at header item `headerItem`: later header
  // positions move down by one and the column's filter goes. A custom
  // column leaves the table (later column numbers move down, their filters
  // follow them; stored expressions that name a later custom column are
  // the editor's to rewrite); a data column stays in the table, hidden.
  // Other formulas stay compiled. False (nothing changed) when no column is
  // shown there. Rows are not filtered again.
  bool DeleteHeaderColumn(int headerItem);

  // --- key caches and the change contract ----------------------------------
  // The first whole-column pass (filter, sort, top rows, distinct values,
  // column texts) that reads a column keeps what it read per store slot:
  // the number a numeric or custom column sorts by, the text of any other
  // column (packed in 8 bytes when short, else as a number into its
  // distinct texts). Later passes read those
  // instead of asking the data source, with exactly the same rows, order
  // and values, on one condition: the owner says what changed.
  //  - RowChanged(dataIndex): any cell of that store slot may read
  //    differently now (a price tick, a present-values record, a mark).
  //    SetItemData calls it itself.
  //  - ColumnChanged(column): any cell of that column may differ. Custom
  //    columns that read it, directly or through other custom columns,
  //    are dropped too.
  //  - AllRowsChanged(): anything may differ; also after renumbering
  //    columns.
  // Inserted and deleted rows keep the caches in step by themselves, and
  // so do new columns, column descriptions, custom definitions and data
  // sources. Display paths (GetItemText, GetCellText) never use the caches.
  // A custom column whose computation shows a message is never cached, so
  // its messages come on every pass as before. Unknown indices and columns
  // are ignored.
  void RowChanged(int dataIndex);
  void ColumnChanged(int column);
  void AllRowsChanged();
  // Calls visit(dataIndex, text) for each store slot with item data, in
  // store order, with the text of `column` that GetCellText writes into an
  // empty text (for export and for filling a whole column). Nothing for an
  // unknown column or without a data source.
  void VisitColumnTexts(int column, const std::function<void(int, std::string_view)>& visit);
  // Caches past `bytes` in total are dropped least recently used first
  // (default kDefaultKeyCacheLimit); 0 turns caching off.
  void SetKeyCacheLimit(size_t bytes);
  // Check mode: every pass reads each cached key afresh and calls the
  // handler on the first difference (default: a message on stderr, then
  // abort). On from the start when built with VH_KEY_CACHE_CHECK.
  void SetKeyCacheCheck(bool on) { checkKeys_ = on; }
  bool KeyCacheCheck() const { return checkKeys_; }
  using KeyMismatchHandler = std::function<void(int column, int dataIndex)>;
  void SetKeyMismatchHandler(KeyMismatchHandler handler) { mismatch_ = std::move(handler); }
  // Bytes the key caches hold now (capacity, not size).
  size_t KeyCacheBytes() const;
  // The number each displayed row's cell of custom column `column` reads as
  // (atof of its text: 0 for an empty cell and for the zero-divisor text),
  // in display order, one per displayed row (0 for a row without item
  // data). Read from the column's key cache, built if need be, so a pass
  // over a million rows computes no cell twice; a column that cannot be
  // cached computes its cells, messages included. False, `values`
  // untouched, for a column that is not custom or without a data source.
  bool DisplayedCustomNumbers(int column, std::vector<double>& values);
  static constexpr size_t kDefaultKeyCacheLimit = size_t{256} << 20;

private:
  friend struct RowEngineProbe; // tests corrupt the map on purpose

  int Mirror(int position) const { return reverse_ ? displayedCount_ - 1 - position : position; }
  int MapSlotOf(int position) const;
  bool FetchCell(uint64_t itemData, int column, std::string& text, CellStyle& style);
  std::string_view PassText(uint64_t itemData, int column, std::string& scratch);
  void ResetRows();
  void RemoveSlot(int dataIndex);
  bool ShiftDownAbove(int dataIndex, bool stopOnEqual);
  void CompileFormula(int column);
  void RebuildColumnAt();
  void EditFilter(int dataColumn, std::string_view text);
  void WriteHeaderFilter(int headerItem, std::string_view text);
  void SortDisplayed(int column, int type, int direction);
  std::vector<uint32_t> SlotsInStoreOrder(size_t n) const;
  template <typename Sink>
  void ForEachKey(int column, int type, size_t n, TextInterner& texts, Sink&& sink);
  bool BuildKeys(int column, int type, size_t n, std::vector<SortEntry>& keys);
  std::vector<uint32_t> OrderByDateTime(int column, size_t n, int direction);

  // Key caches (grid/row_keys.cpp, grid/row_cached.cpp).
  ColumnKeys* PassKeys(int column, FilterSweep* sweep = nullptr);
  std::unique_ptr<ColumnKeys> ReadColumnKeys(int column, FilterSweep* sweep);
  bool ReadSlotKey(ColumnKeys& keys, int column, uint32_t slot, FreshKey& out,
                   std::string& scratch);
  uint64_t ReadCellForm(uint64_t itemData, int column, std::string& scratch);
  void PrefetchTexts(int column, const uint32_t* slots, size_t count);
  bool CustomInputs(int column, std::vector<std::vector<uint64_t>>& forms,
                    std::vector<const uint64_t*>& inputs);
  bool ReadCustomSlot(ColumnKeys& keys, int column, uint32_t slot,
                      const std::vector<const uint64_t*>& inputs, FreshKey& out,
                      std::string& scratch);
  FilterKeys PrepareFilterKeys(int column, const FilterPattern& pattern, bool exact,
                               std::vector<int32_t>* sweepMap);
  void VerifyKeys(ColumnKeys& keys, int column);
  bool CustomDependsOn(int custom, int column, std::vector<char>& seen) const;
  void ForgetKeys(int column);
  void EndPass();
  bool CachedSortKeys(int column, int type, size_t n, std::vector<SortEntry>& keys);
  bool CachedDistinctValues(int column, size_t n, std::vector<std::string>& values);
  bool CachedLargestRows(int column, int type, size_t count, size_t n,
                         std::vector<int32_t>& result);

  std::unique_ptr<KeyCache> keyCache_;
  std::vector<char> uncacheable_; // custom columns that showed a message
  size_t keyCacheLimit_ = kDefaultKeyCacheLimit;
  bool checkKeys_ = false;
  KeyMismatchHandler mismatch_;

  OwnerDataSource ownerSource_ = nullptr;
  void* owner_ = nullptr;
  PlainDataSource plainSource_ = nullptr;
  ViewDataSource viewSource_ = nullptr;
  void* viewOwner_ = nullptr;
  RowEngineObserver* observer_ = nullptr;

  std::vector<sTarnColInfo> columns_;
  int dataColumnCount_ = 0;
  std::vector<int32_t> positions_;
  std::vector<int32_t> columnAt_;
  CustomColumnCompiler compiler_;
  std::vector<std::unique_ptr<CustomColumnFormula>> formulas_;
  int customDepth_ = 0;
  bool cycleStopped_ = false;

  std::vector<uint64_t> items_;
  std::vector<int32_t> checks_;
  std::vector<int32_t> map_;
  int displayedCount_ = 0;
  bool reverse_ = false;

  std::vector<int32_t> filterColumns_;
  std::vector<std::string> filterTexts_;
  uint16_t exactFlags_ = 0;

  int sortColumn_ = -1;
  int previousSortColumn_ = -1;
  int direction_ = -1;
  int sortDataColumn_ = -1;
  int sortType_ = 0;
};

} // namespace vh
