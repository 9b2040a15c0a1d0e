// The holdings record (one row of the holdings grid), the store that owns
// the records of one answer, and the fill from a "display_holding_detail"
// data record.
//
// Memory shape, for a million rows: a record is a fixed block of 248 bytes
// kept in chunks of the store (no heap block per record). Texts that repeat
// across rows (symbols, series, products, codes, tokens, ISINs, haircuts,
// collateral types) are numbers into the store's one text pool; texts that
// are mostly unique (client id, the nine quantities) sit inside the record
// as ShortText. Prices are not per row: rows point at one price slot per
// (exchange, symbol), so a tick is one write whatever the number of rows.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "holdings/short_text.h"
#include "holdings/text_pool.h"
#include "kdl/kdl.h"

namespace vh {

// Scrip details as the host's pu_get_scrip_details gives them: fourteen
// texts. The record keeps field kScripIsin; the holdings request sends
// field kScripBseCode.
inline constexpr size_t kScripDetailFields = 14;
inline constexpr size_t kScripIsin = 7;
inline constexpr size_t kScripBseCode = 8;
using ScripDetailFields = std::array<std::string, kScripDetailFields>;
// Fills `out` for (segment, symbol) — segments "nse_cm", "bse_cm", "cse_cm";
// false (out left empty) for an unknown scrip or a host without the service.
using ScripDetailsLookup =
    std::function<bool(std::string_view segment, std::string_view symbol, ScripDetailFields& out)>;

// The nine quantity texts, in the order of their tags and columns 6..14.
enum HoldingQuantity : int {
  kHoldingsQty,           // 64044
  kHoldingsUpdateQty,     // 64300
  kUsedQty,               // 64205
  kCollateralQty,         // 64297
  kCollateralUpdateQty,   // 64301
  kWithheldHoldingQty,    // 64461
  kWithheldCollateralQty, // 64462
  kT1Qty,                 // 64204
  kT1CollateralQty,       // 64435
  kQuantityCount
};

// Sums of the CSE layout (never filled while the CSE mode flag stays clear).
struct CseSums {
  double value64298 = 0;
  uint32_t firstQuantity = 0;
  uint32_t secondQuantity = 0;
  double firstAverage = 0;
  double secondAverage = 0;
};

inline constexpr uint32_t kNoPriceSlot = UINT32_MAX;

// What a price record ("mrv_master") leaves for every row of one
// (exchange, symbol).
struct PriceSlot {
  int32_t price = 0;       // tag 6
  int32_t secondPrice = 0; // tag 32 (the back-end's close in hundredths)
  int32_t shared = 0;      // tag 63179 (the back-end's time stamp)
  uint64_t tick = 0;       // order of arrival over all slots; 0 never ticked
};

class CViewHoldings {
public:
  ShortText clientId;                 // 54001
  TextId product = 0;                 // 64030
  TextId series = 0;                  // NSE leg: 63100 after its last "-"
  TextId value63003 = 0;              // 63003, not shown
  TextId nseSymbol = 0;               // NSE leg: 63100 before its last "-"
  TextId cseSymbol = 0;               // CSE layout: 63100
  TextId bseScripCode = 0;            // BSE leg: 10100
  TextId bseSymbol = 0;               // BSE leg: 63100 whole
  ShortText quantity[kQuantityCount]; // see HoldingQuantity
  int32_t closePrice = 0;             // hundredths; 59351 is added
  TextId nseToken = 0;                // NSE leg: 10100
  TextId cseToken = 0;                // CSE layout: 10100
  TextId scripDetail = 0;             // the ISIN from the scrip details
  TextId collateralType = 0;          // "CL", "LT", "WC", "---" or empty
  TextId haircut = 0;                 // "%0.2lf" of 64172, or "---"
  std::unique_ptr<CseSums> cse;       // CSE layout only

  // Prices: the slot of each exchange (kExchangeNse/Bse/Cse), or kNoPriceSlot.
  uint32_t priceSlot[3] = {kNoPriceSlot, kNoPriceSlot, kNoPriceSlot};

  // Present-value members (an "om_get_prsnt_values" record).
  int32_t lastPrice = 0;   // tag 6
  double presentValue = 0; // tag 41231
};

class HoldingsStore {
public:
  HoldingsStore();
  ~HoldingsStore();
  HoldingsStore(const HoldingsStore&) = delete;
  HoldingsStore& operator=(const HoldingsStore&) = delete;

  // A new empty record owned by the store; its address stays valid until
  // Clear. Never null (allocation failure ends the process, as everywhere).
  CViewHoldings* NewRecord();
  size_t RecordCount() const { return count_; }
  // Takes back the record NewRecord made last (nothing when there is none):
  // it is emptied and its place is the next NewRecord's.
  void DropLastRecord();
  // Record `i` in order of creation, i < RecordCount().
  CViewHoldings* Record(size_t i) const;

  // Drops every record, text, price slot and cached scrip detail. Whoever
  // shows the records (the grid's rows) must have let go of them first.
  void Clear();

