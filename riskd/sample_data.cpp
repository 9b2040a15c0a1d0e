#include "riskd/sample_data.h"

#include <algorithm>
#include <cstdio>
#include <unordered_set>
#include <vector>

namespace riskd {
namespace {

constexpr const char* kSyllables[] = {"KA", "RA",  "TI",  "MO", "SU",  "VE", "NA", "DI",
                                      "LO", "BHA", "SHI", "GO", "PRA", "JA", "YU", "HE"};
constexpr const char* kSuffixes[] = {"TECH",  "IND", "FIN",  "STEEL", "PHARMA",
                                     "POWER", "CEM", "AUTO", "INFRA", "CHEM",
                                     "BANK",  "",    "TEX",  "AGRO",  "LTD"};
constexpr const char* kGroups[] = {"A", "B", "T", "X", "XT", "Z"};
constexpr const char* kSegments[] = {"CASH", "FO", "CUR", "COM", "SPOT"};
constexpr int kHotScrips = 5;
const std::string kMarkRight = "RMS View Holdings: Mark/UnMark";

std::string Word(SampleRng& rng) {
  std::string w;
  const int parts = 2 + static_cast<int>(rng.Below(2));
  for (int i = 0; i < parts; ++i)
    w += kSyllables[rng.Below(std::size(kSyllables))];
  return w + kSuffixes[rng.Below(std::size(kSuffixes))];
}

std::string Base36(uint64_t v, int width) {
  std::string s(static_cast<size_t>(width), '0');
  for (int i = width - 1; i >= 0; --i, v /= 36)
    s[static_cast<size_t>(i)] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[v % 36];
  return s;
}

std::string ClientId(int64_t i) {
  char buf[24];
  std::snprintf(buf, sizeof buf, "C%06lld", static_cast<long long>(i + 1));
  return buf;
}

bool AddScrips(Db& db, SampleRng& rng, int64_t count, std::string* error) {
  Stmt ins = db.Prepare("INSERT INTO scrip(id,isin,name,close_paise,lot_size,nse_symbol,"
                        "nse_series,nse_token,bse_code,bse_symbol,bse_group)"
                        " VALUES(?,?,?,?,?,?,?,?,?,?,?)",
                        error);
  if (!ins.ok())
    return false;
  std::unordered_set<std::string> used;
  for (int64_t i = 0; i < count; ++i) {
    std::string symbol = Word(rng);
    while (!used.insert(symbol).second)
      symbol += static_cast<char>('A' + rng.Below(26));
    const uint64_t legs = rng.Below(100); // <10 NSE only, <20 BSE only, else both
    const bool hot = i < kHotScrips;
    const bool nse = hot || legs >= 10;
    const bool bse = hot || legs < 10 || legs >= 20;
    // Log-uniform-ish close price between 10.00 and about 5,000.00.
    const int64_t close = 1000 << rng.Below(9);
    ins.Bind(1, i + 1).Bind(2, "INE" + Base36(static_cast<uint64_t>(i), 4) + "01" +
                                   std::to_string(100 + rng.Below(900)));
    ins.Bind(3, symbol + " LIMITED").Bind(4, close + static_cast<int64_t>(rng.Below(close)));
    ins.Bind(5, static_cast<int64_t>(1 + rng.Below(3) * 50));
    if (nse) {
      ins.Bind(6, symbol).Bind(7, rng.Below(10) == 0 && !hot ? "BE" : "EQ");
      ins.Bind(8, std::to_string(1000 + i * 7));
    }
    if (bse) {
      ins.Bind(9, std::to_string(500000 + i)).Bind(10, symbol);
      ins.Bind(11, hot ? "A" : kGroups[rng.Below(std::size(kGroups))]);
    }
    if (!ins.Run()) {
      *error = "scrip: " + db.LastError();
      return false;
    }
  }
  return true;
}

bool AddClients(Db& db, SampleRng& rng, int64_t count, std::string* error) {
  Stmt client = db.Prepare("INSERT INTO client(id,name) VALUES(?,?)", error);
  Stmt lien = db.Prepare("INSERT INTO lien VALUES(?,?,?,?,?)", error);
  if (!client.ok() || !lien.ok())
    return false;
  for (int64_t i = 0; i < count; ++i) {
    const std::string id = ClientId(i);
    if (!client.Bind(1, id).Bind(2, Word(rng) + " " + Word(rng)).Run()) {
      *error = "client: " + db.LastError();
      return false;
    }
    // Every client has CASH and FO lines; some also trade the other segments.
    const int segments = 2 + static_cast<int>(rng.Below(4));
    for (int s = 0; s < segments; ++s) {
      lien.Bind(1, id).Bind(2, kSegments[s]);
      lien.Bind(3, static_cast<int64_t>(rng.Below(50000000)));
      lien.Bind(4, static_cast<int64_t>(rng.Below(1000000)));
      lien.Bind(5, static_cast<int64_t>(rng.Below(1000000)));
      if (!lien.Run()) {
        *error = "lien: " + db.LastError();
        return false;
      }
    }
  }
  return true;
}

// Users: RMS1 sees everything; RMS2 sees every other client and may mark;
// DEALER1 sees the first hundred clients and may not mark.
bool AddUsers(Db& db, int64_t clients, std::string* error) {
  std::string sql = "INSERT INTO user VALUES('RMS1',0,'P001',1),('RMS2',1,'P002',0),"
                    "('DEALER1',3,'P100',0);"
                    "INSERT INTO user_right VALUES('RMS2','" +
                    kMarkRight + "');";
  if (!db.Exec(sql, error))
    return false;
  Stmt link = db.Prepare("INSERT INTO user_client VALUES(?,?)", error);
  if (!link.ok())
    return false;
  for (int64_t i = 0; i < clients; ++i) {
    if (i % 2 == 0 && !link.Bind(1, "RMS2").Bind(2, ClientId(i)).Run())
      return false;
    if (i < 100 && !link.Bind(1, "DEALER1").Bind(2, ClientId(i)).Run())
      return false;
  }
  return true;
}

bool BindHolding(Stmt& ins, SampleRng& rng, int64_t client, int64_t scrip, bool mtf) {
  const int64_t qty = 1 + static_cast<int64_t>(rng.Below(2000));
  const int64_t t1 = rng.Below(4) == 0 ? static_cast<int64_t>(rng.Below(200)) : 0;
  const int64_t used = static_cast<int64_t>(rng.Below(static_cast<uint64_t>(qty / 4 + 1)));
  const int64_t coll = rng.Below(3) == 0 ? static_cast<int64_t>(rng.Below(qty / 2 + 1)) : 0;
  const int64_t withheld = rng.Below(10) == 0 ? static_cast<int64_t>(rng.Below(50)) : 0;
  ins.Bind(1, ClientId(client)).Bind(2, scrip + 1).Bind(3, mtf ? "MTF" : "CNC");
  ins.Bind(4, qty).Bind(5, coll).Bind(6, used).Bind(7, coll);
  ins.Bind(8, static_cast<int64_t>(rng.Below(3) == 0 ? rng.Below(20) : 0));
  ins.Bind(9, withheld).Bind(10, withheld).Bind(11, t1).Bind(12, t1 / 2);
  ins.Bind(13, static_cast<int64_t>(1000 + 250 * rng.Below(30)));
  if (rng.Below(8) == 0)
    ins.BindNull(14);
  else
    ins.Bind(14, static_cast<int64_t>(rng.Below(3)));
  return ins.Run();
}

// Clients are drawn with a long tail (a few hold very many scrips) and a
// third of the rows go to the hot scrips, which thus have very many holders.
// Rows are inserted in key order: random order costs page splits all over
// the table, ten times slower at a million rows.
bool AddHoldings(Db& db, SampleRng& rng, const SampleCounts& n, std::string* error) {
  Stmt ins = db.Prepare("INSERT INTO holding VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?)", error);
  if (!ins.ok())
    return false;
  std::unordered_set<uint64_t> seen;
  seen.reserve(static_cast<size_t>(n.holdings) * 2);
  std::vector<uint64_t> keys;
  keys.reserve(static_cast<size_t>(n.holdings));
  for (int64_t tries = 0; static_cast<int64_t>(keys.size()) < n.holdings && tries < n.holdings * 8;
       ++tries) {
    const uint64_t a = rng.Below(1u << 20), b = rng.Below(1u << 20);
    // min of two uniforms skews towards the low client ids.
    const uint64_t client = (std::min(a, b) * static_cast<uint64_t>(n.clients)) >> 20;
    const bool hot = rng.Below(3) == 0 && n.scrips > kHotScrips;
    const uint64_t scrip = hot ? rng.Below(kHotScrips) : rng.Below(static_cast<uint64_t>(n.scrips));
    const uint64_t key = (client << 24 | scrip) << 1 | (rng.Below(6) == 0 ? 1u : 0u);
    if (seen.insert(key).second)
      keys.push_back(key);
  }
  std::sort(keys.begin(), keys.end());
  for (uint64_t key : keys) {
    if (!BindHolding(ins, rng, static_cast<int64_t>(key >> 25),
                     static_cast<int64_t>((key >> 1) & 0xFFFFFF), (key & 1) != 0)) {
      *error = "holding: " + db.LastError();
      return false;
    }
  }
  return true;
}

} // namespace

uint64_t SampleRng::Next() {
  uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

SampleCounts SampleSizes(int64_t holdings) {
  SampleCounts n;
  n.holdings = std::max<int64_t>(1, holdings);
  n.scrips = std::clamp<int64_t>(n.holdings / 100, 20, 5000);
  n.clients = std::max<int64_t>(10, n.holdings / 10);
  return n;
}

bool GenerateSample(Db& db, const SampleOptions& options, std::string* error) {
  const SampleCounts n = SampleSizes(options.holdings);
  SampleRng rng(options.seed);
  // A large page cache keeps the index pages of a million inserts in memory.
  if (!db.Exec("PRAGMA cache_size=-262144", error))
    return false;
  Transaction tx(db);
  if (!tx.ok()) {
    *error = "cannot start a transaction: " + db.LastError();
    return false;
  }
  if (!AddScrips(db, rng, n.scrips, error) || !AddClients(db, rng, n.clients, error) ||
      !AddUsers(db, n.clients, error) || !AddHoldings(db, rng, n, error))
    return false;
  Stmt meta = db.Prepare("INSERT OR REPLACE INTO meta VALUES('sample_seed',?)", error);
  if (!meta.ok() || !meta.Bind(1, std::to_string(options.seed)).Run())
    return false;
  return tx.Commit(error) && db.Exec("PRAGMA cache_size=-2000", error);
}

} // namespace riskd
