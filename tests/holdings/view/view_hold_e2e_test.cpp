// The holdings view against a real tarn-riskd on a loopback port, driven
// through its controls (in-process, playing host) and through tarntrader's
// headless mode: every answer is compared field by field with the database.
#include <QAbstractButton>
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QProcess>
#include <QSignalSpy>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <set>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holding_request.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/startup_loader.h"
#include "plugin/tarn_host_api.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"
#include "settings/settings_paths.h"
#include "tests/excel/xlsx_read.h"

namespace vh::test {
namespace {

using Row = std::vector<std::string>; // the 18 cell texts

std::string Hundredths(int64_t v) {
  char text[64];
  std::snprintf(text, sizeof text, "%0.2lf", double(v) / 100.0);
  return text;
}

// Column 0 of each row `sql` gives, or all 18 as the grid shows a holding.
std::vector<Row> Query(const std::string& db, const std::string& sql, bool holdings = false) {
  riskd::Db d;
  std::string error;
  EXPECT_TRUE(d.Open(db, &error)) << error;
  riskd::Stmt s = d.Prepare(sql, &error);
  EXPECT_TRUE(s.ok()) << error << "\n" << sql;
  static const char* const kTypes[] = {"CL", "LT", "WC"};
  std::vector<Row> rows;
  while (s.ok() && s.Step() == SQLITE_ROW) {
    Row r{std::string(s.Text(0))};
    for (int c = 1; holdings && c < 15; ++c)
      r.emplace_back(c < 6 ? std::string(s.Text(c)) : std::to_string(s.Int(c)));
    if (holdings)
      r.insert(r.end(), {Hundredths(s.Int(15)), s.IsNull(16) ? "---" : kTypes[s.Int(16)],
                         Hundredths(s.Int(17))});
    rows.push_back(std::move(r));
  }
  if (holdings)
    std::sort(rows.begin(), rows.end());
  return rows;
}

std::vector<Row> Holdings(const std::string& db, const std::string& where) {
  return Query(db,
               "SELECT h.client_id, h.product, s.nse_series, s.nse_symbol, s.bse_code,"
               " s.bse_symbol, h.holdings_qty, h.holdings_update_qty, h.used_qty,"
               " h.collateral_qty, h.collateral_update_qty, h.withheld_holding_qty,"
               " h.withheld_collateral_qty, h.t1_qty, h.t1_collateral_qty, h.haircut_bp,"
               " h.collateral_type, s.close_paise FROM holding h JOIN scrip s"
               " ON s.id = h.scrip_id WHERE " +
                   where,
               true);
}

std::string Text(const std::string& db, const std::string& sql) {
  const auto rows = Query(db, sql);
  return rows.empty() ? std::string() : rows.front().front();
}

QComboBox* Combo(QWidget* view, int id) {
  return qobject_cast<QComboBox*>(GetDlgItem(view, id));
}

// A user's pick (the view reacts to activation); false when not offered.
bool Pick(QWidget* view, int id, const std::string& text) {
  QComboBox* combo = Combo(view, id);
  const int index = combo ? combo->findText(QString::fromStdString(text), Qt::MatchExactly) : -1;
  if (index >= 0) {
    combo->setCurrentIndex(index);
    emit combo->activated(index);
  }
  return index >= 0;
}

bool Click(QWidget* view, int id) {
  auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(view, id));
  if (button)
    button->click();
  return button != nullptr;
}

struct Scrip {
  std::string id, nse, series, bse, group;
};

bool SelectNse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboNseExchange, "NSE") && Pick(v, kComboNseSymbol, s.nse) &&
         Pick(v, kComboNseSeries, s.nse + "-" + s.series);
}

bool SelectBse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboBseExchange, "BSE") && Pick(v, kComboBseGroup, s.group) &&
         Pick(v, kComboBseSymbol, s.bse);
}

bool Press(QWidget* v) {
  return Click(v, kButtonViewHoldPos);
}

