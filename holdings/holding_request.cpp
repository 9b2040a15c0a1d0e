#include "holdings/holding_request.h"

#include "link/envelope.h"

namespace vh {
namespace {

constexpr uint32_t kTagToken = 10100;
constexpr const char* kNoExchange = "--";
// User types that send their peer value with a scrip-mode request.
constexpr uint32_t kLastPeerUserType = 2;

CLinkRequest NewRequest(const char* name) {
  CLinkRequest r(name);
  r.OnFieldFailure(kFieldFailureStatus, Report::Status);
  return r;
}

void AddBseCode(CLinkRequest& r, const char* segment, std::string_view symbol,
                const ScripDetailsLookup& lookup) {
  ScripDetailFields details;
  if (lookup && lookup(segment, symbol, details) && !details[kScripBseCode].empty())
    r.Add(kTagBseCode, details[kScripBseCode]);
}

void AddScripFields(CLinkRequest& r, const HoldSelection& sel, const ScripDetailsLookup& lookup) {
  const std::string& nse = *sel.nseExchange;
  if (nse == "NSE") {
    r.Add(kTagSegment, "nse_cm");
    r.Add(kTagToken, sel.nseTradingSymbol);
    AddBseCode(r, "nse_cm", sel.nseTradingSymbol, lookup);
  } else if (nse == "CSE") {
    r.Add(kTagSegment, "cse_cm");
    r.Add(kTagToken, sel.nseTradingSymbol + "-BL");
    r.Add(kTagToken, sel.nseTradingSymbol + "-TM");
  }
  if (*sel.bseExchange == "BSE") {
    r.Add(kTagSegment, "bse_cm");
    r.Add(kTagToken, sel.bseSymbol);
    AddBseCode(r, "bse_cm", sel.bseSymbol, lookup);
  }
  r.Add(kTagUserId, sel.userId);
  if (sel.userType <= kLastPeerUserType)
    r.Add(kTagPeerValue, sel.peerValue);
}

} // namespace

HoldRequestResult BuildHoldingRequest(const HoldSelection& sel, const ScripDetailsLookup& lookup) {
  HoldRequestResult result;
  if (sel.clientMode) {
    if (!sel.clientId) {
      result.message = kMsgSelectClient;
      return result;
    }
    CLinkRequest r = NewRequest(kHoldingRequestName);
    r.Add(kTagClientId, *sel.clientId);
    r.Add(kTagUserId, sel.userId);
    result.request = std::move(r);
    return result;
  }
  if (!sel.nseExchange || !sel.bseExchange) {
    result.message = kMsgSpecifyExchange;
    return result;
  }
  if (*sel.nseExchange == kNoExchange && *sel.bseExchange == kNoExchange) {
    result.message = kMsgSelectScrip;
    return result;
  }
  CLinkRequest r = NewRequest(kHoldingRequestName);
  AddScripFields(r, sel, lookup);
  result.request = std::move(r);
  return result;
}

std::optional<CLinkRequest> BuildMrvCjRequest(const std::optional<std::string>& selected21003) {
  if (!selected21003)
    return std::nullopt;
  CLinkRequest r = NewRequest(kMrvCjRequestName);
  r.Add(kTagBseCode, *selected21003);
  r.Add(kTagSegment, "bse_cm");
  return r;
}

std::optional<std::string> DecodeMrvCj(const KdlMsg* msg) {
  KdlValue v{};
  if (!msg || !kdl_get_data(msg, kTagToken, 0, &v, nullptr))
    return std::nullopt;
  return std::string(v.data, v.length);
}

} // namespace vh
