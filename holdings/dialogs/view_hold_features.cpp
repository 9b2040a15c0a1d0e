#include "holdings/dialogs/view_hold_features.h"

#include <QTabBar>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/dialogs/grid_selection.h"
#include "holdings/dialogs/view_alert.h"
#include "holdings/holdings_columns.h"
#include "holdings/view_hold_core.h"
#include "link/backend_link.h"
#include "settings/dialog_position_window.h"

namespace vh {

MarkHolding MarkHoldingOf(const CViewHoldings& r, const HoldingsStore& store) {
  const TextPool& pool = store.texts();
  auto text = [&](TextId id) { return std::string(store.Text(id)); };
  auto quantity = [&](HoldingQuantity q) { return std::string(r.quantity[q].View(pool)); };
  MarkHolding h;
  h.clientId = r.clientId.View(pool);
  h.product = text(r.product);
  h.value63003 = text(r.value63003);
  h.isin = text(r.scripDetail);
  h.nseSymbol = text(r.nseSymbol);
  h.series = text(r.series);
  h.nseToken = text(r.nseToken);
  h.bseSymbol = text(r.bseSymbol);
  h.bseScripCode = text(r.bseScripCode);
  h.holdingsQty = quantity(kHoldingsQty);
  h.holdingsUpdateQty = quantity(kHoldingsUpdateQty);
  h.usedQty = quantity(kUsedQty);
  h.withheldHoldingQty = quantity(kWithheldHoldingQty);
  h.t1Qty = quantity(kT1Qty);
  h.haircut = text(r.haircut);
  h.collateralType = text(r.collateralType);
  h.closePrice = r.closePrice;
  return h;
}

CViewHoldFeatures::CViewHoldFeatures(QWidget* view, CViewHoldCore& core,
                                     CFilterListCtrl* holdingsGrid, CFilterListCtrl* alertGrid,
                                     QTabBar* tabs, std::string userId, CAlertRuleTable& rules)
    : QObject(view), view_(view), core_(core), holdingsGrid_(holdingsGrid), tabs_(tabs),
      userId_(std::move(userId)), rules_(rules), alertList_(alertGrid) {}

CViewHoldFeatures::~CViewHoldFeatures() = default;

void CViewHoldFeatures::SetUp() {
  std::vector<std::string> names;
  EngineAlertSource source(holdingsGrid_->Engine(), *this);
  for (const AlertColumn& c : source.CustomColumns())
    names.push_back(c.name);
  rules_.LoadAll(names);
  core_.SetAlertPass(
      [this](const PresentValueTable&, const HoldingsStore&) { (void)RunAlertPass(); });
  UpdateAlertTab();
}

void CViewHoldFeatures::OpenAlertSetting() {
  if (!alertDialog_) {
    alertDialog_ = std::make_unique<CViewAlert>(rules_, view_);
    connect(alertDialog_.get(), &CViewAlert::RulesChanged, this,
            &CViewHoldFeatures::UpdateAlertTab);
  }
  alertDialog_->Open(holdingsGrid_);
  UpdateAlertTab();
}

bool CViewHoldFeatures::OpenMarkUnmark(int command) {
  if (!markDialog_) {
    markDialog_ = std::make_unique<CMarkUnMark>(
        static_cast<HoldingSelection&>(*this),
        [this](const CLinkRequest& request) {
          return core_.link() ? core_.link()->Send(request) : 0;
        },
        userId_, view_);
  }
  return markDialog_->Open(command);
}

AlertPassCounts CViewHoldFeatures::RunAlertPass() {
  EngineAlertSource source(holdingsGrid_->Engine(), *this);
  return vh::RunAlertPass(rules_, source, alertList_.Hits(), alertList_);
}

bool CViewHoldFeatures::SaveRules() {
  if (alertDialog_)
    SaveDialogPosition(alertDialog_.get(), kAlertDialogPlacement);
  if (markDialog_)
    SaveDialogPosition(markDialog_.get(), kMarkDialogPlacement);
  return rules_.SaveAll();
}

void CViewHoldFeatures::UpdateAlertTab() {
  if (!rules_.Empty())
    tabs_->show();
}

std::optional<MarkHolding> CViewHoldFeatures::SelectedHolding() {
  const uint64_t item = FirstSelectedItemData(holdingsGrid_);
  if (item == 0)
    return std::nullopt;
  return MarkHoldingOf(*reinterpret_cast<const CViewHoldings*>(item), core_.store());
}

std::string_view CViewHoldFeatures::Isin(uint64_t itemData) {
  return core_.store().Text(reinterpret_cast<const CViewHoldings*>(itemData)->scripDetail);
}

std::string_view CViewHoldFeatures::ClientId(uint64_t itemData) {
  return reinterpret_cast<const CViewHoldings*>(itemData)->clientId.View(core_.store().texts());
}

} // namespace vh
