// The view's answer handling and request sending without a widget: the
// window (holdings/view) owns one CViewHoldCore, gives it a host for what
// only the window knows and a grid sink for the holdings grid, and forwards
// button presses to it.
//
// Ownership:
//   the back-end link       CViewHoldCore (made by CreateLink, kept for life)
//   holdings rows table     store(): records of the latest answer, in
//                           arrival order; the grid's rows hold their
//                           addresses as item data and never free them
//   present-values table    presentValues(): keyed by client id and
//                           symbols, a record replaced in place when its key
//                           comes again; keys not refreshed by a whole
//                           stream are dropped at its end, so the table
//                           never grows past one stream's keys
//   texts, price slots,     store(), shared by both tables, emptied with
//   scrip-details cache     them
// ViewHoldPos empties the grid (sink ClearRows) before the tables, so no
// row ever refers to a freed record.
//
// Answers to successive requests: the back-end answers requests in the
// order they were sent. Each accepted "display_holding_detail" send counts
// one answer outstanding, each end of such an answer one less; a record
// arriving while more than one answer is outstanding belongs to an earlier
// request and is dropped, so the grid holds only the latest answer's rows.
// Answers owed on a connection that was lost never end: a send on a newer
// connection (the control's slot says which) stops counting them.
//
// Positions: tarn-riskd sends no position trees. The link counts position
// records; the view keeps none of their fields (no column shows dealer
// positions). The positions-complete step only counts completions per
// exchange (positionsCompleted) after the link's end test; the NSE lookup
// of the end test goes to the host.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "holdings/client_index.h"
#include "holdings/holding_request.h"
#include "holdings/view_holdings.h"
#include "link/link_owner.h"

class CBackendLink;

namespace vh {

// What the core needs of the window.
class ViewHoldHost {
public:
  // pu_get_scrip_details for (segment, symbol); false when unknown.
  virtual bool ScripDetails(std::string_view segment, std::string_view symbol,
                            ScripDetailFields& out) = 0;
  // pu_get_trading_symbol_n_token over the NSE row (end of NSE positions).
  virtual void LookupNseTradingSymbol() = 0;
  // A "mrv_cj" answer record: the BSE counterpart's symbol, or nullopt when
  // the answer has none. The window walks its BSE combos (see
  // FindComboPrefix) and shows kMsgNoBseCounterpart itself.
  virtual void OnBseCounterpart(const std::optional<std::string>& bseSymbol) = 0;

protected:
  ~ViewHoldHost() = default;
};

// The holdings grid as the core sees it. Inserts may be batched: the core
// calls InsertRecord per accepted record and FlushRecords at the end of
// each answer; a sink may flush earlier by itself (e.g. once per slice the
// host delivers) but must show every inserted record after FlushRecords.
class HoldingsGridSink {
public:
  // Remove every row now (the records are freed right after).
  virtual void ClearRows() = 0;
  // Add `record` as the newest row: inserted at display position 0 with the
  // record as its item data (the grid runs with the reverse-display flag).
  virtual void InsertRecord(CViewHoldings* record) = 0;
  virtual void FlushRecords() = 0;
  // A price record changed `slot`: repaint the visible rows whose record
  // uses it (CViewHoldings::priceSlot), if any column shows it.
  virtual void OnPriceSlotChanged(uint32_t slot) = 0;

protected:
  ~HoldingsGridSink() = default;
};

// Keyed present-value records.
class PresentValueTable {
public:
  // The record for (client id, NSE symbol, BSE symbol) of `filled`, made
  // when new, replacing the old one's members when the key is known.
  CViewHoldings& Upsert(CViewHoldings&& filled, const HoldingsStore& store);
  // End of a stream: drops the keys the stream did not bring again.
  void EndStream();
  void Clear();
  size_t Size() const { return records_.size(); }
  // Null when the key is unknown.
  const CViewHoldings* Find(std::string_view clientId, std::string_view nseSymbol,
                            std::string_view bseSymbol) const;
  template <typename Visit> void ForEach(Visit&& visit) const {
    for (const auto& [key, entry] : records_)
      visit(*entry.record);
  }

private:
  struct Entry {
    std::unique_ptr<CViewHoldings> record;
    uint64_t stream = 0;
  };
  static std::string Key(std::string_view clientId, std::string_view nseSymbol,
                         std::string_view bseSymbol);
  std::unordered_map<std::string, Entry> records_;
  uint64_t stream_ = 1;
};

// Called after each present-values stream ends, with the table; the alert
// rules come with the alerts feature.
using AlertPassHook = std::function<void(const PresentValueTable&, const HoldingsStore&)>;

class CViewHoldCore final : public CLinkOwner {
public:
  CViewHoldCore(ViewHoldHost& host, HoldingsGridSink& grid);
  ~CViewHoldCore();
  CViewHoldCore(const CViewHoldCore&) = delete;
  CViewHoldCore& operator=(const CViewHoldCore&) = delete;

