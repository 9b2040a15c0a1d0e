// "display_holding_detail", and the two streams it starts: prices
// ("mrv_master") and present values ("om_get_prsnt_values").
#include <sqlite3.h>

#include <algorithm>

#include "riskd/csv.h"
#include "riskd/handlers.h"
#include "riskd/limits.h"
#include "riskd/users.h"

namespace riskd {
namespace {

// Quantity columns 3..11 of kHoldingColumns, in this order of tags.
constexpr uint32_t kQuantityTags[] = {vh::kTagHoldingsQty,
                                      vh::kTagHoldingsUpdateQty,
                                      vh::kTagUsedQty,
                                      vh::kTagCollateralQty,
                                      vh::kTagCollateralUpdateQty,
                                      vh::kTagWithheldHoldingQty,
                                      vh::kTagWithheldCollateralQty,
                                      vh::kTagT1Qty,
                                      vh::kTagT1CollateralQty};

#define HOLDING_COLUMNS                                                                            \
  "client_id,scrip_id,product,holdings_qty,holdings_update_qty,used_qty,collateral_qty,"           \
  "collateral_update_qty,withheld_holding_qty,withheld_collateral_qty,t1_qty,"                     \
  "t1_collateral_qty,haircut_bp,collateral_type"

// The legs go as value 0 and 1 of 63001/63100/10100, NSE first.
void AddLegs(const ScripInfo& sc, RecordWriter& rec) {
  if (sc.hasNse()) {
    rec.Add(vh::kTagSegment, "nse_cm");
    rec.Add(vh::kTagTradingSymbol, sc.nseTradingSymbol());
    rec.Add(vh::kTagScripCode, sc.nseToken);
  }
  if (sc.hasBse()) {
    rec.Add(vh::kTagSegment, "bse_cm");
    rec.Add(vh::kTagTradingSymbol, sc.bseSymbol);
    rec.Add(vh::kTagScripCode, sc.bseCode);
  }
}

void HoldingRecord(const ScripBook& book, const Stmt& row, RecordWriter& rec) {
  rec.Add(vh::kTagClientId, row.Text(0));
  const ScripInfo* sc = book.ById(row.Int(1));
  if (sc) {
    AddLegs(*sc, rec);
    if (sc->hasBse())
      rec.Add(vh::kTagBseCode, sc->bseCode);
    rec.Add(vh::kTagClosePrice, sc->close);
  }
  rec.Add(vh::kTagProduct, row.Text(2));
  for (int i = 0; i < 9; ++i)
    rec.Add(kQuantityTags[i], row.Int(3 + i));
  rec.Add(vh::kTagHaircut, FormatHundredths(row.Int(12)));
  if (!row.IsNull(13))
    rec.Add(vh::kTagCollateralType, row.Int(13));
}

// The scrips a scrip-mode request names: each leg i is 63001[i] with
// 10100[i]; 63003 (a BSE code) is the fall-back when no leg is known.
std::vector<int64_t> RequestedScrips(const ScripBook& book, const kdl::Message& req) {
  std::vector<int64_t> ids;
  const uint32_t legs = req.Count(vh::kTagSegment).value_or(0);
  for (uint32_t i = 0; i < legs && i < 2; ++i)
    if (const ScripInfo* sc =
            book.Find(FieldText(req, vh::kTagSegment, i), FieldText(req, vh::kTagScripCode, i)))
      ids.push_back(sc->id);
  if (ids.empty())
    if (const ScripInfo* sc = book.FindBse(FieldText(req, vh::kTagBseCode)))
      ids.push_back(sc->id);
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  return ids;
}

std::vector<int64_t> ClientScrips(const Db& db, const std::string& client) {
  std::vector<int64_t> ids;
  Stmt s =
      db.Prepare("SELECT DISTINCT scrip_id FROM holding WHERE client_id=? ORDER BY 1", nullptr);
  s.Bind(1, client);
  while (s.Step() == SQLITE_ROW && ids.size() < Subscription::kMaxScrips)
    ids.push_back(s.Int(0));
  return ids;
}

// Built on first Fill, so it shows the state after the answers before it.
class DeferredAnswer : public Answer {
public:
  explicit DeferredAnswer(std::function<std::unique_ptr<Answer>()> make) : make_(std::move(make)) {}
  bool Fill(std::string& out, size_t budget) override {
    if (!inner_)
      inner_ = make_();
    return inner_->Fill(out, budget);
  }

private:
  std::function<std::unique_ptr<Answer>()> make_;
  std::unique_ptr<Answer> inner_;
};

} // namespace

void HandleHoldings(Services& s, const Caller& caller, const kdl::Message& req, Subscription* sub,
                    Answers* out) {
  const auto user = UserFor(s, caller, req, vh::kTagUserId);
  const std::string client = FieldText(req, vh::kTagClientId);
  const bool byClient = req.Count(vh::kTagClientId).has_value();
  Subscription next;
  next.userId = user ? user->id : "";
  next.clientId = client;
  const auto snapshot = TakeSnapshot(s, "display_holding_detail");
  Stmt rows;
  if (!snapshot) {
  } else if (byClient && user && MaySee(*snapshot, *user, client)) {
    rows = snapshot->Prepare("SELECT " HOLDING_COLUMNS " FROM holding WHERE client_id=?1", nullptr);
    rows.Bind(1, client);
    next.scrips = ClientScrips(*snapshot, client);
  } else if (!byClient && user) {
    next.scrips = RequestedScrips(s.book, req);
    // No ORDER BY: the (scrip_id, ...) index yields the rows without a sort,
    // which a hot scrip's million rows would otherwise need.
    rows = snapshot->Prepare("SELECT " HOLDING_COLUMNS
                             " FROM holding h WHERE scrip_id IN (:first,:second) AND " +
                                 ClientVisibleSql("h.client_id"),
                             nullptr);
    const int64_t none = -1;
    rows.Bind(":first", next.scrips.empty() ? none : next.scrips[0]);
    rows.Bind(":second", next.scrips.size() > 1 ? next.scrips[1] : none);
    BindViewer(rows, *user);
  }
  if (!rows.ok()) {
    s.log("display_holding_detail refused: user '" + next.userId + "'" +
          (byClient ? " may not see client '" + client + "'" : " unknown"));
    out->push_back(StatusOnly("display_holding_detail"));
    *sub = Subscription();
    return;
  }
  const ScripBook* book = &s.book;
  out->push_back(std::make_unique<SqlAnswer>(
      snapshot, std::move(rows), "display_holding_detail",
      [book](const Stmt& row, RecordWriter& rec) { HoldingRecord(*book, row, rec); }));
  *sub = std::move(next);
  out->push_back(PresentValues(s, *sub));
}

std::string PriceFrames(const ScripBook& book, const Subscription& sub, int64_t now) {
  RecordWriter w("mrv_master");
  std::string frames;
  for (int64_t id : sub.scrips) {
    const ScripInfo* sc = book.ById(id);
    if (!sc)
      continue;
    for (const bool nse : {true, false}) {
      if (nse ? !sc->hasNse() : !sc->hasBse())
        continue;
      w.Start(nse ? "NSE_LTP" : "BSE_LTP");
      w.Add(vh::kTagLastPrice, sc->ltp);
      w.Add(vh::kTagTradingSymbol, nse ? sc->nseTradingSymbol() : sc->bseSymbol);
      w.Add(vh::kTagTickClose, sc->close);
      w.Add(vh::kTagPriceTime, now);
      w.Emit(frames);
    }
  }
  w.EmitStatus(frames);
  return frames;
}

namespace {

int64_t HeldQuantity(Services& s, const User& user, int64_t scrip, const std::string& client) {
  constexpr size_t kMaxCached = 100000;
  const std::string key = std::to_string(scrip) + "|" + client + "|" + user.id;
  if (auto it = s.heldQuantity.find(key); it != s.heldQuantity.end())
    return it->second;
  Stmt sum = s.db.Prepare("SELECT sum(holdings_qty) FROM holding h WHERE scrip_id=:scrip AND"
                          " (:client='' OR client_id=:client) AND " +
                              ClientVisibleSql("h.client_id"),
                          nullptr);
  BindViewer(sum, user);
  sum.Bind(":scrip", scrip).Bind(":client", client);
  const int64_t qty = sum.Step() == SQLITE_ROW ? sum.Int(0) : 0;
  if (s.heldQuantity.size() >= kMaxCached)
    s.heldQuantity.clear();
  s.heldQuantity.emplace(key, qty);
  return qty;
}

} // namespace

std::unique_ptr<Answer> PresentValues(Services& s, const Subscription& sub) {
  Services* services = &s;
  return std::make_unique<DeferredAnswer>([services, sub]() -> std::unique_ptr<Answer> {
    const auto user = LoadUser(services->db, sub.userId);
    RecordWriter w("om_get_prsnt_values");
    std::string frames;
    for (int64_t id : sub.scrips) {
      const ScripInfo* sc = services->book.ById(id);
      if (!sc || !user)
        continue;
      const int64_t qty = HeldQuantity(*services, *user, id, sub.clientId);
      w.Start();
      if (!sub.clientId.empty())
        w.Add(vh::kTagClientId, sub.clientId);
      AddLegs(*sc, w);
      w.Add(vh::kTagIsin, sc->isin);
      w.Add(vh::kTagLastPrice, sc->ltp);
      w.Add(vh::kTagClosePrice, sc->close);
      w.Add(vh::kTagHoldingsQty, qty);
      // A whole hot scrip may hold more than a 64-bit value can say.
      w.Add(vh::kTagValue, CheckedMul(qty, sc->ltp).value_or(INT64_MAX));
      w.Emit(frames);
    }
    w.EmitStatus(frames);
    return std::make_unique<FramesAnswer>(std::move(frames));
  });
}

} // namespace riskd
