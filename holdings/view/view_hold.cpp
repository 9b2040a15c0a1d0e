#include "holdings/view/view_hold.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QGroupBox>
#include <QHeaderView>
#include <QIcon>
#include <QItemSelectionModel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QResizeEvent>
#include <QStyle>
#include <QTabBar>

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "common/host_proc.h"
#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "grid/widgets/grid_commands.h"
#include "holdings/alert_rules.h"
#include "holdings/dialogs/report_dialogs.h"
#include "holdings/dialogs/view_hold_features.h"
#include "holdings/mark_unmark.h"
#include "holdings/view/view_hold_ids.h"
#include "plugin/tarn_host_api.h"
#include "settings/custom_alert.h"
#include "settings/dialog_position_window.h"
#include "settings/settings_paths.h"

namespace vh {
namespace {

// The two selection rows as the host's scrip-filling service names them.
struct ScripRow {
  int exchange, symbol, seriesOrGroup, aux1, aux2, aux3;
};
constexpr ScripRow kNseRow{kComboNseExchange, kComboNseSymbol, kComboNseSeries,
                           kComboAux1,        kComboAux2,      kComboAux3};
constexpr ScripRow kBseRow{kComboBseExchange, kComboBseSymbol, kComboBseSeries,
                           kComboAux1,        kComboBseGroup,  kComboAux3};

std::optional<std::string> SelectedText(const QComboBox* combo) {
  if (!combo || combo->currentIndex() < 0)
    return std::nullopt;
  return combo->currentText().toStdString();
}

// The alert grid's cells until alerts are kept: every row is empty.
int EmptyCell(void*, uint64_t, int, std::string& text, CellStyle&) {
  text.clear();
  return 1;
}

// Context menus of the holdings grid's rows go to the view, which puts the
// mark/unmark popups above the grid's own items.
class RowMenuFilter final : public QObject {
public:
  RowMenuFilter(CViewHold* view, QObject* parent) : QObject(parent), view_(view) {}
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() != QEvent::ContextMenu)
      return false;
    auto* e = static_cast<QContextMenuEvent*>(event);
    auto menu = view_->MakeRowMenu();
    QMenu* m = menu.release();
    m->setAttribute(Qt::WA_DeleteOnClose);
    CFilterListCtrl* grid = view_->HoldingsGrid();
    CViewHold* view = view_;
    connect(m, &QMenu::triggered, grid, [grid, view](QAction* a) {
      const int id = a->data().toInt();
      if (id >= kFirstMarkCommand && id <= kLastMarkCommand)
        view->OnMarkCommand(id);
      else if (id > 0)
        grid->OnCommand(id);
    });
    m->popup(e->reason() == QContextMenuEvent::Keyboard
                 ? grid->viewport()->mapToGlobal(QPoint(0, 0))
                 : e->globalPos());
    return true;
  }

private:
  CViewHold* view_;
};

} // namespace

CViewHold::CViewHold(QWidget* parent)
    : QDialog(parent, Qt::Window), core_(*this, *this), cells_(core_.store()) {
  setModal(false);
  SetControlId(this, kDlgViewHold);
  setWindowTitle(kViewCaption);
  resize(1000, 620);
  BuildControls();
}

CViewHold::~CViewHold() {
  // The grids let go of the records before the core frees them.
  if (holdingsGrid_)
    holdingsGrid_->DeleteAllItems();
}

QComboBox* CViewHold::AddCombo(int id, const QRect& geometry) {
  auto* combo = new QComboBox(this);
  SetControlId(combo, id);
  combo->setGeometry(geometry);
  // A combo measures every item for its size hint unless told not to: the
  // client list may hold hundreds of thousands.
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  combo->setMinimumContentsLength(6);
  return combo;
}

