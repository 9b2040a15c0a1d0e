#include "riskd/handlers.h"

#include <sqlite3.h>

#include "riskd/csv.h"
#include "riskd/users.h"

namespace riskd {
namespace {

constexpr int kClientsPerRecord = 250; // stays far below the record buffer

void PeerData(Services& s, const Caller& caller, const kdl::Message& req, Answers* out) {
  const auto user = UserFor(s, caller, req, vh::kTagUserId);
  RecordWriter w("om_get_user_peer_data");
  std::string frames;
  if (user) {
    w.Start();
    w.Add(vh::kTagPeerValue, user->peer);
    w.Emit(frames);
  }
  w.EmitStatus(frames);
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
}

// The BSE counterpart of the NSE scrip in 63003 (a trading symbol, bare
// symbol, token or ISIN).
void BseCounterpart(Services& s, const kdl::Message& req, Answers* out) {
  const std::string text = FieldText(req, vh::kTagBseCode);
  const ScripInfo* scrip = s.book.FindNse(text);
  if (!scrip)
    scrip = s.book.FindIsin(text);
  RecordWriter w("mrv_cj");
  std::string frames;
  w.Start();
  w.Add(vh::kTagSegment, "bse_cm");
  if (scrip && scrip->hasBse()) {
    w.Add(vh::kTagScripCode, scrip->bseSymbol);
    w.Add(vh::kTagBseCode, scrip->bseCode);
  }
  w.Emit(frames);
  w.EmitStatus(frames);
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
}

void ScripLegRecord(const ScripInfo& sc, bool nse, RecordWriter& w, std::string& frames) {
  const std::string fields[14] = {nse ? "NSE" : "BSE",
                                  nse ? sc.nseSymbol : sc.bseCode,
                                  nse ? sc.nseSeries : sc.bseGroup,
                                  nse ? sc.nseTradingSymbol() : sc.bseSymbol,
                                  nse ? sc.nseToken : sc.bseCode,
                                  sc.name,
                                  FormatHundredths(sc.close),
                                  sc.isin,
                                  sc.bseCode,
                                  sc.bseSymbol,
                                  sc.bseGroup,
                                  sc.nseSymbol,
                                  sc.nseSeries,
                                  std::to_string(sc.lotSize)};
  w.Start();
  for (uint32_t i = 0; i < 14; ++i)
    w.Add(vh::kTagScripField + i, fields[i]);
  w.Emit(frames);
}

// One record per leg, produced as the connection drains: a desk's own
// scrip file may hold far more scrips than the sample.
class ScripMasterAnswer : public Answer {
public:
  explicit ScripMasterAnswer(const ScripBook& book) : book_(book), w_("tarn_scrip_master") {}
  bool Fill(std::string& out, size_t budget) override {
    const size_t start = out.size();
    const auto& all = book_.all();
    for (; next_ < all.size() && out.size() - start < budget; ++next_) {
      if (all[next_].hasNse())
        ScripLegRecord(all[next_], true, w_, out);
      if (all[next_].hasBse())
        ScripLegRecord(all[next_], false, w_, out);
    }
    if (next_ < all.size() || done_)
      return !done_;
    w_.EmitStatus(out);
    done_ = true;
    return false;
  }

private:
  const ScripBook& book_;
  RecordWriter w_;
  size_t next_ = 0;
  bool done_ = false;
};

void UserInfo(Services& s, const Caller& caller, const kdl::Message& req, Answers* out) {
  const auto user = UserFor(s, caller, req, vh::kTagUserId);
  if (!user) {
    out->push_back(StatusOnly("tarn_user_info", "2"));
    return;
  }
  RecordWriter w("tarn_user_info");
  std::string frames;
  w.Start("USER");
  w.Add(vh::kTagUserId, user->id);
  w.Add(vh::kTagUserType, user->type);
  w.Add(vh::kTagPeerValue, user->peer);
  w.Add(vh::kTagUserAdmin, user->admin ? "1" : "0");
  for (const auto& right : user->rights)
    w.Add(vh::kTagUserRight, right);
  w.Add(vh::kTagUserExchange, "NSE");
  w.Add(vh::kTagUserExchange, "BSE");
  w.Emit(frames);
  const auto snapshot = TakeSnapshot(s, "tarn_user_info");
  if (!snapshot) {
    w.EmitStatus(frames, "2");
    out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
    return;
  }
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
  Stmt clients = snapshot->Prepare(
      "SELECT id FROM client c WHERE " + ClientVisibleSql("c.id") + " ORDER BY id", nullptr);
  BindViewer(clients, *user);
  out->push_back(std::make_unique<SqlAnswer>(
      snapshot, std::move(clients), "tarn_user_info",
      [](const Stmt& row, RecordWriter& rec) { rec.Add(vh::kTagClientId, row.Text(0)); }, "1",
      kClientsPerRecord, "CLIENTS"));
}

// Lien rows of the clients the source user may see, of one segment when
// the request names it. The stream ends in a status without value.
void ClientReports(Services& s, const Caller& caller, const kdl::Message& req, Answers* out) {
  const auto user = UserFor(s, caller, req, vh::kTagSourceUserId);
  const std::string segment = FieldText(req, vh::kTagReportSegment);
  const auto snapshot = user ? TakeSnapshot(s, "om_get_client_reports") : nullptr;
  if (!snapshot) {
    out->push_back(StatusOnly("om_get_client_reports", ""));
    return;
  }
  Stmt rows =
      snapshot->Prepare("SELECT client_id,segment,lien_paise,payin_paise,payout_paise FROM lien l"
                        " WHERE (:segment='' OR segment=:segment) AND " +
                            ClientVisibleSql("l.client_id") + " ORDER BY client_id,segment",
                        nullptr);
  BindViewer(rows, *user);
  rows.Bind(":segment", segment);
  out->push_back(std::make_unique<SqlAnswer>(
      snapshot, std::move(rows), "om_get_client_reports",
      [](const Stmt& row, RecordWriter& rec) {
        rec.Add(vh::kTagClientId, row.Text(0));
        rec.Add(vh::kTagSubKind, row.Text(1));
        rec.Add(vh::kTagLienAmount, FormatHundredths(row.Int(2)));
        rec.Add(vh::kTagPayinAmount, FormatHundredths(row.Int(3)));
        rec.Add(vh::kTagPayoutAmount, FormatHundredths(row.Int(4)));
      },
      ""));
}

} // namespace

std::shared_ptr<const Db> TakeSnapshot(Services& s, std::string_view request) {
  std::string error;
  auto snapshot = TakeSnapshot(s.storePath, &error);
  if (!snapshot)
    s.log(std::string(request) + ": cannot read the store: " + error);
  return snapshot;
}

std::string FieldText(const kdl::Message& msg, uint32_t tag, uint32_t index) {
  const auto v = msg.Text(tag, index);
  return v ? std::string(*v) : std::string();
}

std::optional<User> UserFor(const Services& s, const Caller& caller, const kdl::Message& req,
                            uint32_t tag, uint32_t fallbackTag) {
  if (caller.trustNamedUser)
    for (const uint32_t t : {tag, fallbackTag})
      if (t != 0)
        if (const std::string named = FieldText(req, t); !named.empty())
          return named == caller.user.id ? caller.user : LoadUser(s.db, named);
  return caller.user;
}

bool HandleRequest(Services& s, const Caller& caller, const kdl::Message& req, Subscription* sub,
                   Answers* out) {
  const auto name = req.Text(vh::kTagRequestName);
  if (!name)
    return false;
  if (*name == "display_holding_detail")
    HandleHoldings(s, caller, req, sub, out);
  else if (*name == "mrv_cj")
    BseCounterpart(s, req, out);
  else if (*name == "om_get_user_peer_data")
    PeerData(s, caller, req, out);
  else if (*name == "rs_display_topten_holdings")
    HandleTopTen(s, caller, req, out);
  else if (*name == "om_get_client_reports")
    ClientReports(s, caller, req, out);
  else if (*name == "om_stock_margin_transfer")
    HandleMarginTransfer(s, caller, req);
  else if (*name == vh::kScripMasterRequest)
    out->push_back(std::make_unique<ScripMasterAnswer>(s.book));
  else if (*name == vh::kUserInfoRequest)
    UserInfo(s, caller, req, out);
  else
    return false;
  return true;
}

} // namespace riskd
