#include "excel/excel_interface.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <xlsxwriter.h>

#include "common/c_locale.h"
#include "excel/cell_value.h"
#include "excel/export_path.h"

namespace vh {
namespace {

// A new, empty file beside `finalPath` that is removed again unless it is
// released (after it was renamed into place).
class TempSibling {
public:
  explicit TempSibling(const std::string& finalPath) {
    const std::filesystem::path target(finalPath);
    const std::filesystem::path dir = target.has_parent_path() ? target.parent_path() : ".";
    std::string pattern = (dir / ("." + target.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0)
      return;
    // mkstemp makes the file private; the export gets the usual mode.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    ::close(fd);
    path_ = pattern;
  }
  ~TempSibling() {
    if (!path_.empty())
      std::remove(path_.c_str());
  }
  TempSibling(const TempSibling&) = delete;
  TempSibling& operator=(const TempSibling&) = delete;

  bool ok() const { return !path_.empty(); }
  const std::string& path() const { return path_; }
  void Release() { path_.clear(); }

private:
  std::string path_;
};

// Streams every cell into `sheet`, in the order constant-memory mode needs.
bool WriteRows(lxw_worksheet* sheet, int rows, int columns, void* context,
               ExcelCellCallback callback) {
  std::vector<char> numeric(static_cast<size_t>(columns), 0);
  std::string text;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < columns; ++column) {
      text.clear();
      int type = -1;
      if (callback(context, row, column, text, type) != 1 || text.empty())
        continue;
      if (row == 0)
        numeric[static_cast<size_t>(column)] = IsNumericColumnType(type);
      const auto r = static_cast<lxw_row_t>(row);
      const auto c = static_cast<lxw_col_t>(column);
      double value = 0;
      const bool asNumber =
          row > 0 && numeric[static_cast<size_t>(column)] && ParseWholeNumber(text, value);
      const std::string cell = asNumber ? std::string() : CellText(text);
      // libxlsxwriter prints numbers with printf, which follows LC_NUMERIC: a
      // comma there would corrupt the sheet. Only its calls run in the C
      // locale, never the caller's callback.
      const lxw_error error = InCLocale([&] {
        return asNumber ? worksheet_write_number(sheet, r, c, value, nullptr)
                        : worksheet_write_string(sheet, r, c, cell.c_str(), nullptr);
      });
      if (error != LXW_NO_ERROR)
        return false;
    }
  }
  return true;
}

// Closes `book` (writing and compressing the file), calling `idle` on this
// thread meanwhile when there is one. Returns workbook_close's result.
lxw_error CloseBook(lxw_workbook* book, ExcelIdleCallback idle, void* context) {
  // libxlsxwriter prints numbers with printf, which follows LC_NUMERIC; the
  // C locale is per thread, so it is set where the close runs.
  const auto close = [book] { return InCLocale([book] { return workbook_close(book); }); };
  if (idle == nullptr)
    return close();
  std::mutex mutex;
  std::condition_variable finished;
  bool done = false;
  lxw_error result = LXW_NO_ERROR;
  std::thread worker([&] {
    const lxw_error e = close();
    std::lock_guard lock(mutex);
    result = e;
    done = true;
    finished.notify_one();
  });
  std::unique_lock lock(mutex);
  do {
    lock.unlock();
    idle(context);
    lock.lock();
  } while (!finished.wait_for(lock, std::chrono::milliseconds(kExcelIdleIntervalMs),
                              [&] { return done; }));
  lock.unlock();
  worker.join();
  return result;
}

} // namespace

CExcelInterface::CExcelInterface(int rows, int columns) : rows_(rows), columns_(columns) {}

void CExcelInterface::SetContext(void* context, ExcelCellCallback callback) {
  context_ = context;
  callback_ = callback;
}

void CExcelInterface::SetIdleCallback(ExcelIdleCallback idle) {
  idle_ = idle;
}

void CExcelInterface::SetFilePath(std::string path) {
  filePath_ = std::move(path);
}

void CExcelInterface::SetBaseName(std::string name) {
  baseName_ = std::move(name);
}

int CExcelInterface::WriteToExcel() {
  writtenPath_.clear();
  if (rows_ < 1 || rows_ > kExcelMaxRows || columns_ < 1 || columns_ > kExcelMaxColumns ||
      callback_ == nullptr)
    return 0;
  writtenPath_ = filePath_.empty()
                     ? DefaultExportPath(DocumentsFolder(), baseName_, std::time(nullptr))
                     : filePath_;
  TempSibling temp(writtenPath_);
  if (!temp.ok())
    return 0;

  lxw_workbook_options options{};
  options.constant_memory = LXW_TRUE;
  lxw_workbook* book = workbook_new_opt(temp.path().c_str(), &options);
  if (book == nullptr)
    return 0;
  lxw_worksheet* sheet = workbook_add_worksheet(book, nullptr);
  const bool rowsOk = sheet != nullptr && WriteRows(sheet, rows_, columns_, context_, callback_);
  // Closing also frees the workbook, so it happens on failure too; the
  // temporary file it wrote is then removed with `temp`.
  const lxw_error closed = CloseBook(book, idle_, context_);
  if (!rowsOk || closed != LXW_NO_ERROR)
    return 0;
  if (std::rename(temp.path().c_str(), writtenPath_.c_str()) != 0)
    return 0;
  temp.Release();
  return 1;
}

} // namespace vh
