#include "holdings/view_hold_core.h"

#include <utility>

#include "common/message.h"
#include "link/backend_link.h"
#include "link/envelope.h"

namespace vh {

// --- present values ---------------------------------------------------------

std::string PresentValueTable::Key(std::string_view clientId, std::string_view nseSymbol,
                                   std::string_view bseSymbol) {
  // Client ids and symbols never hold a NUL, so NUL-joined keys are unique.
  std::string key;
  key.reserve(clientId.size() + nseSymbol.size() + bseSymbol.size() + 2);
  key.append(clientId).push_back('\0');
  key.append(nseSymbol).push_back('\0');
  key.append(bseSymbol);
  return key;
}

CViewHoldings& PresentValueTable::Upsert(CViewHoldings&& filled, const HoldingsStore& store) {
  std::string key = Key(filled.clientId.View(store.texts()), store.Text(filled.nseSymbol),
                        store.Text(filled.bseSymbol));
  Entry& e = records_[std::move(key)];
  if (e.record)
    *e.record = std::move(filled);
  else
    e.record = std::make_unique<CViewHoldings>(std::move(filled));
  e.stream = stream_;
  return *e.record;
}

void PresentValueTable::EndStream() {
  std::erase_if(records_, [this](const auto& kv) { return kv.second.stream != stream_; });
  ++stream_;
}

void PresentValueTable::Clear() {
  records_.clear();
}

const CViewHoldings* PresentValueTable::Find(std::string_view clientId, std::string_view nseSymbol,
                                             std::string_view bseSymbol) const {
  const auto it = records_.find(Key(clientId, nseSymbol, bseSymbol));
  return it == records_.end() ? nullptr : it->second.record.get();
}

// --- the core ---------------------------------------------------------------

CViewHoldCore::CViewHoldCore(ViewHoldHost& host, HoldingsGridSink& grid)
    : host_(host), grid_(grid),
      lookup_([this](std::string_view segment, std::string_view symbol, ScripDetailFields& out) {
        return host_.ScripDetails(segment, symbol, out);
      }) {}

CViewHoldCore::~CViewHoldCore() = default;

void CViewHoldCore::CreateLink() {
  if (!link_)
    link_ = std::make_unique<CBackendLink>(this);
}

int CViewHoldCore::Send(const CLinkRequest& request) {
  return link_ ? link_->Send(request) : 0;
}

void CViewHoldCore::ClearAnswer() {
  grid_.ClearRows();
  presentValues_.Clear();
  store_.Clear();
}

int CViewHoldCore::ViewHoldPos(const HoldSelection& sel) {
  ClearAnswer();
  HoldRequestResult built = BuildHoldingRequest(sel, lookup_);
  if (!built.request) {
    ShowMessage(built.message);
    return 0;
  }
  if (!Send(*built.request))
    return 0;
  const auto connection = uint32_t(link_->lastSlot() >> 32);
  if (std::exchange(outstandingConnection_, connection) != connection)
    outstanding_ = 0;
  ++outstanding_;
  return 1;
}

int CViewHoldCore::LoadBse(const std::optional<std::string>& selected21003) {
  const std::optional<CLinkRequest> request = BuildMrvCjRequest(selected21003);
  return request ? Send(*request) : 0;
}

int CViewHoldCore::RequestPeerValue(std::string_view userId) {
  return Send(UserPeerRequest(userId));
}

int CViewHoldCore::positionsCompleted(int exchange) const {
  return exchange == kExchangeNse || exchange == kExchangeBse ? positionsCompleted_[exchange] : 0;
}

void CViewHoldCore::OnHoldingRecord(KdlMsg* msg) {
  // An earlier request's answer still streaming: not this grid's rows.
  if (outstanding_ > 1) {
    ++dropped_;
    return;
  }
  KdlValue client{};
  if (!kdl_get_data(msg, kTagClientId, 0, &client, nullptr))
    client = KdlValue{"", 0};
  // The index lookup is a likely cache miss in a large combo: it is started
  // first and checked after the fill, which it overlaps. A record of an
  // unknown client is filled in vain and taken back.
  const ClientIdIndex::Probe probe =
      clientIds_.Prepare(std::string_view(client.data, client.length));
  CViewHoldings* record = store_.NewRecord();
  FillHoldingRecord(msg, *record, store_, lookup_);
  if (!clientIds_.Contains(probe)) {
    store_.DropLastRecord();
    ++dropped_;
    return;
  }
  grid_.InsertRecord(record);
}

void CViewHoldCore::OnHoldingsEnd(int) {
  if (outstanding_ > 0)
    --outstanding_;
  grid_.FlushRecords();
}

// No back-end sends position trees; their records carry nothing the view
// shows, and the link has already counted them.
void CViewHoldCore::OnPositionRecord(int, KdlMsg*) {}
void CViewHoldCore::OnAllPositionsRecord(KdlMsg*) {}
void CViewHoldCore::OnAllPositionsEnd() {}

void CViewHoldCore::LookupNseTradingSymbol() {
  host_.LookupNseTradingSymbol();
}

void CViewHoldCore::OnPositionsComplete(int exchange) {
  if (exchange == kExchangeNse || exchange == kExchangeBse)
    ++positionsCompleted_[exchange];
}

void CViewHoldCore::OnPriceRecord(int exchange, int32_t price, const std::string& symbol,
                                  int32_t value32, int32_t value63179) {
  if (exchange < kExchangeNse || exchange > kExchangeCse)
    return;
  std::string_view key = symbol;
  // NSE prices name "SYMBOL-SERIES"; rows keep the symbol without series.
  if (exchange == kExchangeNse)
    if (const size_t dash = key.rfind('-'); dash != std::string_view::npos)
      key = key.substr(0, dash);
  const uint32_t slot = store_.ApplyPrice(exchange, key, price, value32, value63179);
  if (slot != kNoPriceSlot)
    grid_.OnPriceSlotChanged(slot);
}

void CViewHoldCore::OnPricesEnd() {}

void CViewHoldCore::OnPresentValuesRecord(KdlMsg* msg) {
  CViewHoldings fresh;
  FillPresentValueRecord(msg, fresh, store_, lookup_);
  presentValues_.Upsert(std::move(fresh), store_);
}

void CViewHoldCore::OnPresentValuesEnd() {
  presentValues_.EndStream();
  if (alertPass_)
    alertPass_(presentValues_, store_);
}

void CViewHoldCore::OnMrvCjRecord(KdlMsg* msg) {
  host_.OnBseCounterpart(DecodeMrvCj(msg));
}

void CViewHoldCore::OnUserPeerValue(const std::string& peer) {
  peer_ = peer;
}

} // namespace vh
