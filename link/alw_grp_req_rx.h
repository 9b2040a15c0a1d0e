// The plug-in's response receiver: recognises each answer by the request
// name it answers (field 32767), runs the status check and routes data
// records and stream ends to their owner.
#pragma once

#include <string>
#include <string_view>

#include "link/brio_rx.h"
#include "link/link_owner.h"

class CAlwGrpReqRx final : public CBrioRxNotifierBase {
public:
  // `owner` (the view) may be NULL: answers are then checked but go nowhere.
  explicit CAlwGrpReqRx(CLinkOwner* owner = nullptr) : owner_(owner) {}
  ~CAlwGrpReqRx() = default;

  void OnNotify() override {}
  // Dispatches one response. Messages without field 32767, and names that
  // match no entry exactly (case included), are ignored.
  void OnResponse(void* hostArg, KdlMsg* msg, void* hostArg2) override;

  void SetOwner(CLinkOwner* owner) { owner_ = owner; }
  // Records of "rs_display_topten_holdings" and "om_get_client_reports" go
  // to these once attached (NULL detaches).
  void SetTopNHandler(CLinkRecordHandler* handler) { topN_ = handler; }
  void SetLienHandler(CLinkRecordHandler* handler) { lien_ = handler; }

  // Position records counted since the last completed NSE / BSE stream.
  int nsePositions() const { return nsePositions_; }
  int bsePositions() const { return bsePositions_; }

private:
  using Handler = void (CAlwGrpReqRx::*)(KdlMsg* msg, std::string_view name);
  struct Route {
    const char* name;
    Handler handler;
  };
  static const Route kRoutes[];

  void HoldingDetail(KdlMsg* msg, std::string_view name);
  void PositionsTree(KdlMsg* msg, std::string_view name);
  void PositionsTreeAll(KdlMsg* msg, std::string_view name);
  void MrvMaster(KdlMsg* msg, std::string_view name);
  void PresentValues(KdlMsg* msg, std::string_view name);
  void MrvCj(KdlMsg* msg, std::string_view name);
  void TopTenHoldings(KdlMsg* msg, std::string_view name);
  void ClientReports(KdlMsg* msg, std::string_view name);
  void UserPeerData(KdlMsg* msg, std::string_view name);
  void EndOfPositions(int exchange);

  CLinkOwner* owner_;
  CLinkRecordHandler* topN_ = nullptr;
  CLinkRecordHandler* lien_ = nullptr;
  int nsePositions_ = 0;
  int bsePositions_ = 0;
};
