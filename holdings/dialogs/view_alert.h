// CViewAlert: the custom column alert rules (dialog 21002, "Custom Column
// Alert Setting"). It lists and edits the rules of the module's rule table
// for the custom columns of the grid it is opened for.
#pragma once

#include <QDialog>

#include <cstdint>
#include <map>
#include <string>

#include "grid/custom_column_grid.h"
#include "grid/row_formula.h"
#include "holdings/alert_rules.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace vh {

class CFilterListCtrl;

enum ViewAlertControl : int {
  kDlgViewAlert = 21002,
  kComboAlertColumn = 21026,
  kComboAlertColumnNumber = 21023, // hidden, index-parallel to 21026
  kComboAlertExpression = 21027,
  kEditAlertValue = 21022,
  kButtonAlertUpdate = 1,
  kButtonAlertDelete = 33091,
  kGridAlertRules = 21025,
};

inline constexpr const char* kAlertDialogTitle = "Custom Column Alert Setting";
inline constexpr const char* kAlertRulesGridName = "Custom Alert Setting";
inline constexpr const char* kAlertDialogPlacement = "View-Holding/Alert";
inline constexpr const char* kUserColumnsErrorMessage = "Error while adding user defined cols";

class CViewAlert final : public QDialog {
  Q_OBJECT
public:
  // Builds the controls, restores the placement and sets up the rule list.
  // `rules` outlives the dialog.
  explicit CViewAlert(CAlertRuleTable& rules, QWidget* parent = nullptr);
  ~CViewAlert() override;

  // "Alert Setting": shows the dialog, sets it up with `grid`, brings it to
  // the front, clears the comparison and empties the value.
  void Open(CFilterListCtrl* grid);
  // Fills the column lists from `grid`'s custom columns and loads their
  // rules into the rule list. Returns false after "Error while adding user
  // defined cols" when the grid has more data columns than column records
  // (nothing changed then); false also for a null grid.
  bool SetUpWithGrid(CFilterListCtrl* grid);
  // The same over the grid's column table as the column editors see it.
  bool SetUpWithColumns(CustomColumnGrid& columns);

  CFilterListCtrl* RuleGrid() const { return rulesGrid_; }
  // The rule shown in rule-list row `row` (display position), or null.
  const CustomAlert* RuleAt(int row) const;

signals:
  // Update or Delete changed the table.
  void RulesChanged();

private:
  void OnUpdate();
  void OnDelete();
  void OnRuleDoubleClicked(int row);
  // Adds `rule` to the list, or replaces the row with its column name.
  void ShowRule(const CustomAlert& rule);
  static int RuleCell(void* owner, uint64_t itemData, int column, std::string& text,
                      CellStyle& style);

  CAlertRuleTable& rules_;
  QComboBox* columns_ = nullptr;
  QComboBox* numbers_ = nullptr;
  QComboBox* expression_ = nullptr;
  QLineEdit* value_ = nullptr;
  CFilterListCtrl* rulesGrid_ = nullptr;
  // The rows' rules by item data (a number that never repeats).
  std::map<uint64_t, CustomAlert> shown_;
  uint64_t nextItem_ = 1;
};

} // namespace vh
