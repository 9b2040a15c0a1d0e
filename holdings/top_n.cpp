#include "holdings/top_n.h"

#include <cstdio>

#include "kdl/tags.h"
#include "link/envelope.h"
#include "link/field_readers.h"

namespace vh {
namespace {

constexpr const char* kNoEntity = "NA";

std::string Hundredths(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%0.2lf", value);
  return text;
}

} // namespace

std::vector<sTarnColInfo> TopNColumns() {
  const struct {
    const char* name;
    int32_t type;
    int32_t format;
  } columns[] = {
      {"Entity ID", kCompareText, kFormatLeft},
      {"Exhg-Seg", kCompareText, kFormatLeft},
      {"Trading Symbol", kCompareText, kFormatLeft},
      {"Holdings Value", kCompareDecimal, kFormatRight},
  };
  std::vector<sTarnColInfo> out;
  for (const auto& c : columns) {
    sTarnColInfo info;
    info.SetName(c.name);
    info.nType = c.type;
    info.nFormat = c.format;
    info.nWidth = 120;
    out.push_back(info);
  }
  return out;
}

const std::string& TopNCellText(const sTopNRow& row, int column) {
  static const std::string kNone;
  switch (column) {
  case 0:
    return row.entityId;
  case 1:
    return row.exchangeSegment;
  case 2:
    return row.tradingSymbol;
  case 3:
    return row.holdingsValue;
  default:
    return kNone;
  }
}

CLinkRequest TopNRequest(bool nse, TopNMethod method) {
  CLinkRequest request{std::string(kTopTenRequest)};
  request.Add(kTagExchange, nse ? "NSE" : "BSE")
      .Add(kTagTopMethod, std::to_string(static_cast<int>(method)))
      .OnFieldFailure(" Request Failure", Report::Status)
      .OnSendFailure(std::string(kTopTenRequest) + " Request Failure", Report::ShowAndStatus);
  return request;
}

std::vector<sTopNRow> DecodeTopNAnswer(const KdlMsg* msg, const EntityLookup& known) {
  uint32_t rows = 0;
  if (!kdl_get_field(msg, kTagTopSymbol, &rows, nullptr) || rows == 0)
    return {};
  std::string first;
  if (!ReadTextField(msg, kTagClientId, 0, &first, nullptr) || (known && !known(first)))
    return {};
  std::string segment;
  (void)ReadTextField(msg, kTagExchange, 0, &segment, nullptr);
  std::vector<sTopNRow> out(rows);
  for (uint32_t i = 0; i < rows; ++i) {
    sTopNRow& row = out[i];
    row.exchangeSegment = segment;
    double value = 0;
    (void)ReadDoubleField(msg, kTagValue, i, &value, nullptr);
    if (ReadTextField(msg, kTagClientId, i, &row.entityId, nullptr)) {
      row.holdingsValue = Hundredths(value / 100);
    } else {
      row.entityId = kNoEntity;
      row.holdingsValue = Hundredths(value * 100);
    }
    (void)ReadTextField(msg, kTagTopSymbol, i, &row.tradingSymbol, nullptr);
  }
  return out;
}

} // namespace vh
