#include "grid/editor/reposition_columns.h"

#include "plugin/tarn_host_api.h"
#include "widgets/drag_list_ctrl.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// Two list boxes of the dialog that hold nothing a user sees; they keep
// their ids so that lookups by id find every control.
constexpr int kSpareListIds[] = {10002, 10011};

std::vector<vh::DragListItem> ItemsOf(const vh::ColumnReposition& core,
                                      const std::vector<int>& columns) {
  std::vector<vh::DragListItem> items;
  for (const int column : columns)
    items.push_back({QString::fromStdString(core.NameOf(column)), column});
  return items;
}

} // namespace

CRepositionColumns::CRepositionColumns(QWidget* parent) : QDialog(parent) {
  SetControlId(this, kDialogId);
  setWindowTitle(" Column Profile");
  BuildControls();
}

QPushButton* CRepositionColumns::AddButton(const char* text, int id) {
  auto* button = new QPushButton(text, this);
  SetControlId(button, id);
  button->setAutoDefault(false);
  return button;
}

// Controls are made in their tab order: hidden list, ">", "<", shown list,
// the sort row, then the dialog's buttons.
void CRepositionColumns::BuildControls() {
  hidden_ = new vh::CNTDragListCtrl(this);
  SetControlId(hidden_, kHiddenListId);
  show_ = AddButton(">", kShowId);
  hide_ = AddButton("<", kHideId);
  shown_ = new vh::CNTDragListCtrl(this);
  SetControlId(shown_, kShownListId);
  shown_->SetLeaveFilter(
      [this](const vh::DragListItem& item) { return core_.MayHide(item.value); });
  for (const int id : kSpareListIds) {
    auto* spare = new QListWidget(this);
    SetControlId(spare, id);
    spare->hide();
  }
  sortLabel_ = new QLabel("Default Sort For: ", this);
  SetControlId(sortLabel_, kSortLabelId);
  sortText_ = new QLineEdit(this);
  SetControlId(sortText_, kSortEditId);
  sortLabel_->setBuddy(sortText_);
  sort_ = AddButton("Sort", kSortId);
  view_ = AddButton("&View", kViewId);
  save_ = AddButton("&Save", kSaveId);
  default_ = AddButton("&Default", kDefaultId);
  cancel_ = AddButton("&Cancel", kCancelId);
  LayOut();
  ConnectControls();
}

// Hidden columns on the left, shown ones on the right: ">" shows, "<" hides.
void CRepositionColumns::LayOut() {
  auto* moves = new QVBoxLayout;
  moves->addStretch();
  moves->addWidget(show_);
  moves->addWidget(hide_);
  moves->addStretch();
  auto* sortRow = new QHBoxLayout;
  sortRow->addWidget(sortLabel_);
  sortRow->addWidget(sortText_, 1);
  sortRow->addWidget(sort_);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  for (QPushButton* b : {view_, save_, default_, cancel_})
    buttons->addWidget(b);
  auto* top = new QGridLayout(this);
  top->addWidget(new QLabel("Hidden columns", this), 0, 0);
  top->addWidget(new QLabel("Shown columns", this), 0, 2);
  top->addWidget(hidden_, 1, 0);
  top->addLayout(moves, 1, 1);
  top->addWidget(shown_, 1, 2);
  top->addLayout(sortRow, 2, 0, 1, 3);
  top->addLayout(buttons, 3, 0, 1, 3);
}

// A double click moves the item to the other list, as ">" and "<" do.
void CRepositionColumns::ConnectControls() {
  const auto showSelected = [this] { hidden_->MoveSelectedTo(shown_); };
  const auto hideSelected = [this] { shown_->MoveSelectedTo(hidden_); };
  connect(show_, &QPushButton::clicked, this, showSelected);
  connect(hide_, &QPushButton::clicked, this, hideSelected);
  connect(hidden_, &QListWidget::itemDoubleClicked, this, showSelected);
  connect(shown_, &QListWidget::itemDoubleClicked, this, hideSelected);
  connect(shown_, &vh::CNTDragListCtrl::MoveRefused, this,
          [this](const vh::DragListItem& item) { core_.ReportKept(item.value); });
  connect(view_, &QPushButton::clicked, this, [this] { core_.Apply(ShownColumns()); });
  connect(save_, &QPushButton::clicked, this, [this] {
    if (core_.Save(ShownColumns()))
      accept();
  });
  connect(default_, &QPushButton::clicked, this,
          [this] { sortText_->setText(QString::fromStdString(core_.SavedDefaultSort())); });
  connect(sort_, &QPushButton::clicked, this,
          [this] { (void)core_.Sort(sortText_->text().toStdString()); });
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
}

void CRepositionColumns::Open(vh::CustomColumnGrid& grid, bool sortMode) {
  core_.Open(grid, sortMode);
  shown_->SetItems(ItemsOf(core_, core_.Shown()));
  hidden_->SetItems(ItemsOf(core_, core_.Hidden()));
  sortText_->clear();
  save_->setEnabled(!sortMode);
  view_->setDefault(!sortMode);
  sort_->setDefault(sortMode);
  show();
  raise();
  activateWindow();
  if (sortMode)
    sortText_->setFocus();
  else
    shown_->setFocus();
}

std::vector<int> CRepositionColumns::ShownColumns() const {
  std::vector<int> columns;
  for (const vh::DragListItem& item : shown_->Items())
    columns.push_back(item.value);
  return columns;
}
