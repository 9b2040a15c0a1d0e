#include "holdings/dialogs/lien_report_dlg.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

#include "grid/widgets/filter_list_ctrl.h"
#include "link/backend_link.h"
#include "plugin/tarn_host_api.h"
#include "settings/dialog_position_window.h"
#include "widgets/control_pos.h"

CLienReport::CLienReport(CBackendLink* link, std::string userId, QWidget* parent)
    : QDialog(parent), link_(link), userId_(std::move(userId)) {
  setWindowTitle(QStringLiteral("Lien Reports"));
  setWindowIcon(style()->standardIcon(QStyle::SP_FileDialogContentsView));
  // Laid out at the resource's size; CControlPos keeps the places on resize.
  resize(640, 400);

  auto* label = new QLabel(QStringLiteral("Segment"), this);
  label->setGeometry(12, 14, 60, 22);
  segment_ = new QComboBox(this);
  SetControlId(segment_, kIdSegment);
  for (const vh::LienSegment& s : vh::kLienSegments)
    segment_->addItem(QString::fromLatin1(s.shown));
  segment_->setCurrentIndex(vh::kAllSegments);
  segment_->setGeometry(76, 12, 150, 26);

  auto* get = new QPushButton(QStringLiteral("Get Report"), this);
  SetControlId(get, kIdGetReport);
  get->setGeometry(240, 11, 100, 28);
  connect(get, &QPushButton::clicked, this, &CLienReport::GetReport);

  auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
  SetControlId(cancel, kIdCancel);
  cancel->setGeometry(528, 11, 100, 28);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

  list_ = new vh::CFilterListCtrl(this);
  SetControlId(list_, kIdList);
  list_->setGeometry(12, 48, 616, 340);
  list_->SetProfileName(kProfileName);
  list_->SetListControlId(kIdList);
  list_->Engine().SetOwnerDataSource(&CLienReport::CellText, this);
  list_->SetUpColumns(vh::LienReportColumns());

  positions_ = new vh::CControlPos(this);
  (void)positions_->AddControl(cancel, vh::kFollowRight);
  (void)positions_->AddControl(list_, vh::kStretchWidth | vh::kStretchHeight);

  vh::RestoreDialogPosition(this, kPlacementName);
  if (link_ && link_->receiver())
    link_->receiver()->SetLienHandler(this);
}

CLienReport::~CLienReport() {
  if (link_ && link_->receiver())
    link_->receiver()->SetLienHandler(nullptr);
  delete list_;
}

void CLienReport::GetReport() {
  list_->DeleteAllItems();
  rows_.clear();
  if (link_)
    (void)link_->Send(vh::LienReportRequest(userId_, segment_->currentIndex()));
}

void CLienReport::OnRecord(KdlMsg* msg) {
  rows_.push_back(std::make_unique<vh::sLienRow>(vh::DecodeLienRow(msg)));
  list_->SetItemData(list_->InsertItem(0),
                     static_cast<uint64_t>(reinterpret_cast<uintptr_t>(rows_.back().get())));
}

int CLienReport::CellText(void*, uint64_t item, int column, std::string& text, vh::CellStyle&) {
  if (item == 0)
    return 0;
  text = vh::LienCellText(*reinterpret_cast<const vh::sLienRow*>(static_cast<uintptr_t>(item)),
                          column);
  return 1;
}