class ViewHoldE2E : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    suite_ = new Suite;
    riskd::RiskServerOptions o;
    o.store.dbPath = suite_->db;
    o.store.sample.holdings = 4000;
    o.log = [](const std::string&) {};
    std::string error;
    suite_->server = riskd::RiskServer::Start(o, &error);
    ASSERT_TRUE(suite_->server) << error;
    suite_->control.Start("127.0.0.1", suite_->server->port());
    host::HostContext& h = host::TheHost();
    h.control = &suite_->control;
    host::StartupLoader loader(suite_->control, "RMS1", h.master, h.user);
    QSignalSpy ready(&loader, &host::StartupLoader::ready_);
    ASSERT_TRUE(ready.wait(20000));
  }
  static void TearDownTestSuite() {
    suite_->control.Stop();
    host::TheHost().control = nullptr;
    delete suite_;
  }
  void SetUp() override {
    ASSERT_TRUE(suite_->server);
    SetMessageSink([this](std::string_view text) { messages.emplace_back(text); });
  }
  void TearDown() override { SetMessageSink(nullptr); }

  // A view initialised as the plug-in does for user RMS1; with
  // `everyOtherClient` combo 9013 offers every other client only.
  std::unique_ptr<CViewHold> MakeView(bool everyOtherClient = false) {
    std::vector<std::string>& ids = host::TheHost().user.clientIds;
    const std::vector<std::string> all = ids;
    for (size_t i = 1; everyOtherClient && i < all.size(); i += 2)
      ids.erase(std::find(ids.begin(), ids.end(), all[i]));
    offered = std::set<std::string>(ids.begin(), ids.end());
    auto view = std::make_unique<CViewHold>();
    view->Initialise("RMS1", 0);
    ids = all;
    // The peer value's answer comes first, as it does for a user.
    EXPECT_TRUE(QTest::qWaitFor([&] { return view->Core().peerValue() == "P001"; }, 10000));
    messages.clear(); // "File Open Failed" of a first run without settings
    return view;
  }
  static bool WaitForAnswers(CViewHold& view) {
    return QTest::qWaitFor([&] { return view.Core().outstandingAnswers() == 0; }, 20000);
  }
  static std::vector<Row> GridRows(CViewHold& view) {
    std::vector<Row> rows(size_t(view.HoldingsGrid()->DisplayedRowCount()));
    for (int r = 0; r < int(rows.size()); ++r)
      for (int c = 0; c < kHoldingsColumnCount; ++c)
        rows[size_t(r)].push_back(view.HoldingsGrid()->GetCellBytes(r, c));
    std::sort(rows.begin(), rows.end());
    return rows;
  }
  // The `skip`-th scrip with holdings meeting `condition`.
  static Scrip FindScrip(const std::string& condition, int skip = 0) {
    const auto rows =
        Query(suite_->db, "SELECT s.id || '|' || ifnull(nse_symbol, '') || '|' ||"
                          " ifnull(nse_series, '') || '|' || ifnull(bse_symbol, '') || '|' ||"
                          " ifnull(bse_group, '') FROM scrip s WHERE " +
                              condition +
                              " AND EXISTS(SELECT 1 FROM holding h WHERE h.scrip_id = s.id)"
                              " ORDER BY s.id LIMIT 1 OFFSET " +
                              std::to_string(skip));
    EXPECT_EQ(rows.size(), 1u) << condition;
    const QStringList f = QString::fromStdString(rows.empty() ? "||||" : rows[0][0]).split('|');
    return {f[0].toStdString(), f[1].toStdString(), f[2].toStdString(), f[3].toStdString(),
            f[4].toStdString()};
  }
  static std::string BusiestClient() {
    return Text(suite_->db,
                "SELECT client_id FROM holding GROUP BY client_id ORDER BY count(*) DESC");
  }

  struct Suite {
    QTemporaryDir dir;
    std::string db = dir.filePath("risk.db").toStdString();
    std::unique_ptr<riskd::RiskServer> server;
    host::BackendControl control;
  };
  static inline Suite* suite_ = nullptr;
  QTemporaryDir settingsDir;
  ScopedSettingsPaths paths{{settingsDir.path().toStdString(), settingsDir.path().toStdString()}};
  std::vector<std::string> messages; // message boxes shown, in order
  std::set<std::string> offered;     // the client ids of the last view's combo
};

