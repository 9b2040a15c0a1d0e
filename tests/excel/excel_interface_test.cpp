// Exports real files into a temporary folder and reads them back.
#include "excel/excel_interface.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/excel/temp_folder.h"
#include "tests/excel/xlsx_read.h"

namespace vh {
namespace {

namespace fs = std::filesystem;
using test::Sheet;
using test::SheetCell;

// A grid as the export sees it: headings with their comparison types, and
// rows of texts. Records every call so order and arguments can be checked.
struct Grid {
  std::vector<std::pair<std::string, int>> heading;
  std::vector<std::vector<std::string>> rows;
  struct Call {
    int row, column;
    bool cleanOnEntry; // text empty and type -1 when the callee got them
    bool operator==(const Call&) const = default;
  };
  std::vector<Call> calls;

  static int Cell(void* context, int row, int column, std::string& text, int& type) {
    auto* grid = static_cast<Grid*>(context);
    grid->calls.push_back({row, column, text.empty() && type == -1});
    if (row == 0) {
      text = grid->heading[column].first;
      type = grid->heading[column].second;
      return 1;
    }
    type = -1;
    text = grid->rows[row - 1][column];
    return 1;
  }
};

int Export(Grid& grid, const std::string& path) {
  CExcelInterface excel(static_cast<int>(grid.rows.size()) + 1,
                        static_cast<int>(grid.heading.size()));
  excel.SetContext(&grid, &Grid::Cell);
  excel.SetFilePath(path);
  return excel.WriteToExcel();
}

SheetCell Text(std::string s) {
  return {false, std::move(s)};
}
SheetCell Number(std::string s) {
  return {true, std::move(s)};
}

TEST(ExcelExport, HeadingFirstThenCellsWithNumericColumnsAsNumbers) {
  test::TempFolder folder;
  Grid grid;
  grid.heading = {{"Client Id", 3}, {"Holdings Qty", 1}, {"Close Price", 2},
                  {"Haircut", 5},   {"Value", 4},        {"Trade Date", 6}};
  grid.rows = {
      {"C000123", "1500", "1234.50", "12.5", "1851750", "07/06/2024"},
      {"500", "-20", "N/A", "", "9007199254740993", "09:15:00"},
      {"A&B <x>", "12abc", " 3", "1e3", "0", "07Jun2024"},
  };
  const std::string path = folder.file("holdings.xlsx");
  ASSERT_NE(Export(grid, path), 0);

  const Sheet expected = {
      {"A1", Text("Client Id")},
      {"B1", Text("Holdings Qty")},
      {"C1", Text("Close Price")},
      {"D1", Text("Haircut")},
      {"E1", Text("Value")},
      {"F1", Text("Trade Date")},
      {"A2", Text("C000123")},
      {"B2", Number("1500")},
      {"C2", Number("1234.5")},
      {"D2", Number("12.5")},
      {"E2", Number("1851750")},
      {"F2", Text("07/06/2024")},
      // A number in a text column stays text; a non-number in a numeric
      // column stays text; an empty text leaves the cell blank.
      {"A3", Text("500")},
      {"B3", Number("-20")},
      {"C3", Text("N/A")},
      {"E3", Number("9007199254740992")},
      {"F3", Text("09:15:00")},
      {"A4", Text("A&B <x>")},
      {"B4", Text("12abc")},
      {"C4", Text(" 3")},
      {"D4", Number("1000")},
      {"E4", Number("0")},
      {"F4", Text("07Jun2024")},
  };
  EXPECT_EQ(test::ReadSheet(path), expected);
}

TEST(ExcelExport, CellsAreAskedRowByRowLeftToRightEachOnce) {
  test::TempFolder folder;
  Grid grid;
  grid.heading = {{"A", 3}, {"B", 1}};
  grid.rows = {{"a", "1"}, {"b", "2"}};
  ASSERT_NE(Export(grid, folder.file("order.xlsx")), 0);
  const std::vector<Grid::Call> expected = {{0, 0, true}, {0, 1, true}, {1, 0, true},
                                            {1, 1, true}, {2, 0, true}, {2, 1, true}};
  EXPECT_EQ(grid.calls, expected);
}

TEST(ExcelExport, ACellTheCallbackDeclinesStaysBlank) {
  test::TempFolder folder;
  const std::string path = folder.file("declined.xlsx");
  CExcelInterface excel(3, 1);
  // Gives the heading and the last row only, with a text it must ignore.
  excel.SetContext(nullptr, [](void*, int row, int, std::string& text, int& type) {
    text = row == 0 ? "Qty" : "7";
    type = row == 0 ? 1 : -1;
    return row == 1 ? 0 : 1;
  });
  excel.SetFilePath(path);
  ASSERT_NE(excel.WriteToExcel(), 0);
  EXPECT_EQ(test::ReadSheet(path), (Sheet{{"A1", Text("Qty")}, {"A3", Number("7")}}));
}

TEST(ExcelExport, CountsOrCallbackOutsideWhatASheetTakesAreRefused) {
  const struct {
    const char* name;
    int rows, columns;
    bool callback;
  } cases[] = {
      {"noHeadingRow", 0, 3, true},
      {"negativeRows", -5, 3, true},
      {"noColumns", 2, 0, true},
      {"oneRowTooMany", kExcelMaxRows + 1, 1, true},
      {"oneColumnTooMany", 2, kExcelMaxColumns + 1, true},
      {"noCallback", 2, 2, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    test::TempFolder folder;
    static int calls;
    calls = 0;
    CExcelInterface excel(c.rows, c.columns);
    if (c.callback)
      excel.SetContext(nullptr, [](void*, int, int, std::string& text, int&) {
        ++calls;
        text = "x";
        return 1;
      });
    excel.SetFilePath(folder.file("refused.xlsx"));
    EXPECT_EQ(excel.WriteToExcel(), 0);
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(folder.Entries().empty());
  }
}

TEST(ExcelExport, AFullSheetIsAccepted) {
  test::TempFolder folder;
  const std::string path = folder.file("full.xlsx");
  CExcelInterface excel(kExcelMaxRows, 1);
  // Only the heading and the very last row are given: the rest stay blank,
  // which keeps the file small.
  excel.SetContext(nullptr, [](void*, int row, int, std::string& text, int& type) {
    if (row != 0 && row != kExcelMaxRows - 1)
      return 0;
    text = row == 0 ? "N" : "last";
    type = row == 0 ? 3 : -1;
    return 1;
  });
  excel.SetFilePath(path);
  ASSERT_NE(excel.WriteToExcel(), 0);
  EXPECT_EQ(test::ReadSheet(path), (Sheet{{"A1", Text("N")}, {"A1048576", Text("last")}}));
}

TEST(ExcelExport, AnUnwritablePathFailsBeforeAnyCellAndLeavesNoFile) {
  test::TempFolder folder;
  std::ofstream(folder.file("plain-file")) << "not a folder";
  const struct {
    const char* name;
    std::string path;
  } cases[] = {
      {"missingFolder", folder.file("missing/out.xlsx")},
      {"parentIsAFile", folder.file("plain-file/out.xlsx")},
      {"readOnlyFileSystem", "/proc/vh-export-test.xlsx"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Grid grid;
    grid.heading = {{"A", 3}};
    grid.rows = {{"a"}};
    EXPECT_EQ(Export(grid, c.path), 0);
    EXPECT_TRUE(grid.calls.empty());
    EXPECT_FALSE(fs::exists(c.path));
  }
  EXPECT_EQ(folder.Entries(), std::vector<std::string>{"plain-file"});
}

TEST(ExcelExport, AFailedRenameRemovesTheWrittenTemporaryFile) {
  test::TempFolder folder;
  const std::string target = folder.file("taken");
  fs::create_directory(target);
  std::ofstream(target + "/inside") << "kept";
  Grid grid;
  grid.heading = {{"A", 3}};
  grid.rows = {{"a"}};
  EXPECT_EQ(Export(grid, target), 0);
  EXPECT_EQ(grid.calls.size(), 2u) << "the rows were written before the rename";
  EXPECT_EQ(folder.Entries(), std::vector<std::string>{"taken"});
  EXPECT_TRUE(fs::exists(target + "/inside"));
}

TEST(ExcelExport, AnEarlierFileIsReplacedWholeWithTheUsualMode) {
  test::TempFolder folder;
  const std::string path = folder.file("again.xlsx");
  std::ofstream(path) << "an older file";
  Grid grid;
  grid.heading = {{"Qty", 1}};
  grid.rows = {{"3"}};
  ASSERT_NE(Export(grid, path), 0);
  EXPECT_EQ(test::ReadSheet(path), (Sheet{{"A1", Text("Qty")}, {"A2", Number("3")}}));
  EXPECT_EQ(folder.Entries(), std::vector<std::string>{"again.xlsx"});

  const mode_t mask = ::umask(0);
  ::umask(mask);
  struct stat st {};
  ASSERT_EQ(::stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0666 & ~mask);
}

TEST(ExcelExport, TheIdleCallbackRunsOnTheCallersThreadAfterTheLastCell) {
  test::TempFolder folder;
  struct Probe {
    Grid grid;
    int cellsBeforeFirstIdle = -1;
    int idles = 0;
    bool otherThread = false;
    std::thread::id caller = std::this_thread::get_id();
  } probe;
  probe.grid.heading = {{"A", 3}, {"B", 1}};
  probe.grid.rows.assign(2000, {"some text", "12.5"});
  CExcelInterface excel(2001, 2);
  excel.SetContext(&probe, [](void* context, int row, int column, std::string& text, int& type) {
    return Grid::Cell(&static_cast<Probe*>(context)->grid, row, column, text, type);
  });
  excel.SetIdleCallback([](void* context) {
    auto* p = static_cast<Probe*>(context);
    if (p->idles++ == 0)
      p->cellsBeforeFirstIdle = static_cast<int>(p->grid.calls.size());
    p->otherThread = p->otherThread || std::this_thread::get_id() != p->caller;
  });
  const std::string path = folder.file("idle.xlsx");
  excel.SetFilePath(path);
  ASSERT_NE(excel.WriteToExcel(), 0);
  EXPECT_GE(probe.idles, 1);
  EXPECT_EQ(probe.cellsBeforeFirstIdle, 2001 * 2);
  EXPECT_FALSE(probe.otherThread);
  EXPECT_EQ(test::ReadSheet(path).at("B2001"), Number("12.5"));
}

// Sets an environment variable for one test and puts the old value back.
class ScopedEnv {
public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name))
      old_ = old;
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
  }
  ~ScopedEnv() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

private:
  const char* name_;
  std::optional<std::string> old_;
};

TEST(ExcelExport, WithoutAPathTheFileGoesToTheDocumentsFolderUnderTheBaseName) {
  test::TempFolder home;
  fs::create_directory(home.path() / "Documents");
  ScopedEnv homeEnv("HOME", home.path().c_str());
  ScopedEnv configEnv("XDG_CONFIG_HOME", nullptr);
  Grid grid;
  grid.heading = {{"A", 3}};
  grid.rows = {{"a"}};
  CExcelInterface excel(2, 1);
  excel.SetContext(&grid, &Grid::Cell);
  excel.SetBaseName("rms/holdview");
  ASSERT_NE(excel.WriteToExcel(), 0);

  const std::string folder = home.file("Documents");
  EXPECT_TRUE(
      std::regex_match(excel.FilePath(), std::regex(folder + R"(/rms_holdview_\d{8}_\d{6}\.xlsx)")))
      << excel.FilePath();
  EXPECT_EQ(test::ReadSheet(excel.FilePath()), (Sheet{{"A1", Text("A")}, {"A2", Text("a")}}));
}

} // namespace
} // namespace vh