void CViewHold::BuildControls() {
  scrip_ = new QRadioButton("Scrip", this);
  SetControlId(scrip_, kRadioScrip);
  scrip_->setGeometry(12, 8, 70, 22);
  client_ = new QRadioButton("Client", this);
  SetControlId(client_, kRadioClient);
  client_->setGeometry(90, 8, 70, 22);
  auto* modes = new QButtonGroup(this);
  modes->addButton(scrip_);
  modes->addButton(client_);

  auto* nseGroup = new QGroupBox("NSE Selection", this);
  SetControlId(nseGroup, kGroupNse);
  nseGroup->setGeometry(8, 30, 470, 40);
  auto* bseGroup = new QGroupBox("BSE Selection", this);
  SetControlId(bseGroup, kGroupBse);
  bseGroup->setGeometry(8, 68, 470, 40);
  clientGroup_ = new QGroupBox(QString(), this);
  SetControlId(clientGroup_, kGroupClient);
  clientGroup_->setGeometry(700, 30, 200, 40);

  nseExchange_ = AddCombo(kComboNseExchange, {16, 44, 70, 22});
  nseSymbol_ = AddCombo(kComboNseSymbol, {92, 44, 170, 22});
  nseSeries_ = AddCombo(kComboNseSeries, {268, 44, 200, 22});
  bseExchange_ = AddCombo(kComboBseExchange, {16, 82, 70, 22});
  bseSymbol_ = AddCombo(kComboBseSymbol, {92, 82, 170, 22});
  bseSeries_ = AddCombo(kComboBseSeries, {268, 82, 90, 22});
  bseGroup_ = AddCombo(kComboBseGroup, {364, 82, 104, 22});
  exchanges_ = AddCombo(kComboExchanges, {0, 0, 60, 22});
  for (QComboBox* hidden :
       {exchanges_, AddCombo(kComboAux3, {0, 0, 60, 22}), AddCombo(kComboAux1, {0, 0, 60, 22}),
        AddCombo(kComboAux2, {0, 0, 60, 22})})
    hidden->hide();
  clients_ = AddCombo(kComboClient, {708, 44, 184, 22});

  auto button = [this](int id, const char* text, const QRect& geometry) {
    auto* b = new QPushButton(text, this);
    SetControlId(b, id);
    b->setGeometry(geometry);
    return b;
  };
  QPushButton* loadBse = button(kButtonLoadBse, "Load BSE", {486, 42, 100, 26});
  QPushButton* view = button(kButtonViewHoldPos, "View Hold/Pos", {486, 80, 100, 26});
  view->setDefault(true);
  button(kButtonTopTen, "View TOP10", {592, 80, 100, 26})->hide();
  // Shown at set-up for every user (Initialise).
  button(kButtonAlertSetting, "Alert Setting", {592, 42, 100, 26})->hide();
  button(kButtonLienReports, "Lien Reports", {592, 80, 100, 26});

  // The alert grid comes first so the holdings grid, destroyed after it,
  // is the last word on anything the two share.
  alertGrid_ = new CFilterListCtrl(this);
  holdingsGrid_ = new CFilterListCtrl(this);
  tabs_ = new QTabBar(this);
  SetControlId(tabs_, kTabViews);

  // Selection changes the user makes (programmatic ones run the action
  // themselves where the behaviour asks for it).
  connect(nseExchange_, &QComboBox::activated, this, [this] { FillScripCombos(true, 0); });
  connect(nseSymbol_, &QComboBox::activated, this, [this] { FillScripCombos(true, 1); });
  connect(bseExchange_, &QComboBox::activated, this, [this] { FillScripCombos(false, 0); });
  connect(bseSymbol_, &QComboBox::activated, this, [this] { FillScripCombos(false, 1); });
  connect(bseSeries_, &QComboBox::activated, this, [this] { FillScripCombos(false, 2); });
  connect(bseGroup_, &QComboBox::activated, this, [this] { FillScripCombos(false, 3); });
  connect(view, &QPushButton::clicked, this, [this] { OnViewHoldPos(); });
  connect(loadBse, &QPushButton::clicked, this, [this] { OnLoadBse(); });
  connect(client_, &QRadioButton::clicked, this, [this] { SetMode(true); });
  connect(scrip_, &QRadioButton::clicked, this, [this] { SetMode(false); });
  connect(tabs_, &QTabBar::currentChanged, this, [this](int tab) { SelectTab(tab); });
}

