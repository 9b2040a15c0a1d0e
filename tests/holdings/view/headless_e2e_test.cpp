// tarntrader's headless mode as a user runs it: the real view driven to one
// query, its .xlsx read back and compared with the database.
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/excel/xlsx_read.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

struct ProcessRun {
  int exitCode = -1;
  QString err;
};

class HeadlessE2E : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    home_ = new QTemporaryDir;
    db_ = home_->filePath("risk.db");
  }
  static void TearDownTestSuite() {
    delete home_;
    home_ = nullptr;
  }

  ProcessRun Tarntrader(QStringList args) {
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", home_->path());
    p.setProcessEnvironment(env);
    args << "--plugin" << VIEWHOLDINGS_PATH << "--db" << db_ << "--rows"
         << "3000"
         << "--settings" << settings.path();
    p.start(TARNTRADER_PATH, args);
    ProcessRun r;
    if (!p.waitForFinished(120000)) {
      p.kill();
      p.waitForFinished();
      return r;
    }
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2;
    r.err = QString::fromLocal8Bit(p.readAllStandardError());
    return r;
  }

  // The sheet's data rows (heading row left out), each as its cell texts.
  static std::vector<Row> SheetRows(const QString& file, int columns) {
    const Sheet sheet = ReadSheet(file.toStdString());
    std::vector<Row> rows;
    for (int r = 2;; ++r) {
      if (!sheet.count("A" + std::to_string(r)))
        break;
      Row row;
      for (int c = 0; c < columns; ++c) {
        const auto it = sheet.find(std::string(1, char('A' + c)) + std::to_string(r));
        row.push_back(it == sheet.end() ? "" : it->second.text);
      }
      rows.push_back(std::move(row));
    }
    return rows;
  }

  static std::string Db() { return db_.toStdString(); }

  QTemporaryDir settings;
  QTemporaryDir out;
  static QTemporaryDir* home_;
  static QString db_;
};

QTemporaryDir* HeadlessE2E::home_ = nullptr;
QString HeadlessE2E::db_;

// Numbers are written as numbers ("12.50" reads back as 12.5, "609.43" as
// the nearest double's 16 digits): both sides compare by value.
std::string ByValue(const std::string& text) {
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (text.empty() || *end)
    return text;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.10g", v);
  return buf;
}

void ToValues(std::vector<Row>& rows) {
  for (Row& row : rows)
    for (std::string& cell : row)
      cell = ByValue(cell);
  std::sort(rows.begin(), rows.end());
}

TEST_F(HeadlessE2E, ScripAndClientRunsExportTheDatabaseRows) {
  // The first run makes the database.
  ASSERT_EQ(Tarntrader({"--client", "C000001"}).exitCode, 0);
  const std::string client = DatabaseText(Db(), "SELECT client_id FROM holding GROUP BY client_id "
                                                "ORDER BY count(*) DESC LIMIT 1");
  const std::string nse = DatabaseText(
      Db(), "SELECT nse_symbol || '-' || nse_series FROM scrip s WHERE nse_symbol IS NOT NULL AND "
            "EXISTS(SELECT 1 FROM holding h WHERE h.scrip_id = s.id) ORDER BY id LIMIT 1");
  const struct {
    const char* name;
    QStringList args;
    std::string where;
  } cases[] = {
      {"scrip",
       {"--scrip", QString::fromStdString("NSE:" + nse)},
       "s.nse_symbol || '-' || s.nse_series = '" + nse + "'"},
      {"client", {"--client", QString::fromStdString(client)}, "h.client_id = '" + client + "'"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const QString xlsx = out.filePath(QString(c.name) + ".xlsx");
    const QString png = out.filePath(QString(c.name) + ".png");
    const ProcessRun r = Tarntrader(c.args + QStringList{"--export", xlsx, "--snapshot", png});
    ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_TRUE(QFile::exists(png));
    auto rows = SheetRows(xlsx, 18);
    auto expected = DatabaseRows(Db(), c.where);
    ASSERT_FALSE(expected.empty());
    ToValues(rows);
    ToValues(expected);
    EXPECT_EQ(rows, expected);
  }
}

TEST_F(HeadlessE2E, CustomColumnFilterAndSortShapeTheExport) {
  ASSERT_EQ(Tarntrader({"--client", "C000001"}).exitCode, 0);
  const std::string nse = DatabaseText(
      Db(), "SELECT nse_symbol || '-' || nse_series FROM scrip s WHERE nse_symbol IS NOT NULL "
            "ORDER BY (SELECT count(*) FROM holding h WHERE h.scrip_id = s.id) DESC LIMIT 1");
  const QString xlsx = out.filePath("shaped.xlsx");
  const ProcessRun r = Tarntrader({"--scrip", QString::fromStdString("NSE:" + nse), "--custom",
                                   "Twice=\"Holdings Qty\" * 2", "--filter", "Product=CNC",
                                   "--sort", "Twice:desc", "--export", xlsx});
  ASSERT_EQ(r.exitCode, 0) << r.err.toStdString();
  const auto rows = SheetRows(xlsx, 19);
  const auto cnc = DatabaseRows(Db(), "s.nse_symbol || '-' || s.nse_series = '" + nse +
                                          "' AND h.product = 'CNC'");
  ASSERT_EQ(rows.size(), cnc.size());
  double last = 1e300;
  for (const Row& row : rows) {
    EXPECT_EQ(row[1], "CNC");
    const double twice = std::stod(row[18]);
    EXPECT_EQ(twice, 2 * std::stod(row[6]));
    EXPECT_LE(twice, last);
    last = twice;
  }
}

TEST_F(HeadlessE2E, UnknownNamesAndClientsEndTheRun) {
  ASSERT_EQ(Tarntrader({"--client", "C000001"}).exitCode, 0);
  QFile list(out.filePath("clients.txt"));
  ASSERT_TRUE(list.open(QIODevice::WriteOnly));
  list.write("C000002\nC000003\n");
  list.close();
  const struct {
    const char* name;
    QStringList args;
    int exitCode;
    const char* stderrPart;
  } cases[] = {
      {"unknownSort", {"--client", "C000002", "--sort", "Nope"}, 2, "\"Nope\""},
      {"unknownFilter", {"--client", "C000002", "--filter", "Nope=1"}, 2, "\"Nope\""},
      {"badCustom", {"--client", "C000002", "--custom", "X=\"Nope\" * 2"}, 2, "--custom X"},
      {"clientNotListed", {"--client", "C000001", "--clients", list.fileName()}, 2, "C000001"},
      {"clientListed", {"--client", "C000002", "--clients", list.fileName()}, 0, ""},
      {"noBackEnd", {"--client", "C000002", "--backend", "127.0.0.1:1"}, 1, "cannot reach"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const ProcessRun r = Tarntrader(c.args);
    EXPECT_EQ(r.exitCode, c.exitCode) << r.err.toStdString();
    EXPECT_TRUE(r.err.contains(c.stderrPart)) << r.err.toStdString();
  }
}

} // namespace
} // namespace vh::test
