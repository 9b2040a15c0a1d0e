#include "grid/editor/user_defined_col_dlg.h"

#include "plugin/tarn_host_api.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// Buttons per row of the operator pad.
constexpr int kPadColumns = 4;

template <typename T> T* WithId(T* control, int id) {
  SetControlId(control, id);
  return control;
}

} // namespace

CUserDefinedColDlg::CUserDefinedColDlg(QWidget* parent) : QDialog(parent) {
  SetControlId(this, kDialogId);
  setWindowTitle("Add User Defined Column");
  BuildControls();
}

void CUserDefinedColDlg::BuildControls() {
  name_ = WithId(new QLineEdit(this), kNameEditId);
  custom_ = WithId(new QComboBox(this), kCustomComboId);
  columns_ = WithId(new QListWidget(this), kColumnListId);
  expression_ = WithId(new QPlainTextEdit(this), kExpressionEditId);
  expression_->setTabChangesFocus(true);
  confirm_ = WithId(new QPushButton("&Add", this), kConfirmId);
  confirm_->setDefault(true);
  cancel_ = WithId(new QPushButton("&Cancel", this), kCancelId);
  LayOut(BuildButtonPad());
  connect(confirm_, &QPushButton::clicked, this, &CUserDefinedColDlg::OnConfirm);
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
  connect(custom_, &QComboBox::activated, this, &CUserDefinedColDlg::OnCustomColumnChosen);
}

// The expression buttons in table order, which is also their tab order
// between the column list and the expression. Enter never presses one of
// them: it stays with the confirm button.
QGridLayout* CUserDefinedColDlg::BuildButtonPad() {
  auto* pad = new QGridLayout;
  QWidget* previous = columns_;
  int index = 0;
  for (const vh::ExpressionButton& b : vh::kExpressionButtons) {
    auto* button = WithId(new QPushButton(b.label, this), b.controlId);
    button->setAutoDefault(false);
    pad->addWidget(button, index / kPadColumns, index % kPadColumns);
    ++index;
    setTabOrder(previous, button);
    previous = button;
    const int id = b.controlId;
    connect(button, &QPushButton::clicked, this, [this, id] { OnExpressionButton(id); });
  }
  setTabOrder(previous, expression_);
  setTabOrder(expression_, confirm_);
  setTabOrder(confirm_, cancel_);
  return pad;
}

// Name edit and combo share one cell: only one of them is shown per mode,
// and a hidden control drops out of the tab order by itself.
void CUserDefinedColDlg::LayOut(QGridLayout* pad) {
  setTabOrder(name_, custom_);
  setTabOrder(custom_, columns_);
  auto* group = new QGroupBox("Column Expression", this);
  (new QVBoxLayout(group))->addWidget(expression_);
  auto* confirmRow = new QHBoxLayout;
  confirmRow->addStretch();
  confirmRow->addWidget(confirm_);
  confirmRow->addWidget(cancel_);
  auto* top = new QGridLayout(this);
  top->addWidget(name_, 0, 0);
  top->addWidget(custom_, 0, 0);
  top->addWidget(columns_, 1, 0);
  top->addLayout(pad, 1, 1, Qt::AlignTop);
  top->addWidget(group, 2, 0, 1, 2);
  top->addLayout(confirmRow, 3, 0, 1, 2);
}

bool CUserDefinedColDlg::Open(vh::CustomColumnGrid& grid, int mode) {
  show();
  raise();
  activateWindow();
  custom_->clear();
  columns_->clear();
  expression_->clear();
  name_->clear();
  if (!editor_.Open(grid, mode))
    return false;
  setWindowTitle(QString::fromStdString(editor_.Caption()));
  confirm_->setText(QString::fromUtf8(editor_.ConfirmLabel()));
  const bool adding = mode == vh::kUserColumnAdd;
  name_->setVisible(adding);
  custom_->setVisible(!adding);
  for (const vh::ExpressionColumn& c : editor_.CustomColumns())
    custom_->addItem(QString::fromStdString(c.name), c.column);
  custom_->setCurrentIndex(-1);
  for (const vh::ExpressionColumn& c : editor_.ListColumns()) {
    auto* item = new QListWidgetItem(QString::fromStdString(c.name), columns_);
    item->setData(Qt::UserRole, c.column);
  }
  if (adding)
    name_->setFocus();
  else
    custom_->setFocus();
  return true;
}

void CUserDefinedColDlg::OnExpressionButton(int controlId) {
  // Ctrl is read at the moment of the click, as a user holds it.
  const bool ctrl = QGuiApplication::keyboardModifiers().testFlag(Qt::ControlModifier);
  const int selected = columns_->currentItem() && columns_->currentItem()->isSelected()
                           ? columns_->currentRow()
                           : -1;
  ApplyOutcome(
      editor_.PressButton(controlId, expression_->toPlainText().toStdString(), selected, ctrl));
}

void CUserDefinedColDlg::OnConfirm() {
  ApplyOutcome(editor_.Confirm(name_->text().toStdString(),
                               expression_->toPlainText().toStdString(), custom_->currentIndex()));
}

void CUserDefinedColDlg::OnCustomColumnChosen(int index) {
  ShowExpression(editor_.ExpressionOfCustom(index));
}

// Typing goes on after the text shown, as after a button press.
void CUserDefinedColDlg::ShowExpression(const std::string& text) {
  expression_->setPlainText(QString::fromStdString(text));
  expression_->moveCursor(QTextCursor::End);
}

void CUserDefinedColDlg::ApplyOutcome(vh::EditorOutcome outcome) {
  switch (outcome) {
  case vh::kEditorShowText:
    ShowExpression(editor_.DisplayExpression());
    break;
  case vh::kEditorReactivate:
    activateWindow();
    break;
  case vh::kEditorClose:
    accept();
    break;
  case vh::kEditorStay:
    break;
  }
}