void CViewHold::Initialise(const std::string& userId, uint32_t userType) {
  if (initialised_)
    return;
  initialised_ = true;
  userId_ = userId;
  userType_ = userType;
  RestoreDialogPosition(this, kPlacementView);
  core_.CreateLink();
  LoadHostCombos();
  setWindowIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
  SetUpGrids();
  tabs_->addTab("View Hold");
  tabs_->addTab("View Alert");
  tabs_->hide();
  // The rules are loaded now, so alerts fire after a restart without the
  // dialog being opened; the tabs show once a rule exists.
  features_ = new CViewHoldFeatures(this, core_, holdingsGrid_, alertGrid_, tabs_, userId_,
                                    ModuleAlertRules());
  features_->SetUp();
  if (QWidget* alertSetting = GetDlgItem(this, kButtonAlertSetting)) {
    alertSetting->show();
    connect(qobject_cast<QPushButton*>(alertSetting), &QPushButton::clicked, features_,
            &CViewHoldFeatures::OpenAlertSetting);
  }
  LayOutInitial();
  ResetSelection();
  // The title is read from the command-line directory's settings file.
  if (std::ifstream(CommandLineFile("UserSetting.ini")).good())
    if (const auto title = ReadViewTitle())
      alertGrid_->setWindowTitle(QString::fromStdString(*title));
  // Users of types 0 to 2 send their peer value with every holdings query.
  if (userType_ <= 2)
    (void)core_.RequestPeerValue(userId_);
  reports_ =
      std::make_unique<ReportDialogs>(this, core_.link(), userId_, [this](std::string_view id) {
        return core_.clientIds().Contains(id);
      });
}

void CViewHold::LoadHostCombos() {
  if (auto load = HostProcAs<pu_load_exchange_combo_fn>("pu_load_exchange_combo"))
    load(this, kComboExchanges);
  if (auto load = HostProcAs<pu_load_client_id_combo_fn>("pu_load_client_id_combo"))
    load(this, kComboClient);
  // The host may have replaced the combo's model; the index follows it.
  clients_ = qobject_cast<QComboBox*>(GetDlgItem(this, kComboClient));
  RefillClientIndex();
}

void CViewHold::RefillClientIndex() {
  ClientIdIndex& index = core_.clientIds();
  index.Clear();
  if (!clients_)
    return;
  const QAbstractItemModel* model = clients_->model();
  const int column = clients_->modelColumn();
  for (int i = 0, n = model->rowCount(); i < n; ++i)
    index.Add(model->index(i, column).data().toString().toStdString());
}

void CViewHold::SetUpGrids() {
  holdingsGrid_->SetProfileName(kHoldingsProfileName);
  holdingsGrid_->SetListControlId(kGridHoldings);
  holdingsGrid_->SetExportAllowed(true);
  holdingsGrid_->SetImportAllowed(false);
  holdingsGrid_->SetCustomizable(true);
  holdingsGrid_->SetRepositionAllowed(true);
  holdingsGrid_->SetAllowCustomColumns(true);
  holdingsGrid_->Engine().SetReverseDisplay(true);
  holdingsGrid_->Engine().SetOwnerDataSource(&HoldingsCellSource::CellText, &cells_);
  holdingsGrid_->Engine().SetViewDataSource(&HoldingsCellSource::CellView, &cells_);
  holdingsGrid_->SetUpColumns(HoldingsColumns());
  holdingsGrid_->viewport()->installEventFilter(new RowMenuFilter(this, this));
  QItemSelectionModel* selection = holdingsGrid_->selectionModel();
  connect(selection, &QItemSelectionModel::selectionChanged, this,
          &CViewHold::OnHoldingsItemChanged);
  connect(selection, &QItemSelectionModel::currentChanged, this, &CViewHold::OnHoldingsItemChanged);

  // Set up without SetUpColumns: the alert grid neither reads nor writes
  // the shared column profile (see the header).
  alertGrid_->SetProfileName(kHoldingsProfileName);
  alertGrid_->SetListControlId(kGridAlert);
  alertGrid_->SetExportAllowed(true);
  alertGrid_->Engine().SetOwnerDataSource(&EmptyCell, this);
  std::vector<sTarnColInfo> alertColumns = AlertColumns();
  const int count = int(alertColumns.size());
  alertGrid_->Engine().SetColumns(std::move(alertColumns), count);
  alertGrid_->Model().ColumnsReset();
  for (int c = 0; c < count; ++c)
    alertGrid_->horizontalHeader()->resizeSection(c, alertGrid_->Engine().ColumnInfo(c)->nWidth);
  alertGrid_->Engine().SetSortState(0);
  alertGrid_->SetUp();
  alertGrid_->hide();
}

void CViewHold::LayOutInitial() {
  const QRect r = rect();
  holdingsGrid_->setGeometry(10, 110, r.width() - 25, r.height() - 170);
  alertGrid_->setGeometry(10, 110, r.width() - 25, r.height() - 170);
  tabs_->setGeometry(10, r.height() - 60, r.width() - 430, 30);
}

void CViewHold::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  if (!initialised_)
    return;
  const QSize s = event->size();
  holdingsGrid_->setGeometry(10, 110, s.width() - 25, s.height() - 170);
  alertGrid_->setGeometry(10, 110, s.width() - 25, s.height() - 170);
  tabs_->setGeometry(10, s.height() - 25, s.width() - 30, 30);
}

