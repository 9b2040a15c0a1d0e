// The scrips held in memory while the server runs: symbol lookups for
// requests, and the simulated last traded prices that the streams send.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "riskd/sqlite.h"

namespace riskd {

struct ScripInfo {
  int64_t id = 0;
  std::string isin, name;
  std::string nseSymbol, nseSeries, nseToken; // empty without an NSE leg
  std::string bseCode, bseSymbol, bseGroup;   // empty without a BSE leg
  int64_t close = 0;                          // hundredths
  int64_t lotSize = 1;
  int64_t ltp = 0; // hundredths; both legs trade at one price here

  bool hasNse() const { return !nseSymbol.empty(); }
  bool hasBse() const { return !bseCode.empty(); }
  std::string nseTradingSymbol() const { return nseSymbol + "-" + nseSeries; }
};

class ScripBook {
public:
  // Loads every scrip; false with *error when the query fails. With
  // `frozen` each last price is the scrip's frozen_price row, or its close
  // without one, and Tick leaves it there.
  bool Load(const Db& db, std::string* error, bool frozen = false);

  const ScripInfo* ById(int64_t id) const;
  // NSE: "SYMBOL-SERIES", a bare symbol (its EQ series first) or a token.
  const ScripInfo* FindNse(std::string_view text) const;
  // BSE: a scrip code or a symbol.
  const ScripInfo* FindBse(std::string_view text) const;
  const ScripInfo* FindIsin(std::string_view isin) const;
  // By segment text as requests carry it: "nse_cm"/"NSE" or "bse_cm"/"BSE".
  const ScripInfo* Find(std::string_view segment, std::string_view text) const;

  const std::vector<ScripInfo>& all() const { return scrips_; }

  // Moves the price of `id` one deterministic step (at most 0.5%, never
  // below one paisa nor above kMaxPricePaise).
  void Tick(int64_t id);
  // (ltp - close) / close in hundredths of a percent; 0 for a zero close.
  static int64_t ChangeBp(const ScripInfo& s);

private:
  void Index(size_t index);

  std::vector<ScripInfo> scrips_;
  std::unordered_map<int64_t, size_t> byId_;
  std::unordered_map<std::string, size_t> nse_, bse_, isin_;
  uint64_t tickState_ = 0x5eed;
  bool frozen_ = false;
};

} // namespace riskd
