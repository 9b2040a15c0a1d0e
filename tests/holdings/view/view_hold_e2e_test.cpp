// The holdings view against a real tarn-riskd on a loopback port, driven
// through its controls (in-process, playing host) and through tarntrader's
// headless mode: every answer is compared field by field with the database.
// The back-end's price ticks are checked field by field by its own stream
// tests and their delivery to every row of a scrip by the view core's test.
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QProcess>
#include <QTabBar>
#include <QTest>

#include <functional>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holding_request.h"
#include "holdings/holdings_columns.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "plugin/tarn_host_api.h"
#include "tests/excel/xlsx_read.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

QComboBox* Combo(QWidget* view, int id) {
  return qobject_cast<QComboBox*>(GetDlgItem(view, id));
}

bool Press(QWidget* v) {
  return Click(v, kButtonViewHoldPos);
}

using ViewHoldE2E = BackendFixture;

TEST_F(ViewHoldE2E, AnswersEqualTheDatabaseRowsFieldByField) {
  const Scrip a = FindScrip(kBothLegs), b = FindScrip(kBothLegs, 1), bse = FindScrip(kBseOnly);
  const std::string client = BusiestClient();
  const struct {
    const char* name;
    std::function<bool(QWidget*)> select;
    std::string where;
    bool everyOtherClient = false; // combo 9013 offers every other client only
    bool drops = false;            // records are left out (other clients, older answer)
  } cases[] = {
      {"bseOnly", [&](QWidget* v) { return SelectBse(v, bse) && Press(v); }, "s.id=" + bse.id},
      {"bothRows", [&](QWidget* v) { return SelectNse(v, a) && SelectBse(v, b) && Press(v); },
       "s.id IN (" + a.id + "," + b.id + ")"},
      {"client", [&](QWidget* v) { return AskForClient(v, client); },
       "h.client_id='" + client + "'"},
      // The second press comes while the first answer may still stream.
      {"secondRequest",
       [&](QWidget* v) { return SelectNse(v, a) && Press(v) && SelectNse(v, b) && Press(v); },
       "s.id=" + b.id, false, true},
      {"unknownClientsDropped", [&](QWidget* v) { return SelectNse(v, a) && Press(v); },
       "s.id=" + a.id, true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto view = MakeView(c.everyOtherClient);
    ASSERT_TRUE(c.select(view.get()));
    ASSERT_TRUE(WaitForAnswers(*view));
    auto expected = DatabaseRows(c.where);
    std::erase_if(expected, [&](const Row& r) { return !offered.count(r[0]); });
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(GridRows(*view), expected);
    EXPECT_EQ(view->Core().store().RecordCount(), expected.size());
    EXPECT_EQ(view->Core().droppedRecords() > 0, c.drops);
    EXPECT_TRUE(messages.empty());
  }
}

TEST_F(ViewHoldE2E, MessagesAndLoadBse) {
  const Scrip both = FindScrip(kBothLegs, 2), nseOnly = FindScrip(kNseOnly);
  const struct {
    const char* name;
    std::function<void(QWidget*)> prepare;
    int button;
    const char* message;        // "" for none
    std::string bseSymbol = {}; // what "Load BSE" must end on; "" for nothing
  } cases[] = {
      {"bothDashes", [](QWidget*) {}, kButtonViewHoldPos, kMsgSelectScrip},
      {"noNseExchange", [](QWidget* v) { Combo(v, kComboNseExchange)->setCurrentIndex(-1); },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noClient", [](QWidget* v) { Click(v, kRadioClient); }, kButtonViewHoldPos,
       kMsgSelectClient},
      {"loadBseWithoutScrip", [](QWidget*) {}, kButtonLoadBse, ""},
      {"loadBseCounterpart", [&](QWidget* v) { SelectNse(v, both); }, kButtonLoadBse, "",
       both.bseSymbol},
      {"loadBseNone", [&](QWidget* v) { SelectNse(v, nseOnly); }, kButtonLoadBse,
       kMsgNoBseCounterpart},
  };
  auto view = MakeView();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->ResetSelection();
    // Resets never add items twice.
    ASSERT_EQ(Combo(view.get(), kComboNseExchange)->count(), 2);
    messages.clear();
    c.prepare(view.get());
    ASSERT_TRUE(Click(view.get(), c.button));
    EXPECT_EQ(view->Core().outstandingAnswers(), 0);
    // "Load BSE" empties the BSE row before any answer.
    if (c.button == kButtonLoadBse) {
      EXPECT_EQ(Combo(view.get(), kComboBseSymbol)->count(), 0);
    }
    QComboBox* bseSymbol = Combo(view.get(), kComboBseSymbol);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          return bseSymbol->currentText().toStdString() == c.bseSymbol &&
                 !(*c.message && messages.empty());
        },
        10000));
    EXPECT_EQ(messages,
              *c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{});
  }
}

