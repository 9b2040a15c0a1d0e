// What the response receiver hands answers to. The holdings view implements
// CLinkOwner; the top-N and lien report dialogs each implement
// CLinkRecordHandler and are attached to the receiver when they are made.
// Records are passed as the message itself: each owner decodes its own
// fields, and the message is valid only during the call.
#pragma once

#include <cstdint>
#include <string>

#include "kdl/kdl.h"

class CLinkOwner {
public:
  // "display_holding_detail" data record.
  virtual void OnHoldingRecord(KdlMsg* msg) = 0;
  // The end of a "display_holding_detail" answer (any status but 5). Answers
  // arrive in the order their requests went out, so an owner that counts
  // the ends knows which answer a record belongs to. Optional.
  virtual void OnHoldingsEnd(int /*status*/) {}
  // "mrv_positions_scp_show_tree" data record of exchange 0 (NSE) or 1 (BSE),
  // after the receiver has counted it.
  virtual void OnPositionRecord(int exchange, KdlMsg* msg) = 0;
  // "mrv_positions_scp_show_tree_all" data record, and the end of that stream.
  virtual void OnAllPositionsRecord(KdlMsg* msg) = 0;
  virtual void OnAllPositionsEnd() = 0;
  // "mrv_master" price record: exchange 0 NSE, 1 BSE, 2 CSE, then the values
  // of tags 6, 63100, 32 and 63179 (0 or empty where unreadable).
  virtual void OnPriceRecord(int exchange, int32_t price, const std::string& symbol,
                             int32_t value32, int32_t value63179) = 0;
  virtual void OnPricesEnd() = 0;
  // "om_get_prsnt_values" data record: each one fills a new holdings record
  // of the owner's; and the end of that stream.
  virtual void OnPresentValuesRecord(KdlMsg* msg) = 0;
  virtual void OnPresentValuesEnd() = 0;
  // "mrv_cj" data record.
  virtual void OnMrvCjRecord(KdlMsg* msg) = 0;
  // The value of field 64056 of an "om_get_user_peer_data" record.
  virtual void OnUserPeerValue(const std::string& peer) = 0;

  // For the end-of-positions test: the number of entries of the client id
  // combo (9013); the trading symbol and token lookup of the NSE selection;
  // and the positions-complete step for exchange 0 or 1.
  virtual int ClientIdCount() const = 0;
  virtual void LookupNseTradingSymbol() = 0;
  virtual void OnPositionsComplete(int exchange) = 0;

protected:
  ~CLinkOwner() = default;
};

// A feature dialog that takes the data records of one request.
class CLinkRecordHandler {
public:
  virtual void OnRecord(KdlMsg* msg) = 0;

protected:
  ~CLinkRecordHandler() = default;
};
