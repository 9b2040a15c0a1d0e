// Marking a holding as margin for the FO or currency segment and unmarking
// it: the four operations, their limits, the dialog's checks and the
// "om_stock_margin_transfer" request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "link/link_request.h"

namespace vh {

inline constexpr const char* kMarginTransferRequest = "om_stock_margin_transfer";
inline constexpr const char* kQuantityZeroMessage = "Entered Qty cannot be 0";
inline constexpr const char* kQuantityExceedsFormat = "Entered Quantity %ld cannot exceed %ld";
inline constexpr const char* kNoCollateralType = "---";

// The menu commands of the holdings grid's row menu.
inline constexpr int kCmdMarkFo = 4011;
inline constexpr int kCmdMarkCur = 4012;
inline constexpr int kCmdUnmarkFo = 4013;
inline constexpr int kCmdUnmarkCur = 4014;

enum MarkOperation : int {
  kUnmarkFo = 1,
  kMarkFo = 2,
  kUnmarkCur = 3,
  kMarkCur = 4,
};

struct MarkOperationInfo {
  MarkOperation operation;
  int command;
  const char* caption;
  const char* action; // sent in 20008
  bool mark;
};

// The row of `operation`, or of the menu command `command`; nullopt for
// anything else.
std::optional<MarkOperationInfo> MarkOperationOf(int operation);
std::optional<MarkOperationInfo> MarkOperationForCommand(int command);

// The texts of the selected holding that the dialog shows and sends, as
// the holdings grid shows them.
struct MarkHolding {
  std::string clientId;
  std::string product;
  std::string value63003;
  std::string isin;
  std::string nseSymbol;
  std::string series;
  std::string nseToken;
  std::string bseSymbol;
  std::string bseScripCode;
  std::string holdingsQty;
  std::string holdingsUpdateQty;
  std::string usedQty;
  std::string withheldHoldingQty;
  std::string t1Qty;
  std::string haircut;        // "Hair Cut(%)"
  std::string collateralType; // "Collateral Type"
  int32_t closePrice = 0;     // hundredths
};

// The ordinary decimal reading of a whole number into 32 bits: blanks, a
// sign, leading digits; 0 when there are none; clamped to the 32-bit range.
int32_t WholeNumber(const std::string& text);

// The largest quantity `operation` allows, in signed 32-bit arithmetic
// (wrapping as the 32-bit sums do): unmark FO the holdings update qty,
// unmark CUR the withheld holding qty, a mark the smaller of holdings and
// holdings + T1 - used. 0 for an unknown operation.
int32_t MarkLimit(MarkOperation operation, const MarkHolding& holding);

// The quantity the dialog proposes: for an unmark the limit field's text as
// it stands, for a mark the limit as "%ld".
std::string QuantityPrefill(MarkOperation operation, const MarkHolding& holding);

// Submit's checks on the quantity text. Returns true when it may be sent;
// otherwise shows kQuantityZeroMessage or the exceed message (quantity and
// limit) and returns false.
[[nodiscard]] bool CheckMarkQuantity(MarkOperation operation, const MarkHolding& holding,
                                     const std::string& quantityText);

// The request, fields in order: 54001 client, 64030 product, 63003 (when not
// empty), 61002 ISIN, then 64297 quantity, 64172 haircut / 100 ("%lf") and
// 59351 close price ("%ld") unless the collateral type is "---"; the NSE
// group 63001 "nse_cm", 10100 token, 63100 symbol-series when the NSE symbol
// is not empty; the BSE group 63001 "bse_cm", 10100 BSE code, 63100 symbol
// when the BSE symbol is not empty; 64044 quantity, 20008 action, 54247
// `userId`. A field that cannot be added leaves the status " Request
// Failure"; a failed send shows and leaves "om_stock_margin_transfer Request
// Failure"; a sent one leaves "om_stock_margin_transfer request sent
// successfully".
CLinkRequest MarginTransferRequest(const MarkHolding& holding, const std::string& quantityText,
                                   const MarkOperationInfo& operation, const std::string& userId);

} // namespace vh