  TextPool& texts() { return texts_; }
  const TextPool& texts() const { return texts_; }
  TextId Intern(std::string_view text) { return texts_.Intern(text); }
  // Empty for an unknown number.
  std::string_view Text(TextId id) const { return texts_.Text(id); }

  // The ISIN of (segment, symbol), asked of `lookup` once per pair until
  // Clear. 0 (the empty text) for an unknown scrip or an empty lookup.
  TextId ScripIsin(std::string_view segment, std::string_view symbol,
                   const ScripDetailsLookup& lookup);

  // The slot of (exchange, symbol), made on first use. Exchange 0..2.
  uint32_t PriceSlotFor(int exchange, TextId symbol);
  // Applies a price record to the slot of (exchange, symbol) and returns
  // its number; kNoPriceSlot when no row has that symbol (nothing kept).
  uint32_t ApplyPrice(int exchange, std::string_view symbol, int32_t price, int32_t secondPrice,
                      int32_t shared);
  size_t PriceSlotCount() const { return slots_.size(); }
  // A default slot for kNoPriceSlot or an unknown number.
  const PriceSlot& Slot(uint32_t slot) const;
  // The record's price members for `exchange` (zero when never ticked) and
  // the value shared by all exchanges: that of the record's latest tick.
  int32_t Price(const CViewHoldings& r, int exchange) const {
    return Slot(r.priceSlot[exchange]).price;
  }
  int32_t SecondPrice(const CViewHoldings& r, int exchange) const {
    return Slot(r.priceSlot[exchange]).secondPrice;
  }
  int32_t SharedPriceValue(const CViewHoldings& r) const;

  // What one leg of a record resolved to. Remembered per leg index, so that
  // the next record naming the same (segment, symbol, token) skips every
  // lookup: in scrip mode all records of an answer name the same legs.
  struct LegIds {
    bool nse = false;
    TextId symbol = 0, series = 0, token = 0, isin = 0;
    uint32_t slot = kNoPriceSlot;
  };
  // The remembered leg `leg` (0 or 1) when it was (segment, symbol, token);
  // null otherwise.
  const LegIds* RecallLeg(uint32_t leg, std::string_view segment, std::string_view symbol,
                          std::string_view token) const;
  void RememberLeg(uint32_t leg, std::string_view segment, std::string_view symbol,
                   std::string_view token, const LegIds& ids);
  // Intern with a one-entry memo per `memo` (< kInternMemos): a text equal
  // to the last one given to that memo costs a compare, not a lookup.
  static constexpr size_t kInternMemos = 4;
  TextId InternRecent(size_t memo, std::string_view text);

  // Haircut texts, formatted once per distinct raw 64172 value: the text
  // made for `raw` before, or TextPool::kNotFound; and the "%0.2lf" text of
  // `value` (read from `raw`), remembered for `raw`.
  TextId CachedHaircut(std::string_view raw) const;
  TextId AddHaircut(std::string_view raw, double value);

  // Bytes held for records, texts, slots and the caches (capacity).
  size_t ResidentBytes() const;

private:
  static constexpr size_t kChunk = 4096;
  std::vector<std::unique_ptr<CViewHoldings[]>> chunks_;
  size_t count_ = 0;
  TextPool texts_;
  // Caches keyed by texts of their own pools: scrip details per
  // segment NUL symbol, haircut texts per raw value.
  TextPool scripKeys_;
  std::vector<TextId> scripIsins_;
  std::string scripKey_;
  struct LegMemo {
    std::string key; // segment NUL symbol NUL token
    LegIds ids;
  };
  LegMemo legs_[2];
  struct TextMemo {
    std::string text;
    TextId id = TextPool::kNotFound;
  };
  TextMemo memos_[kInternMemos];
  TextPool haircutKeys_;
  std::vector<TextId> haircutTexts_;
  std::vector<PriceSlot> slots_;
  std::unordered_map<uint64_t, uint32_t> slotOf_; // exchange << 32 | symbol text
  uint64_t ticks_ = 0;
};

// Fills `record` from a "display_holding_detail" data record; the legs are
// value 0 and 1 of 63001/63100/10100. Returns 1 (a record is always
// filled as far as its fields go; absent fields leave members as they are,
// except that a failed haircut read gives "---" and a failed collateral type
// read gives "---"). `cseLayout` is the never-set CSE mode flag. Every row
// gets the price slots of its symbols.
int FillHoldingRecord(const KdlMsg* msg, CViewHoldings& record, HoldingsStore& store,
                      const ScripDetailsLookup& lookup, bool cseLayout = false);

// Fills a present-values record ("om_get_prsnt_values") the same way, then
// 61002 (ISIN, when present it replaces the scrip detail), 6 and 41231.
// Returns 1.
int FillPresentValueRecord(const KdlMsg* msg, CViewHoldings& record, HoldingsStore& store,
                           const ScripDetailsLookup& lookup);

} // namespace vh
