#include "riskd/scrip_book.h"

#include <sqlite3.h>

#include <algorithm>

#include "riskd/limits.h"
#include "riskd/sample_data.h"

namespace riskd {
namespace {

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return out;
}

} // namespace

bool ScripBook::Load(const Db& db, std::string* error, bool frozen) {
  Stmt s = db.Prepare("SELECT id,isin,name,close_paise,lot_size,nse_symbol,nse_series,nse_token,"
                      "bse_code,bse_symbol,bse_group,(SELECT ltp_paise FROM frozen_price f"
                      " WHERE f.scrip_id=scrip.id) FROM scrip ORDER BY id",
                      error);
  if (!s.ok())
    return false;
  *this = ScripBook();
  frozen_ = frozen;
  SampleRng rng(0x7a11);
  int rc;
  while ((rc = s.Step()) == SQLITE_ROW) {
    ScripInfo info;
    info.id = s.Int(0);
    info.isin = s.Text(1), info.name = s.Text(2);
    info.close = s.Int(3), info.lotSize = s.Int(4);
    info.nseSymbol = s.Text(5), info.nseSeries = s.Text(6), info.nseToken = s.Text(7);
    info.bseCode = s.Text(8), info.bseSymbol = s.Text(9), info.bseGroup = s.Text(10);
    // The day opens within 3% of the close, so the change rankings differ.
    const int64_t spread = info.close * 3 / 100;
    info.ltp =
        info.close +
        (spread > 0
             ? static_cast<int64_t>(rng.Below(static_cast<uint64_t>(2 * spread + 1))) - spread
             : 0);
    if (frozen)
      info.ltp = s.IsNull(11) ? info.close : std::clamp<int64_t>(s.Int(11), 1, kMaxPricePaise);
    scrips_.push_back(std::move(info));
    Index(scrips_.size() - 1);
  }
  if (rc != SQLITE_DONE && error)
    *error = db.LastError();
  return rc == SQLITE_DONE;
}

void ScripBook::Index(size_t index) {
  const ScripInfo& info = scrips_[index];
  byId_.emplace(info.id, index);
  isin_.emplace(info.isin, index);
  if (info.hasNse()) {
    nse_.emplace(info.nseTradingSymbol(), index);
    nse_.emplace("#" + info.nseToken, index);
    // A bare symbol names its EQ series, else the first series met.
    auto [it, added] = nse_.emplace(info.nseSymbol, index);
    if (!added && info.nseSeries == "EQ")
      it->second = index;
  }
  if (info.hasBse()) {
    bse_.emplace(info.bseCode, index);
    bse_.emplace(info.bseSymbol, index);
  }
}

const ScripInfo* ScripBook::ById(int64_t id) const {
  auto it = byId_.find(id);
  return it == byId_.end() ? nullptr : &scrips_[it->second];
}

const ScripInfo* ScripBook::FindNse(std::string_view text) const {
  auto it = nse_.find(std::string(text));
  if (it == nse_.end())
    it = nse_.find("#" + std::string(text));
  return it == nse_.end() ? nullptr : &scrips_[it->second];
}

const ScripInfo* ScripBook::FindBse(std::string_view text) const {
  auto it = bse_.find(std::string(text));
  return it == bse_.end() ? nullptr : &scrips_[it->second];
}

const ScripInfo* ScripBook::FindIsin(std::string_view isin) const {
  auto it = isin_.find(std::string(isin));
  return it == isin_.end() ? nullptr : &scrips_[it->second];
}

const ScripInfo* ScripBook::Find(std::string_view segment, std::string_view text) const {
  const std::string seg = Lower(segment);
  if (seg == "nse_cm" || seg == "nse")
    return FindNse(text);
  if (seg == "bse_cm" || seg == "bse")
    return FindBse(text);
  return nullptr;
}

void ScripBook::Tick(int64_t id) {
  auto it = byId_.find(id);
  if (frozen_ || it == byId_.end())
    return;
  ScripInfo& s = scrips_[it->second];
  SampleRng rng(tickState_++);
  const int64_t step = s.ltp / 200;
  if (step > 0)
    s.ltp += static_cast<int64_t>(rng.Below(static_cast<uint64_t>(2 * step + 1))) - step;
  s.ltp = std::clamp<int64_t>(s.ltp, 1, kMaxPricePaise);
}

int64_t ScripBook::ChangeBp(const ScripInfo& s) {
  return s.close == 0 ? 0 : (s.ltp - s.close) * 10000 / s.close;
}

} // namespace riskd
