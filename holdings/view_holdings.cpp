#include "holdings/view_holdings.h"

#include "link/envelope.h"
#include "link/field_readers.h"

namespace vh {
namespace {

constexpr uint32_t kTagSymbol = 63100;
constexpr uint32_t kTagToken = 10100;
constexpr uint32_t kTagPresentValue = 41231;
constexpr const char* kSegmentNse = "nse_cm";
constexpr const char* kSegmentBse = "bse_cm";
constexpr const char* kSegmentCse = "cse_cm";
constexpr const char* kNotAvailable = "---";

// The common text fields and where each goes; a failed read leaves the
// member as it is.
enum CommonTarget { kTo63003, kToProduct, kToQuantity };
struct CommonField {
  uint32_t tag;
  CommonTarget target;
  int quantity;
};
constexpr CommonField kCommonFields[] = {
    {63003, kTo63003, 0},
    {64030, kToProduct, 0},
    {64044, kToQuantity, kHoldingsQty},
    {64300, kToQuantity, kHoldingsUpdateQty},
    {64205, kToQuantity, kUsedQty},
    {64297, kToQuantity, kCollateralQty},
    {64301, kToQuantity, kCollateralUpdateQty},
    {64461, kToQuantity, kWithheldHoldingQty},
    {64462, kToQuantity, kWithheldCollateralQty},
    {64204, kToQuantity, kT1Qty},
    {64435, kToQuantity, kT1CollateralQty},
};
// Collateral type codes 0, 1, 2.
constexpr const char* kCollateralTypes[] = {"CL", "LT", "WC"};

// Texts are read in place: the bytes exactly, as the text reader gives
// them, without a string per field.
bool ReadView(const KdlMsg* msg, uint32_t tag, uint32_t index, std::string_view* out) {
  KdlValue v{};
  if (!kdl_get_data(msg, tag, index, &v, nullptr)) {
    *out = {};
    return false;
  }
  *out = std::string_view(v.data, v.length);
  return true;
}

// Memos of HoldingsStore::InternRecent.
enum InternMemo : size_t { kMemoProduct, kMemo63003 };

HoldingsStore::LegIds ResolveLeg(std::string_view segment, std::string_view symbol,
                                 std::string_view token, HoldingsStore& store,
                                 const ScripDetailsLookup& lookup) {
  HoldingsStore::LegIds ids;
  const size_t dash = symbol.rfind('-');
  ids.nse = dash != std::string_view::npos && segment != kSegmentBse;
  ids.symbol = store.Intern(ids.nse ? symbol.substr(0, dash) : symbol);
  ids.series = ids.nse ? store.Intern(symbol.substr(dash + 1)) : 0;
  ids.token = store.Intern(token);
  ids.isin = store.ScripIsin(ids.nse ? kSegmentNse : kSegmentBse, symbol, lookup);
  ids.slot = store.PriceSlotFor(ids.nse ? kExchangeNse : kExchangeBse, ids.symbol);
  return ids;
}

void FillLeg(const KdlMsg* msg, uint32_t leg, CViewHoldings& r, HoldingsStore& store,
             const ScripDetailsLookup& lookup) {
  std::string_view segment, symbol, token;
  const bool haveSegment = ReadView(msg, kTagSegment, leg, &segment);
  const bool haveSymbol = ReadView(msg, kTagSymbol, leg, &symbol);
  if (leg == 1 && (!haveSegment || !haveSymbol || symbol.empty()))
    return;
  ReadView(msg, kTagToken, leg, &token);
  HoldingsStore::LegIds ids;
  if (const HoldingsStore::LegIds* known = store.RecallLeg(leg, segment, symbol, token)) {
    ids = *known;
  } else {
    ids = ResolveLeg(segment, symbol, token, store, lookup);
    store.RememberLeg(leg, segment, symbol, token, ids);
  }
  // An NSE leg: symbol before the last "-", series after it, 10100 the
  // token; a BSE leg: the symbol whole, 10100 the scrip code.
  if (ids.nse) {
    r.nseSymbol = ids.symbol;
    r.series = ids.series;
    r.nseToken = ids.token;
  } else {
    r.bseSymbol = ids.symbol;
    r.bseScripCode = ids.token;
  }
  r.scripDetail = ids.isin;
  r.priceSlot[ids.nse ? kExchangeNse : kExchangeBse] = ids.slot;
}

// The CSE layout: one leg, then per value i of 64276 the quantity sums and
// quantity-weighted averages. The multiplier is the last whole number read
// successfully, so a failed read reuses the previous one, deliberately.
void FillCse(const KdlMsg* msg, CViewHoldings& r, HoldingsStore& store,
             const ScripDetailsLookup& lookup) {
  std::string_view symbol, token;
  ReadView(msg, kTagSymbol, 0, &symbol);
  ReadView(msg, kTagToken, 0, &token);
  r.cseSymbol = store.Intern(symbol);
  r.cseToken = store.Intern(token);
  r.scripDetail = store.ScripIsin(kSegmentCse, symbol, lookup);
  r.priceSlot[kExchangeCse] = store.PriceSlotFor(kExchangeCse, r.cseSymbol);
  if (!r.cse)
    r.cse = std::make_unique<CseSums>();
  CseSums& s = *r.cse;
  uint32_t count = 0;
  if (kdl_get_field(msg, 64276, &count, nullptr)) {
    int32_t last = 0, kind = 0;
    for (uint32_t i = 0; i < count; ++i) {
      double price = 0;
      ReadLongField(msg, 64276, i, &last, &kind);
      s.firstQuantity += uint32_t(last);
      if (ReadDoubleField(msg, 64277, i, &price, &kind))
        s.firstAverage += price * last;
      ReadLongField(msg, 64272, i, &last, &kind);
      s.secondQuantity += uint32_t(last);
      price = 0;
      if (ReadDoubleField(msg, 64273, i, &price, &kind))
        s.secondAverage += price * last;
    }
  }
  double value = 0;
  int32_t kind = 0;
  if (ReadDoubleField(msg, 64298, 0, &value, &kind))
    s.value64298 += value;
  s.firstAverage = s.firstQuantity ? s.firstAverage / s.firstQuantity : 0;
  s.secondAverage = s.secondQuantity ? s.secondAverage / s.secondQuantity : 0;
}

TextId Haircut(const KdlMsg* msg, HoldingsStore& store) {
  std::string_view raw;
  if (!ReadView(msg, kTagHaircut, 0, &raw))
    return store.Intern(kNotAvailable);
  if (const TextId cached = store.CachedHaircut(raw); cached != TextPool::kNotFound)
    return cached;
  double value = 0;
  int32_t kind = 0;
  ReadDoubleField(msg, kTagHaircut, 0, &value, &kind);
  return store.AddHaircut(raw, value);
}

TextId CollateralType(const KdlMsg* msg, HoldingsStore& store) {
  int32_t code = 0, kind = 0;
  if (!ReadLongField(msg, kTagCollateralType, 0, &code, &kind))
    return store.Intern(kNotAvailable);
  return code >= 0 && code <= 2 ? store.Intern(kCollateralTypes[code]) : 0;
}

} // namespace

int FillHoldingRecord(const KdlMsg* msg, CViewHoldings& r, HoldingsStore& store,
                      const ScripDetailsLookup& lookup, bool cseLayout) {
  TextPool& pool = store.texts();
  std::string_view text;
  ReadView(msg, kTagClientId, 0, &text);
  r.clientId.Set(text, pool);
  if (cseLayout) {
    FillCse(msg, r, store, lookup);
  } else {
    FillLeg(msg, 0, r, store, lookup);
    FillLeg(msg, 1, r, store, lookup);
  }
  for (const CommonField& f : kCommonFields) {
    if (!ReadView(msg, f.tag, 0, &text))
      continue;
    switch (f.target) {
    case kTo63003:
      r.value63003 = store.Intern(text);
      break;
    case kToProduct:
      r.product = store.Intern(text);
      break;
    case kToQuantity:
      r.quantity[f.quantity].Set(text, pool);
      break;
    }
  }
  r.haircut = Haircut(msg, store);
  r.collateralType = CollateralType(msg, store);
  int32_t close = 0, kind = 0;
  if (ReadLongField(msg, kTagClosePrice, 0, &close, &kind))
    r.closePrice = int32_t(uint32_t(r.closePrice) + uint32_t(close)); // wraps, never traps
  return 1;
}

int FillPresentValueRecord(const KdlMsg* msg, CViewHoldings& r, HoldingsStore& store,
                           const ScripDetailsLookup& lookup) {
  FillHoldingRecord(msg, r, store, lookup);
  std::string_view isin;
  if (ReadView(msg, kTagIsin, 0, &isin))
    r.scripDetail = store.Intern(isin);
  int32_t kind = 0;
  ReadLongField(msg, kTagLastPrice, 0, &r.lastPrice, &kind);
  ReadDoubleField(msg, kTagPresentValue, 0, &r.presentValue, &kind);
  return 1;
}

} // namespace vh