  // Makes the back-end link with this core as its owner (once; later calls
  // keep the first). Its failures are shown by the link itself.
  void CreateLink();
  CBackendLink* link() const { return link_.get(); }

  // The client ids of combo 9013; refill it whenever the combo is refilled.
  ClientIdIndex& clientIds() { return clientIds_; }
  void SetAlertPass(AlertPassHook hook) { alertPass_ = std::move(hook); }

  // "View Hold/Pos": empties the grid and both tables, then validates and
  // sends. Returns 1 when sent; 0 after showing a validation message or
  // the link's failure text (or without a link).
  int ViewHoldPos(const HoldSelection& sel);
  // "Load BSE" after the window has reset its BSE combos: sends "mrv_cj"
  // for the selection of 21003. Returns 1 when sent; 0 without a selection,
  // a link, or on a failure the link reported.
  int LoadBse(const std::optional<std::string>& selected21003);
  // "om_get_user_peer_data" for `userId`. Returns 1 when sent.
  int RequestPeerValue(std::string_view userId);
  const std::string& peerValue() const { return peer_; }

  // Empties the grid and both tables (outstanding answers stay counted).
  void ClearAnswer();

  const HoldingsStore& store() const { return store_; }
  const PresentValueTable& presentValues() const { return presentValues_; }
  // Records shown since the last clear; records dropped for an unknown
  // client or an earlier answer.
  size_t acceptedRecords() const { return store_.RecordCount(); }
  size_t droppedRecords() const { return dropped_; }
  int outstandingAnswers() const { return outstanding_; }
  int positionsCompleted(int exchange) const;

  // --- CLinkOwner ---------------------------------------------------------
  void OnHoldingRecord(KdlMsg* msg) override;
  void OnHoldingsEnd(int status) override;
  void OnPositionRecord(int exchange, KdlMsg* msg) override;
  void OnAllPositionsRecord(KdlMsg* msg) override;
  void OnAllPositionsEnd() override;
  void OnPriceRecord(int exchange, int32_t price, const std::string& symbol, int32_t value32,
                     int32_t value63179) override;
  void OnPricesEnd() override;
  void OnPresentValuesRecord(KdlMsg* msg) override;
  void OnPresentValuesEnd() override;
  void OnMrvCjRecord(KdlMsg* msg) override;
  void OnUserPeerValue(const std::string& peer) override;
  int ClientIdCount() const override { return clientIds_.EntryCount(); }
  void LookupNseTradingSymbol() override;
  void OnPositionsComplete(int exchange) override;

private:
  int Send(const CLinkRequest& request);

  ViewHoldHost& host_;
  HoldingsGridSink& grid_;
  ScripDetailsLookup lookup_;
  std::unique_ptr<CBackendLink> link_;
  ClientIdIndex clientIds_;
  HoldingsStore store_;
  PresentValueTable presentValues_;
  AlertPassHook alertPass_;
  std::string peer_;
  int outstanding_ = 0;
  uint32_t outstandingConnection_ = 0; // the connection the counted ones went out on
  size_t dropped_ = 0;
  std::array<int, 2> positionsCompleted_{};
};

} // namespace vh
