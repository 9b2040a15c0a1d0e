#include "riskd/handlers.h"

#include <sqlite3.h>

#include "riskd/csv.h"
#include "riskd/users.h"

namespace riskd {
namespace {

// Fields of "tarn_scrip_master" records: 65000 + the index of the field in
// the host's scrip-details record (docs/riskd.md).
constexpr uint32_t kTagScripField = 65000;
// "tarn_user_info" fields.
constexpr uint32_t kTagUserType = 65100, kTagUserAdmin = 65101, kTagUserRight = 65102,
                   kTagUserExchange = 65103;
constexpr int kClientsPerRecord = 250; // stays far below the record buffer

void PeerData(Services& s, const kdl::Message& req, Answers* out) {
  const auto user = LoadUser(s.db, FieldText(req, kTagUser));
  RecordWriter w("om_get_user_peer_data");
  std::string frames;
  if (user) {
    w.Start();
    w.Add(64056, user->peer);
    w.Emit(frames);
  }
  w.EmitStatus(frames);
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
}

// The BSE counterpart of the NSE scrip in 63003 (a trading symbol, bare
// symbol, token or ISIN).
void BseCounterpart(Services& s, const kdl::Message& req, Answers* out) {
  const std::string text = FieldText(req, 63003);
  const ScripInfo* scrip = s.book.FindNse(text);
  if (!scrip)
    scrip = s.book.FindIsin(text);
  RecordWriter w("mrv_cj");
  std::string frames;
  w.Start();
  w.Add(63001, "bse_cm");
  if (scrip && scrip->hasBse()) {
    w.Add(10100, scrip->bseSymbol);
    w.Add(63003, scrip->bseCode);
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
    w.Add(kTagScripField + i, fields[i]);
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

// An empty user id asks for the desk's administrator.
void UserInfo(Services& s, const kdl::Message& req, Answers* out) {
  const std::string id = FieldText(req, kTagUser);
  const auto user = id.empty() ? LoadDeskAdministrator(s.db) : LoadUser(s.db, id);
  if (!user) {
    out->push_back(StatusOnly("tarn_user_info", "2"));
    return;
  }
  RecordWriter w("tarn_user_info");
  std::string frames;
  w.Start("USER");
  w.Add(kTagUser, user->id);
  w.Add(kTagUserType, user->type);
  w.Add(64056, user->peer);
  w.Add(kTagUserAdmin, user->admin ? "1" : "0");
  for (const auto& right : user->rights)
    w.Add(kTagUserRight, right);
  w.Add(kTagUserExchange, "NSE");
  w.Add(kTagUserExchange, "BSE");
  w.Emit(frames);
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
  Stmt clients = s.db.Prepare(
      user->admin ? "SELECT id FROM client WHERE ?1 IS NOT NULL ORDER BY id"
                  : "SELECT client_id FROM user_client WHERE user_id=?1 ORDER BY client_id",
      nullptr);
  clients.Bind(1, user->id);
  out->push_back(std::make_unique<SqlAnswer>(
      std::move(clients), "tarn_user_info",
      [](const Stmt& row, RecordWriter& rec) { rec.Add(54001, row.Text(0)); }, "1",
      kClientsPerRecord, "CLIENTS"));
}

// Lien rows of the clients the source user (54247) may see; the segment
// filter is 63002 when present. The stream ends in a status without value.
void ClientReports(Services& s, const kdl::Message& req, Answers* out) {
  const auto user = LoadUser(s.db, FieldText(req, 54247));
  const std::string segment = FieldText(req, 63002);
  Stmt rows =
      s.db.Prepare("SELECT client_id,segment,lien_paise,payin_paise,payout_paise FROM lien l"
                   " WHERE (?1='' OR segment=?1) AND (?2 OR EXISTS(SELECT 1 FROM user_client u"
                   " WHERE u.user_id=?3 AND u.client_id=l.client_id)) ORDER BY client_id,segment",
                   nullptr);
  rows.Bind(1, segment).Bind(2, int64_t{user && user->admin}).Bind(3, user ? user->id : "");
  out->push_back(std::make_unique<SqlAnswer>(
      std::move(rows), "om_get_client_reports",
      [](const Stmt& row, RecordWriter& rec) {
        rec.Add(54001, row.Text(0));
        rec.Add(kTagSubKind, row.Text(1));
        rec.Add(41363, FormatHundredths(row.Int(2)));
        rec.Add(64287, FormatHundredths(row.Int(3)));
        rec.Add(64288, FormatHundredths(row.Int(4)));
      },
      ""));
}

} // namespace

std::string FieldText(const kdl::Message& msg, uint32_t tag, uint32_t index) {
  const auto v = msg.Text(tag, index);
  return v ? std::string(*v) : std::string();
}

bool HandleRequest(Services& s, const kdl::Message& req, Subscription* sub, Answers* out) {
  const auto name = req.Text(kTagRequest);
  if (!name)
    return false;
  if (*name == "display_holding_detail")
    HandleHoldings(s, req, sub, out);
  else if (*name == "mrv_cj")
    BseCounterpart(s, req, out);
  else if (*name == "om_get_user_peer_data")
    PeerData(s, req, out);
  else if (*name == "rs_display_topten_holdings")
    HandleTopTen(s, req, out);
  else if (*name == "om_get_client_reports")
    ClientReports(s, req, out);
  else if (*name == "om_stock_margin_transfer")
    HandleMarginTransfer(s, req);
  else if (*name == "tarn_scrip_master")
    out->push_back(std::make_unique<ScripMasterAnswer>(s.book));
  else if (*name == "tarn_user_info")
    UserInfo(s, req, out);
  else
    return false;
  return true;
}

} // namespace riskd
