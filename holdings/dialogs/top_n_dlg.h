// "View TOPN" (dialog 21001): the ten largest holdings of one exchange by
// one of three valuation methods. Modeless; made once and kept. It takes
// the "rs_display_topten_holdings" records from the link's receiver while
// it exists; the receiver holds one such handler, so a link serves one.
#pragma once

#include <QDialog>

#include <memory>
#include <vector>

#include "grid/row_formula.h"
#include "holdings/top_n.h"
#include "link/link_owner.h"

namespace vh {
class CFilterListCtrl;
}

class CBackendLink;
class QPushButton;
class QRadioButton;

class CTopNDlg final : public QDialog, public CLinkRecordHandler {
  // Needed for qobject_cast and findChild to tell the two report dialogs apart.
  Q_OBJECT

public:
  // Control ids.
  enum : int {
    kIdRefresh = 1,
    kIdList = 1009,
    kIdNse = 21014,
    kIdBse = 21015,
    kIdByLtp = 21016,
    kIdTopChange = 21017,
    kIdBottomChange = 21018,
    kIdExchangeGroup = 21019,
    kIdMethodGroup = 21020,
  };
  static constexpr const char* kPlacementName = "View-Holding/Top10";
  static constexpr const char* kProfileName = "rmsallowedgroups";

  // Attaches to `link`'s receiver (a null link sends nothing). The answer's
  // first entity id is checked with `known` (empty: every answer is listed).
  CTopNDlg(CBackendLink* link, vh::EntityLookup known, QWidget* parent = nullptr);
  ~CTopNDlg() override;

  // Decodes one answer record and puts its rows on top of the list, the
  // answer's last row first.
  void OnRecord(KdlMsg* msg) override;

  vh::CFilterListCtrl& List() const { return *list_; }

private:
  void Refresh();
  void ClearList();
  static int CellText(void* owner, uint64_t item, int column, std::string& text,
                      vh::CellStyle& style);

  CBackendLink* link_;
  vh::EntityLookup known_;
  QRadioButton* nse_;
  QRadioButton* byLtp_;
  QRadioButton* topChange_;
  vh::CFilterListCtrl* list_;
  std::vector<std::unique_ptr<vh::sTopNRow>> rows_; // the list's item data
};
