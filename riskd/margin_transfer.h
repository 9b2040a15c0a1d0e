// Marking holdings as margin for a segment and unmarking them again.
#pragma once

#include <cstdint>
#include <string>

#include "riskd/sqlite.h"

namespace riskd {

// One transfer as the request carries it. `quantity` is the request's text,
// read by its leading digits as the plug-in reads it.
struct TransferRequest {
  std::string userId;
  std::string clientId;
  std::string product;
  int64_t scripId = 0; // 0 when the request named no known scrip
  std::string action;  // "MF", "UF", "MC", "UC"
  std::string quantity;
};

// The effect on the holding (q = the quantity):
//   MF  holdings -q, holdings update +q, collateral +q; FO lien + value
//   UF  the reverse; q at most holdings update
//   MC  holdings -q, withheld holding +q, withheld collateral +q; CUR lien + value
//   UC  the reverse; q at most withheld holding
// Marks are limited to min(holdings, holdings + T1 - used). value = q x
// close x (1 - haircut); a transfer whose value or new lien does not fit 64
// bits is refused. Every request, applied or not, goes to the ledger.
//
// Returns an empty text when applied, else why it was refused (the store
// then only gains the ledger line).
std::string ApplyTransfer(Db& db, const TransferRequest& request);

} // namespace riskd
