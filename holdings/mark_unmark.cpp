#include "holdings/mark_unmark.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "common/c_locale.h"
#include "common/message.h"

namespace vh {
namespace {

constexpr MarkOperationInfo kOperations[] = {
    {kUnmarkFo, kCmdUnmarkFo, "FO UnMarking", "UF", false},
    {kMarkFo, kCmdMarkFo, "FO Marking", "MF", true},
    {kUnmarkCur, kCmdUnmarkCur, "Currency UnMarking", "UC", false},
    {kMarkCur, kCmdMarkCur, "Currency Marking", "MC", true},
};

// Tags of the request.
constexpr uint32_t kTagClient = 54001;
constexpr uint32_t kTagProduct = 64030;
constexpr uint32_t kTag63003 = 63003;
constexpr uint32_t kTagIsin = 61002;
constexpr uint32_t kTagCollateralQty = 64297;
constexpr uint32_t kTagHaircut = 64172;
constexpr uint32_t kTagClosePrice = 59351;
constexpr uint32_t kTagSegment = 63001;
constexpr uint32_t kTagScripCode = 10100;
constexpr uint32_t kTagSymbol = 63100;
constexpr uint32_t kTagQuantity = 64044;
constexpr uint32_t kTagAction = 20008;
constexpr uint32_t kTagSourceUser = 54247;

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
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
    ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    negative = text[i++] == '-';
  int64_t v = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    v = std::min<int64_t>(v * 10 + (text[i] - '0'), int64_t{INT32_MAX} + 1);
  v = negative ? -v : v;
  return int32_t(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
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
  r.Add(kTagClient, h.clientId).Add(kTagProduct, h.product);
  if (!h.value63003.empty())
    r.Add(kTag63003, h.value63003);
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
        .Add(kTagSymbol, h.nseSymbol + "-" + h.series);
  if (!h.bseSymbol.empty())
    r.Add(kTagSegment, "bse_cm").Add(kTagScripCode, h.bseScripCode).Add(kTagSymbol, h.bseSymbol);
  r.Add(kTagQuantity, quantityText).Add(kTagAction, operation.action).Add(kTagSourceUser, userId);
  return r;
}

} // namespace vh
