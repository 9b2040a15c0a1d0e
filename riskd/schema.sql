-- tarn-riskd store. Quantities are whole shares; prices, amounts and
-- haircuts are integers in hundredths so sums and comparisons are exact.
-- Bump user_version (and riskd/store.cpp's kSchemaVersion) on any change.

CREATE TABLE IF NOT EXISTS meta(
  key   TEXT PRIMARY KEY,
  value TEXT NOT NULL
);

-- One security; a leg is present when its symbol/code column is not NULL.
CREATE TABLE IF NOT EXISTS scrip(
  id          INTEGER PRIMARY KEY,
  isin        TEXT NOT NULL UNIQUE,
  name        TEXT NOT NULL,
  close_paise INTEGER NOT NULL DEFAULT 0,
  lot_size    INTEGER NOT NULL DEFAULT 1,
  nse_symbol  TEXT,
  nse_series  TEXT,
  nse_token   TEXT,
  bse_code    TEXT,
  bse_symbol  TEXT,
  bse_group   TEXT
);
CREATE UNIQUE INDEX IF NOT EXISTS scrip_nse ON scrip(nse_symbol, nse_series);
CREATE INDEX IF NOT EXISTS scrip_nse_token ON scrip(nse_token);
CREATE UNIQUE INDEX IF NOT EXISTS scrip_bse_code ON scrip(bse_code);
CREATE INDEX IF NOT EXISTS scrip_bse_symbol ON scrip(bse_symbol);

CREATE TABLE IF NOT EXISTS client(
  id   TEXT PRIMARY KEY,
  name TEXT NOT NULL DEFAULT ''
) WITHOUT ROWID;

-- admin = 1: sees every client and holds every right.
CREATE TABLE IF NOT EXISTS user(
  id    TEXT PRIMARY KEY,
  type  INTEGER NOT NULL DEFAULT 0,
  peer  TEXT NOT NULL DEFAULT '',
  admin INTEGER NOT NULL DEFAULT 0
) WITHOUT ROWID;

-- A salted slow hash (crypto_pwhash_str) per user who logs in under --auth.
CREATE TABLE IF NOT EXISTS user_password(
  user_id TEXT PRIMARY KEY REFERENCES user(id),
  hash    TEXT NOT NULL
) WITHOUT ROWID;

CREATE TABLE IF NOT EXISTS user_right(
  user_id TEXT NOT NULL REFERENCES user(id),
  name    TEXT NOT NULL,
  PRIMARY KEY(user_id, name)
) WITHOUT ROWID;

CREATE TABLE IF NOT EXISTS user_client(
  user_id   TEXT NOT NULL REFERENCES user(id),
  client_id TEXT NOT NULL REFERENCES client(id),
  PRIMARY KEY(user_id, client_id)
) WITHOUT ROWID;

-- collateral_type: 0 CL, 1 LT, 2 WC, NULL when the scrip is no collateral.
CREATE TABLE IF NOT EXISTS holding(
  client_id           TEXT NOT NULL REFERENCES client(id),
  scrip_id            INTEGER NOT NULL REFERENCES scrip(id),
  product             TEXT NOT NULL,
  holdings_qty        INTEGER NOT NULL DEFAULT 0,
  holdings_update_qty INTEGER NOT NULL DEFAULT 0,
  used_qty            INTEGER NOT NULL DEFAULT 0,
  collateral_qty      INTEGER NOT NULL DEFAULT 0,
  collateral_update_qty INTEGER NOT NULL DEFAULT 0,
  withheld_holding_qty  INTEGER NOT NULL DEFAULT 0,
  withheld_collateral_qty INTEGER NOT NULL DEFAULT 0,
  t1_qty              INTEGER NOT NULL DEFAULT 0,
  t1_collateral_qty   INTEGER NOT NULL DEFAULT 0,
  haircut_bp          INTEGER NOT NULL DEFAULT 0,
  collateral_type     INTEGER,
  PRIMARY KEY(client_id, scrip_id, product)
) WITHOUT ROWID;
-- Covers every column, so a scrip's holdings are one pass over the index in
-- answer order; the largest quantities of a scrip come from its tail.
CREATE INDEX IF NOT EXISTS holding_by_scrip ON holding(scrip_id, holdings_qty,
  holdings_update_qty, used_qty, collateral_qty, collateral_update_qty,
  withheld_holding_qty, withheld_collateral_qty, t1_qty, t1_collateral_qty,
  haircut_bp, collateral_type);

-- Segment: CASH, FO, CUR, COM, SPOT.
CREATE TABLE IF NOT EXISTS lien(
  client_id    TEXT NOT NULL REFERENCES client(id),
  segment      TEXT NOT NULL,
  lien_paise   INTEGER NOT NULL DEFAULT 0,
  payin_paise  INTEGER NOT NULL DEFAULT 0,
  payout_paise INTEGER NOT NULL DEFAULT 0,
  PRIMARY KEY(client_id, segment)
) WITHOUT ROWID;

-- Last prices of a run with --frozen-prices: a scrip listed here trades at
-- ltp_paise all day, every other scrip at its close; nothing moves.
CREATE TABLE IF NOT EXISTS frozen_price(
  scrip_id  INTEGER PRIMARY KEY REFERENCES scrip(id),
  ltp_paise INTEGER NOT NULL
);

-- Every margin transfer request, applied or refused, in arrival order.
CREATE TABLE IF NOT EXISTS ledger(
  id        INTEGER PRIMARY KEY,
  at        TEXT NOT NULL DEFAULT (strftime('%Y-%m-%dT%H:%M:%fZ', 'now')),
  user_id   TEXT NOT NULL,
  client_id TEXT NOT NULL,
  scrip_id  INTEGER,
  product   TEXT NOT NULL,
  action    TEXT NOT NULL,
  qty       INTEGER NOT NULL,
  applied   INTEGER NOT NULL,
  reason    TEXT NOT NULL DEFAULT ''
);
