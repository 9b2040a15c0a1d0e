#include "holdings/lien_report.h"

#include <cstdio>

#include "kdl/tags.h"
#include "link/field_readers.h"

namespace vh {
namespace {

std::string Amount(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2lf", value);
  return text;
}

} // namespace

std::vector<sTarnColInfo> LienReportColumns() {
  const char* names[] = {"Client ID", "Segment", "Lien Amount", "PayIn Amount", "PayOut Amount"};
  std::vector<sTarnColInfo> out;
  for (int c = 0; c < 5; ++c) {
    sTarnColInfo info;
    info.SetName(names[c]);
    info.nType = c < 2 ? kCompareText : kCompareDecimal;
    info.nFormat = c < 2 ? kFormatLeft : kFormatRight;
    info.nWidth = 110;
    out.push_back(info);
  }
  return out;
}

std::string LienCellText(const sLienRow& row, int column) {
  switch (column) {
  case 0:
    return row.clientId;
  case 1:
    return row.segment;
  case 2:
    return Amount(row.lien);
  case 3:
    return Amount(row.payin);
  case 4:
    return Amount(row.payout);
  default:
    return {};
  }
}

CLinkRequest LienReportRequest(std::string_view userId, int segment) {
  if (segment < 0 || segment >= int(kLienSegments.size()))
    segment = kAllSegments;
  const std::string code = kLienSegments[size_t(segment)].code;
  CLinkRequest request{std::string(kClientReportsRequest)};
  request.Add(kTagSourceUserId, userId, "Add source user id Failure");
  if (segment != kAllSegments)
    request.Add(kTagReportSegment, code);
  request.Add(kTagSubKind, code)
      .OnFieldFailure(" Request Failure", Report::Status)
      .OnSendFailure(std::string(kClientReportsRequest) + " Request Failure",
                     Report::ShowAndStatus);
  return request;
}

sLienRow DecodeLienRow(const KdlMsg* msg) {
  sLienRow row;
  (void)ReadTextField(msg, kTagClientId, 0, &row.clientId, nullptr);
  (void)ReadTextField(msg, kTagSubKind, 0, &row.segment, nullptr);
  (void)ReadDoubleField(msg, kTagLienAmount, 0, &row.lien, nullptr);
  (void)ReadDoubleField(msg, kTagPayinAmount, 0, &row.payin, nullptr);
  (void)ReadDoubleField(msg, kTagPayoutAmount, 0, &row.payout, nullptr);
  return row;
}

} // namespace vh
