#include "holdings/dialogs/report_dialogs.h"

#include <QPushButton>

#include "holdings/dialogs/lien_report_dlg.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "plugin/tarn_host_api.h"

namespace {

void Raise(QWidget* dialog) {
  dialog->show();
  dialog->raise();
  dialog->activateWindow();
}

} // namespace

ReportDialogs::ReportDialogs(QWidget* view, CBackendLink* link, std::string userId,
                             vh::EntityLookup known)
    : view_(view), link_(link), userId_(std::move(userId)), known_(std::move(known)) {
  auto* topTen = qobject_cast<QPushButton*>(GetDlgItem(view_, kButtonTopTen));
  auto* lien = qobject_cast<QPushButton*>(GetDlgItem(view_, kButtonLienReports));
  if (topTen) {
    if (lien && topTen->geometry().intersects(lien->geometry()))
      topTen->move(lien->geometry().right() + 7, lien->y());
    topTen->show();
    QObject::connect(topTen, &QPushButton::clicked, view_, [this] { (void)OpenTopN(); });
  }
  if (lien)
    QObject::connect(lien, &QPushButton::clicked, view_, [this] { (void)OpenLienReport(); });
}

ReportDialogs::~ReportDialogs() {
  delete topN_;
  delete lien_;
}

CTopNDlg& ReportDialogs::OpenTopN() {
  if (!topN_)
    topN_ = new CTopNDlg(link_, known_, view_);
  Raise(topN_);
  return *topN_;
}

CLienReport& ReportDialogs::OpenLienReport() {
  if (!lien_)
    lien_ = new CLienReport(link_, userId_, view_);
  Raise(lien_);
  return *lien_;
}