TEST_F(ViewHoldE2E, LayoutsTabsMenuAndColumnsAfterARestart) {
  {
    CViewHold fresh;
    fresh.resize(1000, 620);
    fresh.Initialise("RMS1", 0);
    // Initialisation lays the tab out against the width less 430 ...
    EXPECT_EQ(fresh.HoldingsGrid()->geometry(), QRect(10, 110, 975, 450));
    EXPECT_EQ(fresh.Tabs()->geometry(), QRect(10, 560, 570, 30));
    // ... a resize against the width less 30, at the bottom edge.
    fresh.show();
    fresh.resize(1200, 800);
    ASSERT_TRUE(QTest::qWaitFor([&] { return fresh.size() == QSize(1200, 800); }, 5000));
    EXPECT_EQ(fresh.AlertGrid()->geometry(), QRect(10, 110, 1175, 630));
    EXPECT_EQ(fresh.Tabs()->geometry(), QRect(10, 775, 1170, 30));
    fresh.SelectTab(1);
    EXPECT_TRUE(fresh.HoldingsGrid()->isHidden() && !fresh.AlertGrid()->isHidden());
    // The administrator holds the mark right: the popups come first, then
    // the grid's items without "Read from Excel".
    const auto menu = fresh.MakeRowMenu();
    const auto actions = menu->actions();
    ASSERT_GE(actions.size(), 7);
    EXPECT_TRUE(actions[0]->menu() && actions[1]->menu() && actions[2]->isSeparator());
    for (int i = 3; i < 7; ++i)
      EXPECT_EQ(actions[i]->data().toInt(), std::vector<int>({4006, 4008, 4009, 4010})[i - 3]);
    ASSERT_EQ(fresh.AddCustomColumn("Value", "\"Holdings Qty\" * \"Close Price\""), QString());
    fresh.HoldingsGrid()->horizontalHeader()->moveSection(1, 18); // "Product" to the far right
  }                                                               // closing saves the profile
  auto view = MakeView();
  const QStringList names = view->HeaderNames();
  ASSERT_EQ(names.size(), 19);
  EXPECT_EQ(names.last(), "Product");
  EXPECT_TRUE(names.contains("Value"));
  EXPECT_EQ(view->AlertGrid()->HeaderItemCount(), kAlertColumnCount);
  EXPECT_EQ(view->AlertGrid()->HeaderItemText(2), "ISIN");
}

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
    Check check = {};
  } cases[] = {
      {"scrip", {"--scrip", scrip}, 0, "", equalsDatabase(ofScrip)},
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
           if (r > 0) {
             EXPECT_LE(std::stod(rows[r][18]), std::stod(rows[r - 1][18]));
           }
         }
       }},
      {"unknownSort", {"--client", "C000002", "--sort", "Nope"}, 2, "\"Nope\""},
      {"unknownFilter", {"--client", "C000002", "--filter", "Nope=1"}, 2, "\"Nope\""},
      {"badCustom", {"--client", "C000002", "--custom", "X=\"Nope\" * 2"}, 2, "--custom X"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QFile::remove(xlsx);
    EXPECT_EQ(run(c.args + QStringList{"--export", xlsx}, err), c.exitCode) << err.toStdString();
    EXPECT_TRUE(err.contains(c.stderrPart)) << err.toStdString();
    if (c.check)
      c.check();
  }
  // The columns were saved into --settings DIR when the last run left.
  QFile saved(dir.filePath("settings/UserSetting.ini"));
  EXPECT_TRUE(saved.open(QIODevice::ReadOnly) && saved.readAll().contains("Twice#"));
}

} // namespace
} // namespace vh::test
