// Writes a grid to a real .xlsx file: one sheet, the heading row first, then
// every data row, each cell asked of the caller through a callback.
//
// Cells: the heading row is written as text. A data cell of a column whose
// heading reported a numeric comparison type (1, 2, 4 or 5) is written as a
// number when its whole text is a decimal number (read in the C locale,
// whatever the process locale); any other text stays text (cell_value.h).
// Empty texts leave the cell blank.
//
// File: the caller's path when one is set, else a fresh name in the user's
// documents folder (export_path.h). The workbook is written under a
// temporary name in the same folder and renamed over the final name only
// when complete, so a failed export never leaves a torn or partial file under
// that name (an existing file there stays as it was).
//
// Memory: the sheet is streamed (libxlsxwriter's constant-memory mode), so a
// million rows take no more memory than ten.
#pragma once

#include <string>

namespace vh {

// Asks for one cell; returns 1 when it gave a cell (0 leaves the cell blank).
// Row 0 is the heading: `columnType` receives the column's comparison type
// (sTarnColInfo::nType, grid/col_info.h); for rows above 0 the callee sets -1.
// `text` arrives empty and `columnType` as -1.
//
// The callback is called row by row, top to bottom, and left to right within
// a row, each cell exactly once, on the caller's thread. A caller that must
// keep its window responsive during a long export may process its pending
// events (and update a progress indication) from inside the callback, for
// instance at the first column of every few thousandth row; it must not
// change the rows it is exporting while doing so.
using ExcelCellCallback = int (*)(void* context, int row, int column, std::string& text,
                                  int& columnType);

// Optional: called on the caller's thread once the last cell is written and
// then about every kExcelIdleIntervalMs until the file is complete, while
// the sheet is compressed into the file on another thread. That phase asks
// no cells and takes most of a large export (some 25 s of 33 s for a
// million rows of 19 columns), so a caller keeps its window alive from here;
// the context must stay valid, and no new export of the same object may
// start, until WriteToExcel returns.
using ExcelIdleCallback = void (*)(void* context);
inline constexpr int kExcelIdleIntervalMs = 50;

// The largest sheet a workbook holds: 1,048,576 rows including the heading,
// 16,384 columns.
inline constexpr int kExcelMaxRows = 1048576;
inline constexpr int kExcelMaxColumns = 16384;

class CExcelInterface {
public:
  // `rows` counts the heading row.
  CExcelInterface(int rows, int columns);

  void SetContext(void* context, ExcelCellCallback callback);
  // Without one (the default) the compression runs on the caller's thread.
  void SetIdleCallback(ExcelIdleCallback idle);
  // The file to write; empty (the default) picks a new file in the user's
  // documents folder.
  void SetFilePath(std::string path);
  // Name stem of that default file, e.g. the grid's name; empty gives
  // "export".
  void SetBaseName(std::string name);

  // Writes the file. Returns non-zero on success, 0 when:
  // - rows is below 1 or above kExcelMaxRows, columns below 1 or above
  //   kExcelMaxColumns, or no callback is set (nothing is called or written);
  // - the folder cannot take a new file (checked before the first callback);
  // - writing or renaming fails.
  // On failure no file is left under the final name or the temporary one.
  [[nodiscard]] int WriteToExcel();

  // The file written, or attempted; empty before WriteToExcel, and when the
  // counts or the callback were refused.
  const std::string& FilePath() const { return writtenPath_; }

private:
  int rows_;
  int columns_;
  void* context_ = nullptr;
  ExcelCellCallback callback_ = nullptr;
  ExcelIdleCallback idle_ = nullptr;
  std::string filePath_;
  std::string baseName_;
  std::string writtenPath_;
};

} // namespace vh
