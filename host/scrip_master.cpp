#include "host/scrip_master.h"

#include <algorithm>

namespace host {
namespace {

std::string key(std::string_view segment, std::string_view symbol) {
  std::string k;
  k.reserve(segment.size() + symbol.size() + 1);
  k.append(segment).push_back('|');
  k.append(symbol);
  return k;
}

void sortUnique(std::vector<std::string>& v) {
  std::sort(v.begin(), v.end());
  v.erase(std::unique(v.begin(), v.end()), v.end());
}

} // namespace

void ScripMaster::Add(ScripLeg leg) {
  const size_t index = legs_.size();
  const std::string& segment = leg[ScripLeg::Segment];
  if (segment == "NSE") {
    byKey_.emplace(key("NSE", leg[ScripLeg::TradingSymbol]), index);
    nseBySymbol_[leg[ScripLeg::Symbol]].push_back(index);
  } else if (segment == "BSE") {
    // A BSE leg is found by its code and by its symbol; the first one wins.
    byKey_.emplace(key("BSE", leg[ScripLeg::Symbol]), index);
    byKey_.emplace(key("BSE", leg[ScripLeg::TradingSymbol]), index);
    bseByGroup_[leg[ScripLeg::Series]].push_back(leg[ScripLeg::TradingSymbol]);
  } else {
    byKey_.emplace(key(segment, leg[ScripLeg::Symbol]), index);
  }
  legs_.push_back(std::move(leg));
  finished_ = false;
}

void ScripMaster::Finish() {
  if (finished_)
    return;
  nseSymbols_.clear();
  for (const auto& [symbol, legs] : nseBySymbol_)
    nseSymbols_.push_back(symbol);
  sortUnique(nseSymbols_);
  bseGroups_.clear();
  for (auto& [group, symbols] : bseByGroup_) {
    bseGroups_.push_back(group);
    sortUnique(symbols);
  }
  sortUnique(bseGroups_);
  finished_ = true;
}

void ScripMaster::Clear() {
  *this = ScripMaster();
}

std::vector<std::string> ScripMaster::NseTradingSymbols(std::string_view symbol) const {
  std::vector<std::string> out;
  auto it = nseBySymbol_.find(std::string(symbol));
  if (it == nseBySymbol_.end())
    return out;
  for (size_t i : it->second)
    out.push_back(legs_[i][ScripLeg::TradingSymbol]);
  sortUnique(out);
  return out;
}

const std::vector<std::string>& ScripMaster::BseSymbolsOfGroup(std::string_view group) const {
  static const std::vector<std::string> none;
  auto it = bseByGroup_.find(std::string(group));
  return it == bseByGroup_.end() ? none : it->second;
}

const ScripLeg* ScripMaster::Find(std::string_view segment, std::string_view symbol) const {
  auto it = byKey_.find(key(segment, symbol));
  if (it != byKey_.end())
    return &legs_[it->second];
  if (segment != "NSE")
    return nullptr;
  auto bare = nseBySymbol_.find(std::string(symbol));
  if (bare == nseBySymbol_.end() || bare->second.empty())
    return nullptr;
  for (size_t i : bare->second)
    if (legs_[i][ScripLeg::Series] == "EQ")
      return &legs_[i];
  return &legs_[bare->second.front()];
}

} // namespace host