void CViewHold::ResetSelection() {
  // Emptied first, so every open starts from the same two items.
  nseExchange_->clear();
  nseExchange_->addItem("--");
  if (exchanges_->findText("NSE", Qt::MatchExactly) >= 0)
    nseExchange_->addItem("NSE");
  bseExchange_->clear();
  bseExchange_->addItem("--");
  if (exchanges_->findText("BSE", Qt::MatchExactly) >= 0)
    bseExchange_->addItem("BSE");
  nseExchange_->setCurrentIndex(0);
  bseExchange_->setCurrentIndex(0);
  scrip_->setChecked(true);
  client_->setChecked(false);
  SetMode(false);
}

void CViewHold::SetMode(bool client) {
  clientGroup_->setTitle(client ? "Client Selection" : QString());
  if (clients_)
    clients_->setVisible(client);
}

void CViewHold::SelectTab(int tab) {
  holdingsGrid_->setVisible(tab == 0);
  alertGrid_->setVisible(tab == 1);
  if (tabs_->currentIndex() != tab)
    tabs_->setCurrentIndex(tab);
}

void CViewHold::FillScripCombos(bool nseRow, int mode) {
  auto fill = HostProcAs<pu_fill_scrip_combos_with_bse_grp_fn>("pu_fill_scrip_combos_with_bse_grp");
  if (!fill) {
    ShowMessage(kMsgNotCompatible);
    return;
  }
  const ScripRow& r = nseRow ? kNseRow : kBseRow;
  fill(this, r.exchange, r.symbol, r.seriesOrGroup, r.aux1, r.aux2, r.aux3, mode);
}

void CViewHold::OnViewHoldPos() {
  HoldSelection sel;
  sel.clientMode = client_->isChecked();
  sel.nseExchange = SelectedText(nseExchange_);
  sel.bseExchange = SelectedText(bseExchange_);
  if (!sel.clientMode && sel.nseExchange) {
    auto get = HostProcAs<pu_get_trading_symbol_n_token_fn>("pu_get_trading_symbol_n_token");
    QString tradingSymbol, token;
    if (get)
      get(this, kNseRow.exchange, kNseRow.symbol, kNseRow.seriesOrGroup, kNseRow.aux1, kNseRow.aux2,
          kNseRow.aux3, &tradingSymbol, &token);
    sel.nseTradingSymbol = tradingSymbol.toStdString();
  }
  sel.bseSymbol = bseSymbol_->currentText().toStdString();
  sel.clientId = SelectedText(clients_);
  sel.userId = userId_;
  sel.userType = userType_;
  sel.peerValue = core_.peerValue();
  status_.clear();
  (void)core_.ViewHoldPos(sel);
}

void CViewHold::ResetBseRow() {
  for (QComboBox* c : {bseExchange_, bseSymbol_, bseGroup_, bseSeries_})
    c->clear();
  bseExchange_->addItem("--");
  if (exchanges_->findText("BSE", Qt::MatchExactly) >= 0)
    bseExchange_->addItem("BSE");
  bseExchange_->setCurrentIndex(0);
}

void CViewHold::OnLoadBse() {
  ResetBseRow();
  (void)core_.LoadBse(SelectedText(nseSeries_));
}

bool CViewHold::SelectBseSymbol(const QString& symbol) {
  const std::string prefix = symbol.toStdString();
  std::vector<std::string> items;
  const int found = FindComboPrefix(bseSymbol_->count(), 0, prefix, [this, &items](int i) {
    items.emplace_back(bseSymbol_->itemText(i).toStdString());
    return std::string_view(items.back());
  });
  bseSymbol_->setCurrentIndex(found);
  return found >= 0;
}

void CViewHold::OnBseCounterpart(const std::optional<std::string>& bseSymbol) {
  if (!bseSymbol) {
    ShowMessage(kMsgNoBseCounterpart);
    return;
  }
  if (bseExchange_->count() < 2)
    return; // the user may not trade BSE: nothing to select
  bseExchange_->setCurrentIndex(1);
  FillScripCombos(false, 0);
  const QString symbol = QString::fromStdString(*bseSymbol);
  bool found = SelectBseSymbol(symbol);
  for (int g = 1; !found && g < bseGroup_->count(); ++g) {
    bseGroup_->setCurrentIndex(g);
    FillScripCombos(false, 3);
    found = SelectBseSymbol(symbol);
  }
  if (bseSymbol_->currentIndex() < 0) {
    ShowMessage(kMsgNoBseCounterpart);
    return;
  }
  FillScripCombos(false, 1);
}

