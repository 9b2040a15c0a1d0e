#include "holdings/dialogs/view_alert.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "holdings/dialogs/grid_selection.h"
#include "plugin/tarn_host_api.h"
#include "settings/dialog_position_window.h"

namespace vh {
namespace {

constexpr int kRuleColumnWidth = 134;

std::optional<std::string> Selected(const QComboBox* combo) {
  if (combo->currentIndex() < 0)
    return std::nullopt;
  return combo->currentText().toStdString();
}

sTarnColInfo RuleColumn(const char* name) {
  sTarnColInfo c;
  c.SetName(name);
  c.nWidth = kRuleColumnWidth;
  c.nFormat = kFormatLeft;
  c.nType = kCompareText;
  return c;
}

} // namespace

CViewAlert::CViewAlert(CAlertRuleTable& rules, QWidget* parent) : QDialog(parent), rules_(rules) {
  SetControlId(this, kDlgViewAlert);
  setWindowTitle(kAlertDialogTitle);
  setWindowIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
  resize(560, 330);
  auto label = [this](const char* text, QRect at) { (new QLabel(text, this))->setGeometry(at); };
  label("Column Name", {10, 8, 180, 18});
  label("Expression", {200, 8, 180, 18});
  label("Value", {390, 8, 80, 18});
  auto combo = [this](int id, QRect at) {
    auto* c = new QComboBox(this);
    SetControlId(c, id);
    c->setGeometry(at);
    return c;
  };
  columns_ = combo(kComboAlertColumn, {10, 28, 180, 24});
  numbers_ = combo(kComboAlertColumnNumber, {10, 56, 180, 24});
  numbers_->hide();
  expression_ = combo(kComboAlertExpression, {200, 28, 180, 24});
  value_ = new QLineEdit(this);
  SetControlId(value_, kEditAlertValue);
  value_->setGeometry(390, 28, 80, 24);
  auto* update = new QPushButton("Update", this);
  SetControlId(update, kButtonAlertUpdate);
  update->setGeometry(480, 14, 70, 24);
  update->setDefault(true);
  auto* remove = new QPushButton("Delete", this);
  SetControlId(remove, kButtonAlertDelete);
  remove->setGeometry(480, 42, 70, 24);

  rulesGrid_ = new CFilterListCtrl(this);
  rulesGrid_->setGeometry(10, 74, 540, 246);
  rulesGrid_->SetProfileName(kAlertRulesGridName);
  rulesGrid_->SetListControlId(kGridAlertRules);
  rulesGrid_->Engine().SetOwnerDataSource(&CViewAlert::RuleCell, this);
  rulesGrid_->Engine().SetColumns({RuleColumn("Custom Column Name"), RuleColumn("Expression"),
                                   RuleColumn("Value"), RuleColumn("Custom Column Number")},
                                  4);
  rulesGrid_->Model().ColumnsReset();
  for (int c = 0; c < 4; ++c)
    rulesGrid_->horizontalHeader()->resizeSection(c, kRuleColumnWidth);
  rulesGrid_->Engine().SetSortState(0);
  rulesGrid_->SetUp();

  for (const char* comparison : kAlertComparisons)
    expression_->addItem(comparison);
  expression_->setCurrentIndex(-1);

  connect(columns_, &QComboBox::currentIndexChanged, numbers_, &QComboBox::setCurrentIndex);
  connect(update, &QPushButton::clicked, this, &CViewAlert::OnUpdate);
  connect(remove, &QPushButton::clicked, this, &CViewAlert::OnDelete);
  connect(rulesGrid_, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
    OnRuleDoubleClicked(rulesGrid_->Model().EngineRow(index.row()));
  });
  RestoreDialogPosition(this, kAlertDialogPlacement);
}

CViewAlert::~CViewAlert() = default;

