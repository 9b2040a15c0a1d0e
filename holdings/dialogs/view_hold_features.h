// The alert and mark/unmark features as the holdings view carries them:
// the rules loaded at the view's set-up, the "Alert Setting" dialog, the
// alert pass after each present-values answer into the "View Alert" list,
// the tab that shows once a rule exists, the mark/unmark dialog behind the
// row menu, and the rules saved at exit.
#pragma once

#include <QObject>

#include <memory>
#include <optional>
#include <string>

#include "holdings/dialogs/alert_list.h"
#include "holdings/dialogs/mark_unmark_dlg.h"
#include "holdings/engine_alert_source.h"

class QTabBar;
class QWidget;

namespace vh {

class CAlertRuleTable;
class CFilterListCtrl;
class CViewAlert;
class CViewHoldCore;
class CViewHoldings;
class HoldingsStore;

// The texts of `record` the mark dialog shows and sends, as the holdings
// grid shows them.
MarkHolding MarkHoldingOf(const CViewHoldings& record, const HoldingsStore& store);

class CViewHoldFeatures final : public QObject,
                                private HoldingSelection,
                                private AlertRecordFields {
  Q_OBJECT
public:
  // Every pointer outlives this object; `view` parents the dialogs.
  CViewHoldFeatures(QWidget* view, CViewHoldCore& core, CFilterListCtrl* holdingsGrid,
                    CFilterListCtrl* alertGrid, QTabBar* tabs, std::string userId,
                    CAlertRuleTable& rules);
  ~CViewHoldFeatures() override;

  // The view's set-up: loads the rules of the grid's custom columns, makes
  // the alert grid show the hits, hooks the pass after present values and
  // shows the tab when a rule exists.
  void SetUp();
  // "Alert Setting" (21021).
  void OpenAlertSetting();
  // The row menu's 4011..4014; false when nothing was opened.
  bool OpenMarkUnmark(int command);
  // One alert pass over the holdings grid now (what the end of a
  // present-values answer runs).
  AlertPassCounts RunAlertPass();
  // Exit: every rule written, the table emptied.
  bool SaveRules();
  // The "View Alert" tab is shown once the table holds a rule.
  void UpdateAlertTab();

  CViewAlert* AlertDialog() const { return alertDialog_.get(); }
  CMarkUnMark* MarkDialog() const { return markDialog_.get(); }
  CAlertList& AlertList() { return alertList_; }

private:
  // HoldingSelection
  std::optional<MarkHolding> SelectedHolding() override;
  // AlertRecordFields: item data is the CViewHoldings of the view's store.
  std::string_view Isin(uint64_t itemData) override;
  std::string_view ClientId(uint64_t itemData) override;

  QWidget* view_;
  CViewHoldCore& core_;
  CFilterListCtrl* holdingsGrid_;
  QTabBar* tabs_;
  std::string userId_;
  CAlertRuleTable& rules_;
  CAlertList alertList_;
  std::unique_ptr<CViewAlert> alertDialog_;
  std::unique_ptr<CMarkUnMark> markDialog_;
};

} // namespace vh
