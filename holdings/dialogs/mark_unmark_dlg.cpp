#include "holdings/dialogs/mark_unmark_dlg.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>

#include "plugin/tarn_host_api.h"
#include "settings/dialog_position_window.h"

namespace vh {

CMarkUnMark::CMarkUnMark(HoldingSelection& selection, SendRequestFn send, std::string userId,
                         QWidget* parent)
    : QDialog(parent), selection_(selection), send_(std::move(send)), userId_(std::move(userId)) {
  SetControlId(this, kDlgMarkUnmark);
  setWindowIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
  resize(420, 200);
  (new QGroupBox("Scrip 1", this))->setGeometry(8, 4, 200, 80);
  (new QGroupBox("Scrip 2", this))->setGeometry(212, 4, 200, 80);
  nseExchange_ = AddEdit(kEditMarkNseExchange, "Exchange", {80, 24, 120, 22}, true);
  nseSymbol_ = AddEdit(kEditMarkNseSymbol, "Symbol", {80, 52, 120, 22}, true);
  bseExchange_ = AddEdit(kEditMarkBseExchange, "Exchange", {284, 24, 120, 22}, true);
  bseSymbol_ = AddEdit(kEditMarkBseSymbol, "Symbol", {284, 52, 120, 22}, true);
  client_ = AddEdit(kEditMarkClient, "Client Code", {80, 94, 120, 22}, true);
  product_ = AddEdit(kEditMarkProduct, "Product", {284, 94, 120, 22}, true);
  quantity_ = AddEdit(kEditMarkQuantity, "Qty", {80, 124, 120, 22}, false);
  auto* submit = new QPushButton("Submit", this);
  SetControlId(submit, kButtonMarkSubmit);
  submit->setGeometry(170, 162, 80, 26);
  submit->setDefault(true);
  auto* cancel = new QPushButton("Cancel", this);
  SetControlId(cancel, kButtonMarkCancel);
  cancel->setGeometry(260, 162, 80, 26);
  cancel->hide();
  connect(submit, &QPushButton::clicked, this, &CMarkUnMark::OnSubmit);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  RestoreDialogPosition(this, kMarkDialogPlacement);
}

CMarkUnMark::~CMarkUnMark() = default;

QLineEdit* CMarkUnMark::AddEdit(int id, const char* label, QRect at, bool readOnly) {
  (new QLabel(label, this))->setGeometry(at.left() - 70, at.top(), 66, at.height());
  auto* edit = new QLineEdit(this);
  SetControlId(edit, id);
  edit->setGeometry(at);
  edit->setReadOnly(readOnly);
  return edit;
}

bool CMarkUnMark::Open(int command) {
  const auto operation = MarkOperationForCommand(command);
  if (!operation)
    return false;
  auto holding = selection_.SelectedHolding();
  if (!holding)
    return false;
  holding_ = std::move(*holding);
  operation_ = operation;
  nseExchange_->setText("NSE");
  nseSymbol_->setText(QString::fromStdString(holding_.nseSymbol + "-" + holding_.series));
  bseExchange_->setText("BSE");
  bseSymbol_->setText(QString::fromStdString(holding_.bseSymbol));
  client_->setText(QString::fromStdString(holding_.clientId));
  product_->setText(QString::fromStdString(holding_.product));
  setWindowTitle(operation_->caption);
  quantity_->setText(QString::fromStdString(QuantityPrefill(operation_->operation, holding_)));
  if (isVisible())
    update();
  else
    show();
  raise();
  activateWindow();
  return true;
}

void CMarkUnMark::OnSubmit() {
  if (!operation_)
    return;
  const std::string quantity = quantity_->text().toStdString();
  if (!CheckMarkQuantity(operation_->operation, holding_, quantity)) {
    quantity_->setFocus();
    return;
  }
  if (send_)
    (void)send_(MarginTransferRequest(holding_, quantity, *operation_, userId_));
  accept();
}

} // namespace vh
