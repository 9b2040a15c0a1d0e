#include "holdings/dialogs/top_n_dlg.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "link/backend_link.h"
#include "plugin/tarn_host_api.h"
#include "settings/dialog_position_window.h"

namespace {

QRadioButton* Radio(const char* text, int id, QWidget* group, QLayout* layout) {
  auto* radio = new QRadioButton(QString::fromLatin1(text), group);
  SetControlId(radio, id);
  layout->addWidget(radio);
  return radio;
}

} // namespace

CTopNDlg::CTopNDlg(CBackendLink* link, vh::EntityLookup known, QWidget* parent)
    : QDialog(parent), link_(link), known_(std::move(known)) {
  setWindowTitle(QStringLiteral("View TOPN"));
  setWindowIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));

  auto* exchange = new QGroupBox(QStringLiteral("Exchange"), this);
  SetControlId(exchange, kIdExchangeGroup);
  auto* exchangeRow = new QHBoxLayout(exchange);
  nse_ = Radio("NSE", kIdNse, exchange, exchangeRow);
  Radio("BSE", kIdBse, exchange, exchangeRow);

  auto* method = new QGroupBox(QStringLiteral("Valuation Method"), this);
  SetControlId(method, kIdMethodGroup);
  auto* methodRow = new QHBoxLayout(method);
  byLtp_ = Radio("Top N based on LTP", kIdByLtp, method, methodRow);
  topChange_ = Radio("Top 10 based on Perc Change", kIdTopChange, method, methodRow);
  Radio("Bottom 10 based on Perc Change", kIdBottomChange, method, methodRow);

  auto* refresh = new QPushButton(QStringLiteral("Refresh List"), this);
  SetControlId(refresh, kIdRefresh);
  refresh->setDefault(true);
  connect(refresh, &QPushButton::clicked, this, &CTopNDlg::Refresh);

  list_ = new vh::CFilterListCtrl(this);
  SetControlId(list_, kIdList);
  list_->SetProfileName(kProfileName);
  list_->SetListControlId(kIdList);
  list_->Engine().SetOwnerDataSource(&CTopNDlg::CellText, this);
  // Each row read goes on top: appended rows show in reverse.
  list_->Engine().SetReverseDisplay(true);
  list_->SetUpColumns(vh::TopNColumns());

  auto* top = new QHBoxLayout;
  top->addWidget(exchange);
  top->addWidget(method, 1);
  top->addWidget(refresh, 0, Qt::AlignBottom);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(list_, 1);
  resize(720, 380);

  vh::RestoreDialogPosition(this, kPlacementName);
  nse_->setChecked(true);
  byLtp_->setChecked(true);
  if (link_ && link_->receiver())
    link_->receiver()->SetTopNHandler(this);
}

CTopNDlg::~CTopNDlg() {
  if (link_ && link_->receiver())
    link_->receiver()->SetTopNHandler(nullptr);
  // The list's rows point into rows_: the list goes first.
  delete list_;
}

void CTopNDlg::Refresh() {
  const vh::TopNMethod method = byLtp_->isChecked()       ? vh::kTopNByLtp
                                : topChange_->isChecked() ? vh::kTopNByPercTop
                                                          : vh::kBottomNByPercChg;
  if (link_)
    (void)link_->Send(vh::TopNRequest(nse_->isChecked(), method));
  ClearList();
}

void CTopNDlg::ClearList() {
  list_->DeleteAllItems();
  rows_.clear();
}

void CTopNDlg::OnRecord(KdlMsg* msg) {
  for (vh::sTopNRow& row : vh::DecodeTopNAnswer(msg, known_)) {
    rows_.push_back(std::make_unique<vh::sTopNRow>(std::move(row)));
    list_->SetItemData(list_->InsertItem(0),
                       static_cast<uint64_t>(reinterpret_cast<uintptr_t>(rows_.back().get())));
  }
}

int CTopNDlg::CellText(void*, uint64_t item, int column, std::string& text, vh::CellStyle&) {
  if (item == 0)
    return 0;
  text = vh::TopNCellText(*reinterpret_cast<const vh::sTopNRow*>(static_cast<uintptr_t>(item)),
                          column);
  return 1;
}
