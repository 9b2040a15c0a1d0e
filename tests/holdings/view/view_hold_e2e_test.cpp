// The holdings view against a real tarn-riskd on a loopback port, driven
// through its controls and mouse clicks (in-process, playing host) and
// through tarntrader's headless mode: every answer is compared field by
// field with the database.
// The back-end's price ticks are checked field by field by its own stream
// tests and their delivery to every row of a scrip by the view core's test.
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QProcess>
#include <QTabBar>
#include <QTest>

#include <cmath>
#include <functional>
#include <utility>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
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

using ViewHoldE2E = BackendFixture;

TEST_F(ViewHoldE2E, AnswersEqualTheDatabaseRowsFieldByField) {
  const char* bothLegs = "s.nse_symbol IS NOT NULL AND s.bse_symbol IS NOT NULL";
  const Scrip a = FindScrip(bothLegs), b = FindScrip(bothLegs, 1);
  const Scrip bse = FindScrip("s.nse_symbol IS NULL");
  const struct {
    const char* name;
    std::function<bool(QWidget*)> select; // before "View Hold/Pos" is pressed
    std::string where;
    bool drops = false; // records of an older answer are left out
  } cases[] = {
      {"bseOnly", [&](QWidget* v) { return SelectBse(v, bse); }, "s.id=" + bse.id},
      {"bothRows", [&](QWidget* v) { return SelectNse(v, a) && SelectBse(v, b); },
       "s.id IN (" + a.id + "," + b.id + ")"},
      {"client",
       [&](QWidget* v) { return Click(v, kRadioClient) && Pick(v, kComboClient, busiestClient); },
       "h.client_id='" + busiestClient + "'"},
      // The second press comes while the first answer may still stream.
      {"secondRequest",
       [&](QWidget* v) {
         return SelectNse(v, a) && Click(v, kButtonViewHoldPos) && SelectNse(v, b);
       },
       "s.id=" + b.id, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto view = MakeView();
    ASSERT_TRUE(c.select(view.get()) && Click(view.get(), kButtonViewHoldPos));
    ASSERT_TRUE(WaitForAnswers(*view));
    const auto expected = DatabaseRows(db, c.where);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(GridRows(*view), expected);
    EXPECT_EQ(view->Core().store().RecordCount(), expected.size());
    EXPECT_EQ(view->Core().droppedRecords() > 0, c.drops);
    EXPECT_TRUE(messages.empty());
  }
}

TEST_F(ViewHoldE2E, MessagesAndLoadBse) {
  const Scrip both = FindScrip("s.nse_symbol IS NOT NULL AND s.bse_symbol IS NOT NULL", 2);
  const Scrip nseOnly = FindScrip("s.bse_symbol IS NULL");
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

TEST_F(ViewHoldE2E, TheSelectedRowsRecordIsKeptUntilTheNextAnswer) {
  auto view = MakeView();
  ASSERT_TRUE(AskForClient(view.get(), busiestClient) && WaitForAnswers(*view));
  CFilterListCtrl* grid = view->HoldingsGrid();
  ASSERT_GE(grid->Engine().DisplayedCount(), 3);
  const auto click = [&](int row, Qt::KeyboardModifiers keys = {}) {
    const QRect cell = grid->visualRect(grid->model()->index(row, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, keys, cell.center());
  };
  // Each case: clicks (row, with Ctrl), then the row whose record is kept (-1: none).
  const struct {
    const char* name;
    std::vector<std::pair<int, bool>> clicks;
    int kept;
  } cases[] = {
      {"aClick", {{1, false}}, 1},
      {"ctrlClickAddsAndIsKept", {{0, false}, {2, true}}, 2},
      {"ctrlClickOffFallsBackToTheTopmost", {{2, false}, {0, true}, {0, true}}, 2},
      {"lastRowCtrlClickedOff", {{1, false}, {1, true}}, -1},
  };
  const auto recordAt = [&](int row) {
    return row < 0 ? 0 : grid->Engine().GetItemData(grid->Model().EngineRow(row));
  };
  for (const auto& c : cases) {
    for (const auto& [row, ctrl] : c.clicks)
      click(row, ctrl ? Qt::ControlModifier : Qt::NoModifier);
    EXPECT_EQ(reinterpret_cast<uint64_t>(view->SelectedRecord()), recordAt(c.kept)) << c.name;
  }
  click(1);
  ASSERT_TRUE(view->SelectedRecord() && Click(view.get(), kButtonViewHoldPos));
  EXPECT_EQ(view->SelectedRecord(), nullptr) << "a new answer starts without a selection";
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

TEST(HeadlessE2E, RunsExportTheDatabaseRowsOrEndWithAClearCode) {
  QTemporaryDir dir;
  const QString xlsx = dir.filePath("out.xlsx");
  const std::string path = dir.filePath("risk.db").toStdString();
  QFile list(dir.filePath("clients.txt"));
  ASSERT_TRUE(list.open(QIODevice::WriteOnly) && list.write("C000002\nC000003\n") > 0);
  list.close();
  auto run = [&](QStringList args, QString& err) {
    QProcess p;
    args << "--plugin" << VIEWHOLDINGS_PATH << "--db" << QString::fromStdString(path) << "--rows"
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
      path,
      "SELECT nse_symbol || '-' || nse_series FROM scrip s WHERE nse_symbol IS NOT NULL ORDER BY"
      " (SELECT count(*) FROM holding h WHERE h.scrip_id = s.id) DESC");
  const QString scrip = QString::fromStdString("NSE:" + nse);
  const std::string ofScrip = "s.nse_symbol || '-' || s.nse_series = '" + nse + "'";
  const struct {
    const char* name;
    QStringList args;
    int exitCode;
    const char* stderrPart;
    std::string where = {}; // the database rows exported; "" for no export
    bool twice = false;     // column 19 is twice column 7, in descending order
  } cases[] = {
      {"scrip", {"--scrip", scrip}, 0, "", ofScrip},
      {"clientsListed",
       {"--scrip", scrip, "--clients", list.fileName()},
       0,
       "",
       ofScrip + " AND h.client_id IN ('C000002', 'C000003')"},
      {"customFilterSort",
       {"--scrip", scrip, "--custom", "Twice=\"Holdings Qty\" * 2", "--filter", "Product=CNC",
        "--sort", "Twice:desc"},
       0,
       "",
       ofScrip + " AND h.product = 'CNC'",
       true},
      {"unknownSort", {"--client", "C000002", "--sort", "Nope"}, 2, "\"Nope\""},
      {"unknownFilter", {"--client", "C000002", "--filter", "Nope=1"}, 2, "\"Nope\""},
      {"badCustom", {"--client", "C000002", "--custom", "X=\"Nope\" * 2"}, 2, "--custom X"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QFile::remove(xlsx);
    EXPECT_EQ(run(c.args + QStringList{"--export", xlsx}, err), c.exitCode) << err.toStdString();
    EXPECT_TRUE(err.contains(c.stderrPart)) << err.toStdString();
    if (c.where.empty())
      continue;
    const Sheet sheet = ReadSheet(xlsx.toStdString());
    EXPECT_EQ(sheet.count("S2") > 0, c.twice);
    std::vector<Row> rows;
    double previous = INFINITY;
    for (int r = 2; sheet.count("A" + std::to_string(r)); ++r) {
      Row row;
      for (char column = 'A'; column <= 'S'; ++column) {
        const auto it = sheet.find(column + std::to_string(r));
        row.push_back(it == sheet.end() ? "" : it->second.text);
      }
      if (c.twice) {
        EXPECT_EQ(std::stod(row[18]), 2 * std::stod(row[6]));
        EXPECT_LE(std::stod(row[18]), std::exchange(previous, std::stod(row[18])));
      }
      row.pop_back();
      rows.push_back(std::move(row));
    }
    auto expected = DatabaseRows(path, c.where);
    ToValues(rows);
    ToValues(expected);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(rows, expected);
  }
  // The columns were saved into --settings DIR when the last run left.
  QFile saved(dir.filePath("settings/UserSetting.ini"));
  EXPECT_TRUE(saved.open(QIODevice::ReadOnly) && saved.readAll().contains("Twice#"));
}

} // namespace
} // namespace vh::test
