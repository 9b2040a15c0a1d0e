// The host's scrip master and user: what the host services answer from.
// Loaded from the back-end at start-up; indexed so that every service is a
// hash lookup or a walk over one prepared list, never a scan of all scrips.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace host {

// One exchange leg of a scrip; field meanings as in TarnScripDetails.
struct ScripLeg {
  enum Field {
    Segment,
    Symbol,
    Series,
    TradingSymbol,
    Token,
    Name,
    ClosePrice,
    Isin,
    BseCode,
    BseSymbol,
    BseGroup,
    NseSymbol,
    NseSeries,
    LotSize,
    Count
  };
  std::array<std::string, Count> field;
  const std::string& operator[](Field f) const { return field[f]; }
};

class ScripMaster {
public:
  // Adds a leg; call Finish() once all are in. Legs of a segment other than
  // "NSE" or "BSE" are kept for lookups but listed nowhere.
  void Add(ScripLeg leg);
  // Builds the sorted lists. Idempotent.
  void Finish();
  void Clear();

  size_t size() const { return legs_.size(); }

  // NSE: the symbols (sorted), and the trading symbols ("SYMBOL-SERIES") of
  // one symbol, sorted; empty when unknown.
  const std::vector<std::string>& NseSymbols() const { return nseSymbols_; }
  std::vector<std::string> NseTradingSymbols(std::string_view symbol) const;

  // BSE: the groups (sorted) and the symbols of one group (sorted).
  const std::vector<std::string>& BseGroups() const { return bseGroups_; }
  const std::vector<std::string>& BseSymbolsOfGroup(std::string_view group) const;

  // The leg for `symbol` of `segment`: NSE takes a trading symbol or a bare
  // symbol (its "EQ" leg first, else its first series); BSE a symbol or a
  // scrip code. nullptr when unknown.
  const ScripLeg* Find(std::string_view segment, std::string_view symbol) const;

private:
  std::vector<ScripLeg> legs_;
  std::unordered_map<std::string, size_t> byKey_; // "NSE|RELIANCE-EQ", "BSE|500325", "BSE|RELIANCE"
  std::unordered_map<std::string, std::vector<size_t>> nseBySymbol_;
  std::unordered_map<std::string, std::vector<std::string>> bseByGroup_;
  std::vector<std::string> nseSymbols_;
  std::vector<std::string> bseGroups_;
  bool finished_ = false;
};

// The logged-in user as the back-end describes it.
struct UserInfo {
  std::string id;
  unsigned type = 0;
  bool administrator = false;             // sees every client, holds every right
  std::unordered_set<std::string> rights; // action right names
  std::vector<std::string> exchanges;     // "NSE", "BSE"
  std::vector<std::string> clientIds;     // in the back-end's order

  bool HasRight(std::string_view name) const {
    return administrator || rights.count(std::string(name)) != 0;
  }
};

} // namespace host
