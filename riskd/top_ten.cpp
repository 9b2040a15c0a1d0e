// "rs_display_topten_holdings": the ten largest holdings of one exchange,
// ranked by value at the last price (method 1) or taken from the scrips with
// the largest (3) or smallest (4) change since the close, among the clients
// the connection's user may see.
#include <sqlite3.h>

#include <algorithm>

#include "riskd/handlers.h"
#include "riskd/limits.h"
#include "riskd/users.h"

namespace riskd {
namespace {

constexpr size_t kTop = 10;

struct Row {
  std::string client;
  const ScripInfo* scrip;
  int64_t value; // hundredths
};

// The largest holdings of one scrip by quantity, which are also its largest
// by value: the index on (scrip_id, holdings_qty) answers it without a scan.
class LargestOfScrip {
public:
  LargestOfScrip(const Db& db, const User& viewer) {
    stmt_ =
        db.Prepare("SELECT client_id,holdings_qty FROM holding h WHERE scrip_id=:scrip AND " +
                       ClientVisibleSql("h.client_id") + " ORDER BY holdings_qty DESC LIMIT :limit",
                   nullptr);
    viewer_ = viewer;
  }
  void Append(const ScripInfo& sc, size_t limit, std::vector<Row>* rows) {
    if (!stmt_.ok())
      return;
    BindViewer(stmt_, viewer_);
    stmt_.Bind(":scrip", sc.id).Bind(":limit", static_cast<int64_t>(limit));
    while (stmt_.Step() == SQLITE_ROW)
      rows->push_back(
          {std::string(stmt_.Text(0)), &sc, CheckedMul(stmt_.Int(1), sc.ltp).value_or(INT64_MAX)});
    stmt_.Reset();
  }

private:
  Stmt stmt_;
  User viewer_;
};

std::vector<Row> ByValue(const std::vector<const ScripInfo*>& scrips, LargestOfScrip& q) {
  std::vector<Row> rows;
  for (const ScripInfo* sc : scrips) {
    q.Append(*sc, kTop, &rows);
    std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
      return a.value != b.value ? a.value > b.value : a.client < b.client;
    });
    if (rows.size() > kTop)
      rows.resize(kTop);
  }
  return rows;
}

std::vector<Row> ByChange(std::vector<const ScripInfo*> scrips, bool top, LargestOfScrip& q) {
  std::stable_sort(scrips.begin(), scrips.end(), [top](const ScripInfo* a, const ScripInfo* b) {
    const int64_t ca = ScripBook::ChangeBp(*a), cb = ScripBook::ChangeBp(*b);
    return top ? ca > cb : ca < cb;
  });
  std::vector<Row> rows;
  for (const ScripInfo* sc : scrips) {
    if (rows.size() >= kTop)
      break;
    q.Append(*sc, kTop - rows.size(), &rows);
  }
  return rows;
}

} // namespace

void HandleTopTen(Services& s, const Caller& caller, const kdl::Message& req, Answers* out) {
  const std::string exchange = FieldText(req, vh::kTagExchange);
  const std::string method = FieldText(req, vh::kTagTopMethod);
  const bool nse = exchange == "NSE";
  if ((!nse && exchange != "BSE") || (method != "1" && method != "3" && method != "4")) {
    s.log("rs_display_topten_holdings refused: exchange '" + exchange + "', method '" + method +
          "'");
    out->push_back(StatusOnly("rs_display_topten_holdings"));
    return;
  }
  std::vector<const ScripInfo*> scrips;
  for (const ScripInfo& sc : s.book.all())
    if (nse ? sc.hasNse() : sc.hasBse())
      scrips.push_back(&sc);
  // A ranking that names no user ranks the caller's clients.
  const auto user = UserFor(s, caller, req, vh::kTagUserId);
  if (!user) {
    out->push_back(StatusOnly("rs_display_topten_holdings"));
    return;
  }
  LargestOfScrip query(s.db, *user);
  const std::vector<Row> rows =
      method == "1" ? ByValue(scrips, query) : ByChange(std::move(scrips), method == "3", query);

  // The dialog puts each row it reads on top of the list, so the answer
  // goes from the last of the ranking to the first. A row whose client has
  // no entity id (an empty client id) sends no 54001, and the reader pairs
  // the n-th 54001 with the n-th row: such rows go after every row that has
  // one.
  std::vector<Row> sent(rows.rbegin(), rows.rend());
  std::stable_partition(sent.begin(), sent.end(), [](const Row& r) { return !r.client.empty(); });
  RecordWriter w{std::string(vh::kTopTenRequest)};
  std::string frames;
  if (!sent.empty()) {
    w.Start();
    w.Add(vh::kTagExchange, nse ? "nse_cm" : "bse_cm");
    for (const Row& r : sent) {
      if (!r.client.empty())
        w.Add(vh::kTagClientId, r.client);
      w.Add(vh::kTagTopSymbol, nse ? r.scrip->nseTradingSymbol() : r.scrip->bseSymbol);
      w.Add(vh::kTagValue, r.value);
    }
    w.Emit(frames);
  }
  w.EmitStatus(frames);
  out->push_back(std::make_unique<FramesAnswer>(std::move(frames)));
}

} // namespace riskd
