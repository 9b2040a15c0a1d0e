#include "holdings/mark_unmark.h"

#include "common/whole_number.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "common/c_locale.h"
#include "common/message.h"
#include "kdl/tags.h"

namespace vh {
namespace {

constexpr MarkOperationInfo kOperations[] = {
    {kUnmarkFo, kCmdUnmarkFo, "FO UnMarking", "UF", false},
    {kMarkFo, kCmdMarkFo, "FO Marking", "MF", true},
    {kUnmarkCur, kCmdUnmarkCur, "Currency UnMarking", "UC", false},
    {kMarkCur, kCmdMarkCur, "Currency Marking", "MC", true},
};

int32_t Wrap(int64_t v) {
  return int32_t(uint32_t(uint64_t(v)));
}

} // namespace

std::optional<MarkOperationInfo> MarkOperationOf(int operation) {
  for (const MarkOperationInfo& o : kOperations)
    if (o.operation == operation)
      return o;
  return std::nullopt;
}

std::optional<MarkOperationInfo> MarkOperationForCommand(int command) {
  for (const MarkOperationInfo& o : kOperations)
    if (o.command == command)
      return o;
  return std::nullopt;
}

int32_t WholeNumber(const std::string& text) {
  return LeadingWhole32(text);
}

int32_t MarkLimit(MarkOperation operation, const MarkHolding& h) {
  switch (operation) {
  case kUnmarkFo:
    return WholeNumber(h.holdingsUpdateQty);
  case kUnmarkCur:
    return WholeNumber(h.withheldHoldingQty);
  case kMarkFo:
  case kMarkCur: {
    const int32_t held = WholeNumber(h.holdingsQty);
    const int32_t free =
        Wrap(int64_t{held} + WholeNumber(h.t1Qty) - int64_t{WholeNumber(h.usedQty)});
    return std::min(held, free);
  }
  }
  return 0;
}

std::string QuantityPrefill(MarkOperation operation, const MarkHolding& h) {
  if (operation == kUnmarkFo)
    return h.holdingsUpdateQty;
  if (operation == kUnmarkCur)
    return h.withheldHoldingQty;
  return std::to_string(MarkLimit(operation, h));
}

bool CheckMarkQuantity(MarkOperation operation, const MarkHolding& h,
                       const std::string& quantityText) {
  const int32_t quantity = WholeNumber(quantityText);
  if (quantity == 0) {
    ShowMessage(kQuantityZeroMessage);
    return false;
  }
  const int32_t limit = MarkLimit(operation, h);
  if (quantity > limit) {
    char text[96];
    std::snprintf(text, sizeof text, kQuantityExceedsFormat, long{quantity}, long{limit});
    ShowMessage(text);
    return false;
  }
  return true;
}

CLinkRequest MarginTransferRequest(const MarkHolding& h, const std::string& quantityText,
                                   const MarkOperationInfo& operation, const std::string& userId) {
  CLinkRequest r(kMarginTransferRequest);
  r.OnFieldFailure(" Request Failure", Report::Status);
  r.OnSendFailure(std::string(kMarginTransferRequest) + " Request Failure", Report::ShowAndStatus);
  r.Add(kTagClientId, h.clientId).Add(kTagProduct, h.product);
  if (!h.value63003.empty())
    r.Add(kTagBseCode, h.value63003);
  r.Add(kTagIsin, h.isin);
  if (h.collateralType != kNoCollateralType) {
    char haircut[400]; // "%lf" of the largest double fits
    const double fraction = StrtodC(h.haircut.c_str(), nullptr) / 100;
    InCLocale([&] { return std::snprintf(haircut, sizeof haircut, "%lf", fraction); });
    r.Add(kTagCollateralQty, quantityText)
        .Add(kTagHaircut, haircut)
        .Add(kTagClosePrice, std::to_string(h.closePrice));
  }
  if (!h.nseSymbol.empty())
    r.Add(kTagSegment, "nse_cm")
        .Add(kTagScripCode, h.nseToken)
        .Add(kTagTradingSymbol, h.nseSymbol + "-" + h.series);
  if (!h.bseSymbol.empty())
    r.Add(kTagSegment, "bse_cm")
        .Add(kTagScripCode, h.bseScripCode)
        .Add(kTagTradingSymbol, h.bseSymbol);
  r.Add(kTagHoldingsQty, quantityText)
      .Add(kTagAction, operation.action)
      .Add(kTagSourceUserId, userId);
  return r;
}

} // namespace vh
