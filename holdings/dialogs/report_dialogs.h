// The holdings view's two report buttons and the dialogs they open: "View
// TOP10" (21013) opens CTopNDlg, "Lien Reports" (21028) CLienReport. Each
// dialog is made on the first click and kept, a child window of the view.
#pragma once

#include <string>

#include "holdings/top_n.h"

class CBackendLink;
class CLienReport;
class CTopNDlg;
class QWidget;

class ReportDialogs {
public:
  enum : int { kButtonTopTen = 21013, kButtonLienReports = 21028 };

  // Wires the buttons of `view`: "View TOP10" is shown for every user
  // (beside "Lien Reports", which it would otherwise cover). `link` must
  // outlive this object; `userId` goes into lien requests; `known` checks
  // top-N answers. A missing button is left unwired.
  ReportDialogs(QWidget* view, CBackendLink* link, std::string userId, vh::EntityLookup known);
  // Deletes the dialogs, which lets go of the link's receiver: destroy this
  // before the link.
  ~ReportDialogs();
  ReportDialogs(const ReportDialogs&) = delete;
  ReportDialogs& operator=(const ReportDialogs&) = delete;

  // Shows the dialog (made on first use) and brings it to the top.
  CTopNDlg& OpenTopN();
  CLienReport& OpenLienReport();

private:
  QWidget* view_;
  CBackendLink* link_;
  std::string userId_;
  vh::EntityLookup known_;
  CTopNDlg* topN_ = nullptr;
  CLienReport* lien_ = nullptr;
};
