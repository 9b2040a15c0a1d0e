// "Lien Reports" (dialog 21003): the clients' lien, pay-in and pay-out
// amounts of one segment or of all. Modeless; made once and kept. It takes
// the "om_get_client_reports" records from the link's receiver while it
// exists (one per link, like the receiver's handler); the link's status
// check announces the end of a report.
#pragma once

#include <QDialog>

#include <memory>
#include <string>
#include <vector>

#include "grid/row_formula.h"
#include "holdings/lien_report.h"
#include "link/link_owner.h"

namespace vh {
class CFilterListCtrl;
}

class CBackendLink;
class QComboBox;

namespace vh {
class CControlPos;
}

class CLienReport final : public QDialog, public CLinkRecordHandler {
  // Needed for qobject_cast and findChild to tell the two report dialogs apart.
  Q_OBJECT

public:
  enum : int {
    kIdCancel = 2,
    kIdGetReport = 21029,
    kIdSegment = 21030,
    kIdList = 21031,
  };
  static constexpr const char* kPlacementName = "View-Holding/Lien";
  static constexpr const char* kProfileName = "Lien Report List";

  // `userId` is the source user id the host gave the plug-in. Attaches to
  // `link`'s receiver (a null link sends nothing).
  CLienReport(CBackendLink* link, std::string userId, QWidget* parent = nullptr);
  ~CLienReport() override;

  // Adds the record's row at the end of the list.
  void OnRecord(KdlMsg* msg) override;

  vh::CFilterListCtrl& List() const { return *list_; }

private:
  void GetReport();
  static int CellText(void* owner, uint64_t item, int column, std::string& text,
                      vh::CellStyle& style);

  CBackendLink* link_;
  std::string userId_;
  QComboBox* segment_;
  vh::CFilterListCtrl* list_;
  vh::CControlPos* positions_;
  std::vector<std::unique_ptr<vh::sLienRow>> rows_; // the list's item data
};
