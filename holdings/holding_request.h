// The view's requests, built from a plain picture of its controls: "View
// Hold/Pos" ("display_holding_detail") with its validation, and "Load BSE"
// ("mrv_cj") with the decoding of its answer. The window reads its controls
// into a HoldSelection; nothing here knows a widget.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "holdings/view_holdings.h"
#include "kdl/kdl.h"
#include "link/link_request.h"

namespace vh {

inline constexpr const char* kHoldingRequestName = "display_holding_detail";
inline constexpr const char* kMrvCjRequestName = "mrv_cj";
// The silent status text of a field that cannot be added (leading blank).
inline constexpr const char* kFieldFailureStatus = " Request Failure";

// What the window's controls say when "View Hold/Pos" is pressed. An
// "exchange" is the text of the row's exchange combo; nullopt when that
// combo has no selection.
struct HoldSelection {
  bool clientMode = false;                // "Client" radio (21037) checked
  std::optional<std::string> nseExchange; // combo 25001: "--", "NSE" or "CSE"
  std::optional<std::string> bseExchange; // combo 21004: "--" or "BSE"
  // The host's trading symbol of the NSE row ("SYMBOL-SERIES", from
  // pu_get_trading_symbol_n_token), not the combo's bare symbol.
  std::string nseTradingSymbol;
  std::string bseSymbol;               // text of combo 21005
  std::optional<std::string> clientId; // combo 9013; nullopt: no selection
  std::string userId;                  // the plug-in's user id (31003)
  uint32_t userType = 0;               // 0, 1 and 2 send the peer value
  std::string peerValue;               // from "om_get_user_peer_data"
};

// Validation messages, in the order they are checked.
inline constexpr const char* kMsgSpecifyExchange = "Please Specify the exchange";
inline constexpr const char* kMsgSelectScrip = "Please Select Scrip Details.";
inline constexpr const char* kMsgSelectClient = "Please Select Client";

struct HoldRequestResult {
  // The validation message to show; empty when the request was built.
  std::string message;
  // The request, when `message` is empty.
  std::optional<CLinkRequest> request;
};

// Validates `sel` and builds "display_holding_detail".
// Scrip mode: 25001 unselected, then 21004 unselected → kMsgSpecifyExchange;
// both "--" → kMsgSelectScrip. Fields: 0 name; for "NSE" 63001 "nse_cm",
// 10100 the trading symbol, 63003 the scrip details' BSE code of
// ("nse_cm", trading symbol) when not empty; for "CSE" 63001 "cse_cm" and
// 10100 twice ("<symbol>-BL", "<symbol>-TM"); for "BSE" 63001 "bse_cm",
// 10100 the BSE symbol, 63003 the BSE code of ("bse_cm", symbol) when not
// empty; 31003 the user id; 64056 the peer value for user types 0..2.
// Client mode: no client → kMsgSelectClient; fields 0, 54001, 31003.
// A field that cannot be added gives the status kFieldFailureStatus; a
// refused send shows "display_holding_detail Request Failure".
HoldRequestResult BuildHoldingRequest(const HoldSelection& sel, const ScripDetailsLookup& lookup);

// "mrv_cj" for the selected text of combo 21003: 0 name, 63003 the text,
// 63001 "bse_cm"; field failures are the silent kFieldFailureStatus, a
// refused send shows "mrv_cj Request Failure". Nullopt without a selection
// (nothing is sent then).
std::optional<CLinkRequest> BuildMrvCjRequest(const std::optional<std::string>& selected21003);

// The message shown when "Load BSE" finds no BSE counterpart.
inline constexpr const char* kMsgNoBseCounterpart = "Selected NSE symbol not present in BSE";

// The BSE symbol of a "mrv_cj" answer record (10100, first value);
// nullopt when it is absent (the caller shows kMsgNoBseCounterpart).
std::optional<std::string> DecodeMrvCj(const KdlMsg* msg);

// The combo find the "mrv_cj" answer walk uses: the first of `count` items
// whose text begins with `prefix` (ASCII case ignored), searching from item
// `after` + 1 to the end and then wrapping from item 0 up to `after`.
// -1 when none matches or count is 0. An empty prefix matches any item.
template <typename ItemText>
int FindComboPrefix(int count, int after, std::string_view prefix, ItemText&& itemText);

bool StartsWithNoCase(std::string_view text, std::string_view prefix);

template <typename ItemText>
int FindComboPrefix(int count, int after, std::string_view prefix, ItemText&& itemText) {
  if (count <= 0)
    return -1;
  const int start = (after < -1 || after >= count) ? 0 : after + 1;
  for (int n = 0; n < count; ++n) {
    const int i = (start + n) % count;
    if (StartsWithNoCase(itemText(i), prefix))
      return i;
  }
  return -1;
}

} // namespace vh
