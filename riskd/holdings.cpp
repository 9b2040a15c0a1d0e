// "display_holding_detail", and the two streams it starts: prices
// ("mrv_master") and present values ("om_get_prsnt_values").
#include <sqlite3.h>

#include <algorithm>

#include "kdl/frame_writer.h"
#include "riskd/csv.h"
#include "riskd/handlers.h"
#include "riskd/limits.h"
#include "riskd/users.h"

namespace riskd {
namespace {

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

// The fields a holding record takes from its scrip: the legs (63001,
// 63100, 10100, NSE first), the BSE code and the close, encoded once.
kdl::FieldBytes ScripFields(const ScripInfo& sc) {
  kdl::FieldBytes f;
  const std::string nseTrading = sc.nseTradingSymbol();
  if (sc.hasNse() && sc.hasBse()) {
    f.Field(vh::kTagSegment, {"nse_cm", "bse_cm"});
    f.Field(vh::kTagTradingSymbol, {nseTrading, sc.bseSymbol});
    f.Field(vh::kTagScripCode, {sc.nseToken, sc.bseCode});
  } else if (sc.hasNse()) {
    f.Field(vh::kTagSegment, {"nse_cm"});
    f.Field(vh::kTagTradingSymbol, {nseTrading});
    f.Field(vh::kTagScripCode, {sc.nseToken});
  } else if (sc.hasBse()) {
    f.Field(vh::kTagSegment, {"bse_cm"});
    f.Field(vh::kTagTradingSymbol, {sc.bseSymbol});
    f.Field(vh::kTagScripCode, {sc.bseCode});
  }
  if (sc.hasBse())
    f.Field(vh::kTagBseCode, {sc.bseCode});
  f.Field(vh::kTagClosePrice, {std::to_string(sc.close)});
  return f;
}

// The holdings answer, each row framed straight into the output: at a
// million rows the time goes to reading the store, not to building records.
class HoldingsAnswer : public Answer {
public:
  HoldingsAnswer(std::shared_ptr<const Db> snapshot, Stmt rows, const ScripBook& book)
      : snapshot_(std::move(snapshot)), rows_(std::move(rows)), book_(book) {}

  bool Fill(std::string& out, size_t budget) override {
    if (done_)
      return false;
    const size_t start = out.size();
    while (out.size() - start < budget) {
      if (rows_.Step() != SQLITE_ROW) {
        // A failed step ends the answer like the last row does, so the
        // reader is never left waiting.
        kdl::FrameWriter w(out);
        w.Field(vh::kTagAnsweredName, kName);
        w.Field(vh::kTagStatus, "1");
        w.Finish();
        rows_ = Stmt();
        snapshot_.reset(); // the read transaction ends now
        done_ = true;
        return false;
      }
      Record(out);
    }
    return true;
  }

private:
  static constexpr std::string_view kName = "display_holding_detail";

  const kdl::FieldBytes* Scrip(int64_t id) {
    if (id != scripId_) {
      scripId_ = id;
      const ScripInfo* sc = book_.ById(id);
      scripFields_ = sc ? ScripFields(*sc) : kdl::FieldBytes();
      known_ = sc != nullptr;
    }
    return known_ ? &scripFields_ : nullptr;
  }

  void Record(std::string& out) {
    kdl::FrameWriter w(out);
    w.Field(vh::kTagAnsweredName, kName);
    w.Field(vh::kTagClientId, rows_.Text(0));
    if (const kdl::FieldBytes* scrip = Scrip(rows_.Int(1)))
      w.Raw(scrip->bytes(), scrip->count());
    w.Field(vh::kTagProduct, rows_.Text(2));
    // Columns 3..11 of HOLDING_COLUMNS hold the quantities in tag order.
    for (int i = 0; i < 9; ++i)
      w.Number(vh::kHoldingQuantityTags[i], rows_.Int(3 + i));
    w.Hundredths(vh::kTagHaircut, rows_.Int(12));
    if (!rows_.IsNull(13))
      w.Number(vh::kTagCollateralType, rows_.Int(13));
    w.Finish();
  }

  std::shared_ptr<const Db> snapshot_;
  Stmt rows_;
  const ScripBook& book_;
  int64_t scripId_ = -1;
  bool known_ = false;
  kdl::FieldBytes scripFields_;
  bool done_ = false;
};

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
  out->push_back(std::make_unique<HoldingsAnswer>(snapshot, std::move(rows), s.book));
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
