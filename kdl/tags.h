// The field tags and request names of the back-end protocol, named once for
// everything that speaks it: the plug-in's link, the host's control and
// start-up load, and tarn-riskd. docs/riskd.md gives each request's fields.
#pragma once

#include <cstdint>
#include <string_view>

namespace vh {

// Envelope.
inline constexpr uint32_t kTagRequestName = 0;      // requests: first field, the request name
inline constexpr uint32_t kTagUserId = 31003;       // requests: the requesting user id
inline constexpr uint32_t kTagAnsweredName = 32767; // responses: the request answered
inline constexpr uint32_t kTagStatus = 32766;       // responses: absent on a data record
inline constexpr uint32_t kTagSubKind = 32760;      // responses: "NSE", "BSE_LTP", ...
inline constexpr uint32_t kTagPeerValue = 64056;    // user-peer answer, holdings request

// Holdings records and requests.
inline constexpr uint32_t kTagClientId = 54001;
inline constexpr uint32_t kTagSegment = 63001;       // "nse_cm" / "bse_cm", one value per leg
inline constexpr uint32_t kTagTradingSymbol = 63100; // per leg
inline constexpr uint32_t kTagScripCode = 10100;     // per leg: NSE token or BSE code
inline constexpr uint32_t kTagBseCode = 63003;
inline constexpr uint32_t kTagProduct = 64030;
inline constexpr uint32_t kTagHoldingsQty = 64044;
inline constexpr uint32_t kTagHoldingsUpdateQty = 64300;
inline constexpr uint32_t kTagUsedQty = 64205;
inline constexpr uint32_t kTagCollateralQty = 64297;
inline constexpr uint32_t kTagCollateralUpdateQty = 64301;
inline constexpr uint32_t kTagWithheldHoldingQty = 64461;
inline constexpr uint32_t kTagWithheldCollateralQty = 64462;
inline constexpr uint32_t kTagT1Qty = 64204;
inline constexpr uint32_t kTagT1CollateralQty = 64435;
// The nine quantities of a holding, in the order of its columns.
inline constexpr uint32_t kHoldingQuantityTags[] = {kTagHoldingsQty,
                                                    kTagHoldingsUpdateQty,
                                                    kTagUsedQty,
                                                    kTagCollateralQty,
                                                    kTagCollateralUpdateQty,
                                                    kTagWithheldHoldingQty,
                                                    kTagWithheldCollateralQty,
                                                    kTagT1Qty,
                                                    kTagT1CollateralQty};
inline constexpr uint32_t kTagHaircut = 64172;
inline constexpr uint32_t kTagCollateralType = 64171;
inline constexpr uint32_t kTagClosePrice = 59351;

// Prices ("mrv_master") and present values.
inline constexpr uint32_t kTagLastPrice = 6;
inline constexpr uint32_t kTagTickClose = 32;
inline constexpr uint32_t kTagPriceTime = 63179;
inline constexpr uint32_t kTagIsin = 61002;
inline constexpr uint32_t kTagValue = 41231;

// Top-N ranking and margin transfers.
inline constexpr uint32_t kTagExchange = 10101;
inline constexpr uint32_t kTagTopMethod = 41232;
inline constexpr uint32_t kTagTopSymbol = 20008;    // top-N answer: trading symbol
inline constexpr uint32_t kTagAction = 20008;       // transfer request: MF, UF, MC, UC
inline constexpr uint32_t kTagSourceUserId = 54247; // lien report and transfer requests

// Lien report.
inline constexpr uint32_t kTagReportSegment = 63002;
inline constexpr uint32_t kTagLienAmount = 41363;
inline constexpr uint32_t kTagPayinAmount = 64287;
inline constexpr uint32_t kTagPayoutAmount = 64288;

// Host requests: scrip master fields are this base + the field's index.
inline constexpr uint32_t kTagScripField = 65000;
inline constexpr uint32_t kTagUserType = 65100;
inline constexpr uint32_t kTagUserAdmin = 65101;
inline constexpr uint32_t kTagUserRight = 65102;
inline constexpr uint32_t kTagUserExchange = 65103;
inline constexpr uint32_t kTagPassword = 65110; // "tarn_login" under --auth

inline constexpr std::string_view kLoginRequest = "tarn_login";
inline constexpr std::string_view kUserInfoRequest = "tarn_user_info";
inline constexpr std::string_view kScripMasterRequest = "tarn_scrip_master";
inline constexpr std::string_view kTopTenRequest = "rs_display_topten_holdings";
inline constexpr std::string_view kClientReportsRequest = "om_get_client_reports";

// Status values closing a "tarn_login" answer.
inline constexpr std::string_view kLoginAccepted = "1";
inline constexpr std::string_view kLoginRefused = "2";   // unknown user or wrong password
inline constexpr std::string_view kPasswordNeeded = "3"; // the back-end runs with --auth

} // namespace vh