int CViewAlert::RuleCell(void* owner, uint64_t itemData, int column, std::string& text,
                         CellStyle&) {
  const auto& shown = static_cast<CViewAlert*>(owner)->shown_;
  const auto it = shown.find(itemData);
  if (it == shown.end())
    return 0;
  const CustomAlert& r = it->second;
  const std::string* cells[] = {&r.field2, &r.field1, &r.field3, &r.field5};
  text = column >= 0 && column < 4 ? *cells[column] : std::string();
  return 1;
}

const CustomAlert* CViewAlert::RuleAt(int row) const {
  const auto it = shown_.find(rulesGrid_->Engine().GetItemData(row));
  return it == shown_.end() ? nullptr : &it->second;
}

void CViewAlert::Open(CFilterListCtrl* grid) {
  show();
  (void)SetUpWithGrid(grid);
  raise();
  activateWindow();
  expression_->setCurrentIndex(-1);
  value_->clear();
}

bool CViewAlert::SetUpWithGrid(CFilterListCtrl* grid) {
  return grid && SetUpWithColumns(*grid->CustomColumns());
}

bool CViewAlert::SetUpWithColumns(CustomColumnGrid& grid) {
  const std::vector<sTarnColInfo>& table = grid.ColumnTable();
  const int dataColumns = grid.DataColumnCount();
  // The engine never lets this happen; the check stands so that a table out
  // of step with its grid can never be read past its end.
  if (dataColumns > int(table.size())) {
    ShowMessage(kUserColumnsErrorMessage);
    return false;
  }
  columns_->clear();
  numbers_->clear();
  for (int c = dataColumns; c < int(table.size()); ++c) {
    columns_->addItem(QString::fromStdString(std::string(table[size_t(c)].Name())), c);
    numbers_->addItem(QString::number(c));
  }
  columns_->setCurrentIndex(-1);
  for (int i = 0; i < columns_->count(); ++i)
    if (const CustomAlert* rule = rules_.Load(columns_->itemText(i).toStdString()))
      ShowRule(*rule);
  return true;
}

void CViewAlert::ShowRule(const CustomAlert& rule) {
  for (auto& [item, shown] : shown_) {
    if (shown.field2 == rule.field2) {
      shown = rule;
      rulesGrid_->viewport()->update();
      return;
    }
  }
  const uint64_t item = nextItem_++;
  shown_[item] = rule;
  const int at = rulesGrid_->InsertItem(rulesGrid_->Engine().DisplayedCount());
  rulesGrid_->SetItemData(at, item);
  rulesGrid_->Model().Flush();
}

void CViewAlert::OnUpdate() {
  const auto rule = RuleFromInput({Selected(columns_), Selected(numbers_), Selected(expression_),
                                   value_->text().toStdString()});
  if (!rule)
    return;
  ShowRule(rules_.Put(*rule));
  emit RulesChanged();
}

void CViewAlert::OnDelete() {
  const int position = FirstSelectedPosition(rulesGrid_);
  if (position < 0)
    return;
  const uint64_t item = rulesGrid_->Engine().GetItemData(position);
  const auto it = shown_.find(item);
  const std::string name = it == shown_.end() ? std::string() : it->second.field2;
  (void)rulesGrid_->DeleteItem(position);
  if (it == shown_.end())
    return;
  shown_.erase(it);
  (void)rules_.Delete(name);
  emit RulesChanged();
}

void CViewAlert::OnRuleDoubleClicked(int row) {
  const CustomAlert* rule = RuleAt(row);
  if (!rule)
    return;
  const int column = columns_->findText(QString::fromStdString(rule->field2));
  columns_->setCurrentIndex(column);
  numbers_->setCurrentIndex(numbers_->findText(QString::fromStdString(rule->field5)));
  expression_->setCurrentIndex(
      expression_->findText(QString::fromStdString(rule->field1), Qt::MatchExactly));
  value_->setText(QString::fromStdString(rule->field3));
}

} // namespace vh