std::unique_ptr<QMenu> CViewHold::MakeRowMenu() {
  auto menu = std::make_unique<QMenu>(holdingsGrid_);
  auto enabled = HostProcAs<pu_is_actionright_enabled_fn>("pu_is_actionright_enabled");
  char right[64];
  std::snprintf(right, sizeof right, kMarkRightFormat, kMarkRightWord);
  if (enabled && enabled(right)) {
    QMenu* mark = menu->addMenu("Mark");
    mark->addAction("FO")->setData(kCmdMarkFo);
    mark->addAction("CUR")->setData(kCmdMarkCur);
    QMenu* unmark = menu->addMenu("UnMark");
    unmark->addAction("FO")->setData(kCmdUnmarkFo);
    unmark->addAction("CUR")->setData(kCmdUnmarkCur);
    menu->addSeparator();
  }
  const auto gridMenu = holdingsGrid_->MakeRowMenu();
  for (QAction* a : gridMenu->actions()) {
    if (a->data().toInt() == kCmdReadFromExcel)
      continue;
    a->setParent(menu.get());
    menu->addAction(a);
  }
  return menu;
}

bool CViewHold::ScripDetails(std::string_view segment, std::string_view symbol,
                             ScripDetailFields& out) {
  auto get = HostProcAs<pu_get_scrip_details_fn>("pu_get_scrip_details");
  if (!get)
    return false;
  TarnScripDetails details;
  get(QString::fromUtf8(segment.data(), qsizetype(segment.size())),
      QString::fromUtf8(symbol.data(), qsizetype(symbol.size())), &details);
  bool any = false;
  for (size_t i = 0; i < kScripDetailFields; ++i) {
    out[i] = details.field[i].toStdString();
    any = any || !out[i].empty();
  }
  return any;
}

void CViewHold::LookupNseTradingSymbol() {
  auto get = HostProcAs<pu_get_trading_symbol_n_token_fn>("pu_get_trading_symbol_n_token");
  QString tradingSymbol, token;
  if (get)
    get(this, kNseRow.exchange, kNseRow.symbol, kNseRow.seriesOrGroup, kNseRow.aux1, kNseRow.aux2,
        kNseRow.aux3, &tradingSymbol, &token);
}

void CViewHold::ClearRows() {
  // A model reset drops the selection without announcing it.
  selected_ = nullptr;
  holdingsGrid_->DeleteAllItems();
}

void CViewHold::OnHoldingsItemChanged() {
  const QItemSelectionModel* selection = holdingsGrid_->selectionModel();
  const QModelIndex current = selection->currentIndex();
  int row = -1;
  if (current.isValid() && selection->isRowSelected(current.row(), {}))
    row = current.row();
  else if (selection->hasSelection())
    for (const QItemSelectionRange& range : selection->selection())
      row = row < 0 ? range.top() : std::min(row, range.top());
  const int position = row < 0 ? -1 : holdingsGrid_->Model().EngineRow(row);
  selected_ =
      position < 0
          ? nullptr
          : reinterpret_cast<const CViewHoldings*>(holdingsGrid_->Engine().GetItemData(position));
}

void CViewHold::InsertRecord(CViewHoldings* record) {
  holdingsGrid_->InsertItem(0);
  (void)holdingsGrid_->SetItemData(0, HoldingsCellSource::ItemData(record));
}

void CViewHold::FlushRecords() {
  holdingsGrid_->Model().Flush();
  const int rows = holdingsGrid_->Engine().DisplayedCount();
  status_ = QString("%1 records").arg(rows);
  SetStatusText(status_.toStdString());
  emit AnswerShown(rows);
}

void CViewHold::OnPriceSlotChanged(uint32_t) {
  // Only the rows on screen can show a price; a repaint asks them again.
  holdingsGrid_->viewport()->update();
}

void CViewHold::SaveOnExit() {
  (void)WriteViewTitle(windowTitle().toStdString());
  // The alert and mark dialogs save their placements with the rules; the
  // top-N and lien dialogs are saved by their own feature.
  if (features_)
    (void)features_->SaveRules();
  SaveDialogPosition(this, kPlacementView);
}

void CViewHold::OnMarkCommand(int command) {
  if (features_)
    (void)features_->OpenMarkUnmark(command);
}

} // namespace vh