constexpr const char* kBothLegs = "nse_symbol IS NOT NULL AND bse_symbol IS NOT NULL";
constexpr const char* kNseOnly = "bse_symbol IS NULL";
constexpr const char* kBseOnly = "nse_symbol IS NULL";

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
      {"nseOnly", [&](QWidget* v) { return SelectNse(v, a) && Press(v); }, "s.id=" + a.id},
      {"bseOnly", [&](QWidget* v) { return SelectBse(v, bse) && Press(v); }, "s.id=" + bse.id},
      {"bothRows", [&](QWidget* v) { return SelectNse(v, a) && SelectBse(v, b) && Press(v); },
       "s.id IN (" + a.id + "," + b.id + ")"},
      {"client",
       [&](QWidget* v) {
         return Click(v, kRadioClient) && Pick(v, kComboClient, client) && Press(v);
       },
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
    auto expected = Holdings(suite_->db, c.where);
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
      {"noBseExchange", [](QWidget* v) { Combo(v, kComboBseExchange)->setCurrentIndex(-1); },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noClient", [](QWidget* v) { Click(v, kRadioClient); }, kButtonViewHoldPos,
       kMsgSelectClient},
      {"loadBseWithoutScrip", [](QWidget*) {}, kButtonLoadBse, ""},
      {"loadBseCounterpart", [&](QWidget* v) { SelectNse(v, both); }, kButtonLoadBse, "", both.bse},
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

TEST_F(ViewHoldE2E, PriceTicksReachEveryRowOfTheirScrip) {
  auto view = MakeView();
  ASSERT_TRUE(Click(view.get(), kRadioClient) && Pick(view.get(), kComboClient, BusiestClient()) &&
              Press(view.get()) && WaitForAnswers(*view));
  const HoldingsStore& store = view->Core().store();
  ASSERT_GT(store.RecordCount(), 1u);
  // Every leg ticks each second; a tick's tag 32 is its scrip's close, which
  // every row of that scrip also has from its own record.
  auto ticked = [&](const CViewHoldings& r, int x) {
    return store.Slot(r.priceSlot[x]).tick > 0 && store.SecondPrice(r, x) == r.closePrice;
  };
  EXPECT_TRUE(QTest::qWaitFor(
      [&] {
        for (size_t i = 0; i < store.RecordCount(); ++i)
          if (!ticked(*store.Record(i), 0) && !ticked(*store.Record(i), 1))
            return false;
        return true;
      },
      15000));
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
  const std::string nse = Text(
      db.toStdString(),
      "SELECT nse_symbol || '-' || nse_series FROM scrip s WHERE nse_symbol IS NOT NULL ORDER BY"
      " (SELECT count(*) FROM holding h WHERE h.scrip_id = s.id) DESC");
  const QString scrip = QString::fromStdString("NSE:" + nse);
  const std::string ofScrip = "s.nse_symbol || '-' || s.nse_series = '" + nse + "'";
  // Checks the export of a run that succeeded.
  using Check = std::function<void()>;
  auto equalsDatabase = [&](std::string where) {
    return Check([&, where] {
      auto rows = SheetRows(xlsx, 18), expected = Holdings(db.toStdString(), where);
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
                   Holdings(db.toStdString(), ofScrip + " AND h.product = 'CNC'").size());
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
      {"clientNotListed", {"--client", "C000001", "--clients", list.fileName()}, 2, "C000001"},
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
