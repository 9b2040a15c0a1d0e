// Routing of back-end answers.
//
// Table (compared in this order, exactly, case-sensitively):
//   name                              sub-kind (32760)        status 5              other status
//   display_holding_detail            -                       holding record        holdings end
//   mrv_positions_scp_show_tree       NSE / BSE, read first   count, position rec.  end test
//   mrv_positions_scp_show_tree_all   -                       all-positions record  all-positions
//   end mrv_master                        *_LTP, read on 5 only   price record          prices end
//   om_get_prsnt_values               -                       present-values rec.   present-values
//   end mrv_cj                            -                       mrv_cj record         -
//   rs_display_topten_holdings        -                       top-N dialog          -
//   om_get_client_reports             -                       lien dialog           - (status check
//                                                                                     shows
//                                                                                     completion)
//   om_get_user_peer_data             -                       peer value (64056)    -

#include "link/alw_grp_req_rx.h"

#include "link/envelope.h"
#include "link/field_readers.h"
#include "link/response_status.h"

using namespace vh;

const CAlwGrpReqRx::Route CAlwGrpReqRx::kRoutes[] = {
    {"display_holding_detail", &CAlwGrpReqRx::HoldingDetail},
    {"mrv_positions_scp_show_tree", &CAlwGrpReqRx::PositionsTree},
    {"mrv_positions_scp_show_tree_all", &CAlwGrpReqRx::PositionsTreeAll},
    {"mrv_master", &CAlwGrpReqRx::MrvMaster},
    {"om_get_prsnt_values", &CAlwGrpReqRx::PresentValues},
    {"mrv_cj", &CAlwGrpReqRx::MrvCj},
    {"rs_display_topten_holdings", &CAlwGrpReqRx::TopTenHoldings},
    {"om_get_client_reports", &CAlwGrpReqRx::ClientReports},
    {"om_get_user_peer_data", &CAlwGrpReqRx::UserPeerData},
};

namespace {

int Status(KdlMsg* msg, std::string_view name) {
  int32_t kind = 0;
  return CheckResponseStatus(msg, name, &kind, 1);
}

} // namespace

void CAlwGrpReqRx::OnResponse(void*, KdlMsg* msg, void*) {
  uint32_t count = 0;
  if (!msg || !kdl_get_field(msg, kTagAnsweredName, &count, nullptr))
    return;
  // Compared in place: a million-record answer would otherwise copy its
  // name a million times.
  KdlValue value{};
  std::string_view name;
  if (kdl_get_data(msg, kTagAnsweredName, 0, &value, nullptr))
    name = std::string_view(value.data, value.length);
  for (const Route& route : kRoutes) {
    if (name == route.name) {
      (this->*route.handler)(msg, name);
      return;
    }
  }
}

void CAlwGrpReqRx::HoldingDetail(KdlMsg* msg, std::string_view name) {
  const int status = Status(msg, name);
  if (!owner_)
    return;
  if (status == kStatusRecord)
    owner_->OnHoldingRecord(msg);
  else
    owner_->OnHoldingsEnd(status);
}

void CAlwGrpReqRx::PositionsTree(KdlMsg* msg, std::string_view name) {
  std::string subKind;
  int32_t kind = 0;
  ReadTextField(msg, kTagSubKind, 0, &subKind, &kind);
  int exchange;
  if (subKind == "NSE")
    exchange = kExchangeNse;
  else if (subKind == "BSE")
    exchange = kExchangeBse;
  else
    return;
  if (Status(msg, name) != kStatusRecord) {
    EndOfPositions(exchange);
    return;
  }
  ++(exchange == kExchangeNse ? nsePositions_ : bsePositions_);
  if (owner_)
    owner_->OnPositionRecord(exchange, msg);
}

// The NSE stream completes once at least as many records as client ids have
// come; the BSE stream only at exactly that many, so a BSE counter that has
// run past the count never completes. The asymmetry is deliberate and kept.
void CAlwGrpReqRx::EndOfPositions(int exchange) {
  if (!owner_)
    return;
  const int clients = owner_->ClientIdCount();
  if (exchange == kExchangeNse) {
    if (nsePositions_ >= clients) {
      nsePositions_ = 0;
      owner_->LookupNseTradingSymbol();
      owner_->OnPositionsComplete(kExchangeNse);
    }
  } else if (bsePositions_ == clients) {
    bsePositions_ = 0;
    owner_->OnPositionsComplete(kExchangeBse);
  }
}

void CAlwGrpReqRx::PositionsTreeAll(KdlMsg* msg, std::string_view name) {
  const int status = Status(msg, name);
  if (!owner_)
    return;
  if (status == kStatusRecord)
    owner_->OnAllPositionsRecord(msg);
  else
    owner_->OnAllPositionsEnd();
}

void CAlwGrpReqRx::MrvMaster(KdlMsg* msg, std::string_view name) {
  const int status = Status(msg, name);
  if (!owner_)
    return;
  if (status != kStatusRecord) {
    owner_->OnPricesEnd();
    return;
  }
  std::string subKind;
  int32_t kind = 0;
  ReadTextField(msg, kTagSubKind, 0, &subKind, &kind);
  int exchange;
  if (subKind == "NSE_LTP")
    exchange = kExchangeNse;
  else if (subKind == "BSE_LTP")
    exchange = kExchangeBse;
  else if (subKind == "CSE_LTP")
    exchange = kExchangeCse;
  else
    return;
  int32_t price = 0, value32 = 0, value63179 = 0;
  std::string symbol;
  ReadLongField(msg, 6, 0, &price, &kind);
  ReadTextField(msg, 63100, 0, &symbol, &kind);
  ReadLongField(msg, 32, 0, &value32, &kind);
  ReadLongField(msg, 63179, 0, &value63179, &kind);
  owner_->OnPriceRecord(exchange, price, symbol, value32, value63179);
}

void CAlwGrpReqRx::PresentValues(KdlMsg* msg, std::string_view name) {
  const int status = Status(msg, name);
  if (!owner_)
    return;
  if (status == kStatusRecord)
    owner_->OnPresentValuesRecord(msg);
  else
    owner_->OnPresentValuesEnd();
}

void CAlwGrpReqRx::MrvCj(KdlMsg* msg, std::string_view name) {
  if (Status(msg, name) == kStatusRecord && owner_)
    owner_->OnMrvCjRecord(msg);
}

void CAlwGrpReqRx::TopTenHoldings(KdlMsg* msg, std::string_view name) {
  if (Status(msg, name) == kStatusRecord && topN_)
    topN_->OnRecord(msg);
}

void CAlwGrpReqRx::ClientReports(KdlMsg* msg, std::string_view name) {
  if (Status(msg, name) == kStatusRecord && lien_)
    lien_->OnRecord(msg);
}

void CAlwGrpReqRx::UserPeerData(KdlMsg* msg, std::string_view name) {
  if (Status(msg, name) != kStatusRecord)
    return;
  std::string peer;
  int32_t kind = 0;
  if (ReadTextField(msg, kTagPeerValue, 0, &peer, &kind) && owner_)
    owner_->OnUserPeerValue(peer);
}
