#include "riskd/margin_transfer.h"

#include "common/whole_number.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "riskd/handlers.h"
#include "riskd/limits.h"
#include "riskd/users.h"

namespace riskd {
namespace {

struct Holding {
  int64_t holdings = 0, update = 0, used = 0, withheld = 0, t1 = 0, haircutBp = 0, close = 0;
};

std::optional<Holding> LoadHolding(const Db& db, const TransferRequest& r) {
  Stmt s = db.Prepare("SELECT holdings_qty,holdings_update_qty,used_qty,withheld_holding_qty,"
                      "t1_qty,haircut_bp,close_paise FROM holding h JOIN scrip ON scrip.id="
                      "h.scrip_id WHERE client_id=? AND scrip_id=? AND product=?",
                      nullptr);
  if (!s.ok() || s.Bind(1, r.clientId).Bind(2, r.scripId).Bind(3, r.product).Step() != SQLITE_ROW)
    return std::nullopt;
  return Holding{s.Int(0), s.Int(1), s.Int(2), s.Int(3), s.Int(4), s.Int(5), s.Int(6)};
}

std::string Check(const Db& db, const TransferRequest& r, int64_t qty, Holding* h) {
  const bool fo = r.action == "MF" || r.action == "UF";
  if (!fo && r.action != "MC" && r.action != "UC")
    return "unknown action '" + r.action + "'";
  const auto user = LoadUser(db, r.userId);
  if (!user)
    return "unknown user '" + r.userId + "'";
  if (!user->HasRight(kMarkRight))
    return "user '" + r.userId + "' lacks the right '" + std::string(kMarkRight) + "'";
  if (!MaySee(db, *user, r.clientId))
    return "user '" + r.userId + "' may not see client '" + r.clientId + "'";
  const auto holding = LoadHolding(db, r);
  if (!holding)
    return "no holding of this scrip and product";
  *h = *holding;
  if (qty <= 0)
    return "quantity '" + r.quantity + "' is not positive";
  int64_t limit;
  if (r.action[0] == 'M')
    limit = std::min(h->holdings, h->holdings + h->t1 - h->used);
  else
    limit = fo ? h->update : h->withheld;
  if (qty > limit)
    return "quantity " + std::to_string(qty) + " exceeds " + std::to_string(limit);
  return {};
}

// The value a mark adds to the segment's lien (negative for an unmark):
// q x close x (1 - haircut), computed wide; nullopt when it cannot be held.
std::optional<int64_t> MarginValue(int64_t q, const Holding& h) {
  const __int128 value =
      static_cast<__int128>(q) * h.close * (kMaxHaircutBp - h.haircutBp) / kMaxHaircutBp;
  if (value > INT64_MAX || value < INT64_MIN)
    return std::nullopt;
  return static_cast<int64_t>(value);
}

// Empty when applied; else why not (nothing was changed then).
std::string Apply(Db& db, const TransferRequest& r, int64_t qty, const Holding& h) {
  const bool mark = r.action[0] == 'M';
  const bool fo = r.action[1] == 'F';
  const char* segment = fo ? "FO" : "CUR";
  const int64_t q = mark ? qty : -qty;
  const auto value = MarginValue(q, h);
  Stmt current =
      db.Prepare("SELECT lien_paise FROM lien WHERE client_id=?1 AND segment=?2", nullptr);
  const int step = current.Bind(1, r.clientId).Bind(2, segment).Step();
  if (step != SQLITE_ROW && step != SQLITE_DONE)
    return "database: " + db.LastError();
  const auto lien =
      value ? CheckedAdd(step == SQLITE_ROW ? current.Int(0) : 0, *value) : std::nullopt;
  if (!lien)
    return "the lien would overflow";
  Stmt upd = db.Prepare(
      fo ? "UPDATE holding SET holdings_qty=holdings_qty-?1,"
           " holdings_update_qty=holdings_update_qty+?1,"
           " collateral_qty=max(0,collateral_qty+?1) WHERE client_id=?2 AND scrip_id=?3 AND"
           " product=?4"
         : "UPDATE holding SET holdings_qty=holdings_qty-?1,"
           " withheld_holding_qty=withheld_holding_qty+?1,"
           " withheld_collateral_qty=max(0,withheld_collateral_qty+?1) WHERE client_id=?2 AND"
           " scrip_id=?3 AND product=?4",
      nullptr);
  Stmt put = db.Prepare("INSERT INTO lien(client_id,segment,lien_paise) VALUES(?1,?2,?3)"
                        " ON CONFLICT DO UPDATE SET lien_paise=?3",
                        nullptr);
  if (!upd.Bind(1, q).Bind(2, r.clientId).Bind(3, r.scripId).Bind(4, r.product).Run() ||
      !put.Bind(1, r.clientId).Bind(2, segment).Bind(3, std::max<int64_t>(0, *lien)).Run())
    return "database: " + db.LastError();
  return {};
}

bool Ledger(Db& db, const TransferRequest& r, int64_t qty, const std::string& reason) {
  Stmt s = db.Prepare("INSERT INTO ledger(user_id,client_id,scrip_id,product,action,qty,applied,"
                      "reason) VALUES(?,?,?,?,?,?,?,?)",
                      nullptr);
  s.Bind(1, r.userId).Bind(2, r.clientId).Bind(4, r.product).Bind(5, r.action).Bind(6, qty);
  if (r.scripId)
    s.Bind(3, r.scripId);
  return s.Bind(7, int64_t{reason.empty()}).Bind(8, reason).Run();
}

} // namespace

std::string ApplyTransfer(Db& db, const TransferRequest& request) {
  Transaction tx(db);
  if (!tx.ok())
    return "database busy: " + db.LastError();
  const int64_t qty = vh::LeadingWhole32(request.quantity);
  Holding h;
  std::string why = Check(db, request, qty, &h);
  if (why.empty()) {
    // A failure half-way is undone, while the ledger still records it.
    if (!db.Exec("SAVEPOINT apply", nullptr))
      return "database: " + db.LastError();
    why = Apply(db, request, qty, h);
    if (!why.empty()) {
      // Not undone: the whole transaction rolls back, ledger line included.
      if (!db.Exec("ROLLBACK TO apply", nullptr))
        return why;
    }
    if (!db.Exec("RELEASE apply", nullptr))
      return "database: " + db.LastError();
  }
  std::string error;
  if (!Ledger(db, request, qty, why) || !tx.Commit(&error))
    return why.empty() ? "ledger: " + db.LastError() : why;
  return why;
}

// The scrip is found by the request's legs (a token or BSE code in 10100),
// then its ISIN (61002), then 63003 (a BSE code).
void HandleMarginTransfer(Services& s, const Caller& caller, const kdl::Message& req) {
  TransferRequest r;
  // Checked again by ApplyTransfer; an unknown named user is refused there.
  const auto user = UserFor(s, caller, req, vh::kTagSourceUserId, vh::kTagUserId);
  r.userId =
      user ? user->id
           : (FieldText(req, vh::kTagSourceUserId).empty() ? FieldText(req, vh::kTagUserId)
                                                           : FieldText(req, vh::kTagSourceUserId));
  r.clientId = FieldText(req, vh::kTagClientId);
  r.product = FieldText(req, vh::kTagProduct);
  r.action = FieldText(req, vh::kTagAction);
  r.quantity = FieldText(req, vh::kTagHoldingsQty);
  const ScripInfo* sc = nullptr;
  const uint32_t legs = req.Count(vh::kTagSegment).value_or(0);
  for (uint32_t i = 0; i < legs && !sc; ++i)
    sc = s.book.Find(FieldText(req, vh::kTagSegment, i), FieldText(req, vh::kTagScripCode, i));
  if (!sc)
    sc = s.book.FindIsin(FieldText(req, vh::kTagIsin));
  if (!sc)
    sc = s.book.FindBse(FieldText(req, vh::kTagBseCode));
  r.scripId = sc ? sc->id : 0;
  const std::string why = ApplyTransfer(s.db, r);
  if (why.empty())
    s.heldQuantity.clear();
  s.log("om_stock_margin_transfer " + r.action + " " + r.quantity + " of " + (sc ? sc->isin : "?") +
        " for " + r.clientId + " by " + r.userId + ": " +
        (why.empty() ? "applied" : "refused, " + why));
}

} // namespace riskd
