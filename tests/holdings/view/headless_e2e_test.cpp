// tarntrader's headless mode as a user runs it: the real view driven to one
// query, its .xlsx read back and compared with the database.
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/excel/xlsx_read.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

// Numbers are written as numbers ("12.50" reads back as 12.5): compare by value.
void ToValues(std::vector<Row>& rows) {
  for (Row& row : rows)
    for (std::string& cell : row) {
      char* end = nullptr;
      const double v = std::strtod(cell.c_str(), &end);
      char buf[64];
      if (!cell.empty() && !*end && std::snprintf(buf, sizeof buf, "%.10g", v) > 0)
        cell = buf;
    }
  std::sort(rows.begin(), rows.end());
}

// The sheet's data rows, `columns` cells each, in sheet order.
std::vector<Row> SheetRows(const QString& file, int columns) {
  const Sheet sheet = ReadSheet(file.toStdString());
  std::vector<Row> rows;
  for (int r = 2; sheet.count("A" + std::to_string(r)); ++r) {
    Row row;
    for (char c = 'A'; c < 'A' + columns; ++c) {
      const auto it = sheet.find(c + std::to_string(r));
      row.push_back(it == sheet.end() ? "" : it->second.text);
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

TEST(HeadlessE2E, RunsExportTheDatabaseRowsOrEndWithAClearCode) {
  QTemporaryDir dir;
  const QString db = dir.filePath("risk.db"), xlsx = dir.filePath("out.xlsx");
  QFile list(dir.filePath("clients.txt"));
  ASSERT_TRUE(list.open(QIODevice::WriteOnly) && list.write("C000002\nC000003\n") > 0);
  list.close();
  auto run = [&](QStringList args, QString& err) {
    QProcess p;
    args << "--plugin" << VIEWHOLDINGS_PATH << "--db" << db << "--rows"
         << "3000"
         << "--settings" << dir.filePath("settings");
    p.start(TARNTRADER_PATH, args);
    p.waitForFinished(120000);
    err = QString::fromLocal8Bit(p.readAllStandardError());
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2;
  };
  QString err;
  ASSERT_EQ(run({"--client", "C000001"}, err), 0) << err.toStdString(); // makes the database
  const std::string nse = DatabaseText(
      db.toStdString(),
      "SELECT nse_symbol || '-' || nse_series FROM scrip s WHERE nse_symbol IS NOT NULL ORDER BY"
      " (SELECT count(*) FROM holding h WHERE h.scrip_id = s.id) DESC");
  const QString scrip = QString::fromStdString("NSE:" + nse);
  const std::string ofScrip = "s.nse_symbol || '-' || s.nse_series = '" + nse + "'";
  // Checks the export of a run that succeeded.
  using Check = std::function<void()>;
  auto equalsDatabase = [&](std::string where) {
    return Check([&, where] {
      auto rows = SheetRows(xlsx, 18), expected = DatabaseRows(db.toStdString(), where);
      ToValues(rows);
      ToValues(expected);
      EXPECT_FALSE(expected.empty());
      EXPECT_EQ(rows, expected);
    });
  };
  const struct {
    const char* name;
    QStringList args;
    int exitCode;
    const char* stderrPart;
    Check check;
  } cases[] = {
      {"scrip", {"--scrip", scrip}, 0, "", equalsDatabase(ofScrip)},
      {"client", {"--client", "C000002"}, 0, "", equalsDatabase("h.client_id = 'C000002'")},
      {"clientsListed",
       {"--scrip", scrip, "--clients", list.fileName()},
       0,
       "",
       equalsDatabase(ofScrip + " AND h.client_id IN ('C000002', 'C000003')")},
      {"customFilterSort",
       {"--scrip", scrip, "--custom", "Twice=\"Holdings Qty\" * 2", "--filter", "Product=CNC",
        "--sort", "Twice:desc"},
       0,
       "",
       [&] {
         const auto rows = SheetRows(xlsx, 19);
         EXPECT_EQ(rows.size(),
                   DatabaseRows(db.toStdString(), ofScrip + " AND h.product = 'CNC'").size());
         for (size_t r = 0; r < rows.size(); ++r) {
           EXPECT_EQ(rows[r][1], "CNC");
           EXPECT_EQ(std::stod(rows[r][18]), 2 * std::stod(rows[r][6]));
           if (r > 0)
             EXPECT_LE(std::stod(rows[r][18]), std::stod(rows[r - 1][18]));
         }
       }},
      {"unknownSort", {"--client", "C000002", "--sort", "Nope"}, 2, "\"Nope\""},
      {"unknownFilter", {"--client", "C000002", "--filter", "Nope=1"}, 2, "\"Nope\""},
      {"badCustom", {"--client", "C000002", "--custom", "X=\"Nope\" * 2"}, 2, "--custom X"},
      {"clientNotListed", {"--client", "C000001", "--clients", list.fileName()}, 2, "C000001"},
      {"noBackEnd", {"--client", "C000002", "--backend", "127.0.0.1:1"}, 1, "cannot reach"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QFile::remove(xlsx);
    EXPECT_EQ(run(c.args + QStringList{"--export", xlsx}, err), c.exitCode) << err.toStdString();
    EXPECT_TRUE(err.contains(c.stderrPart)) << err.toStdString();
    if (c.check)
      c.check();
  }
}

} // namespace
} // namespace vh::test
