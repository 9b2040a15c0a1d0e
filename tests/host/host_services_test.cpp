// The scrip details service, called by name through HostProc exactly as the
// plug-in calls it, against a small scrip master. The scrip combos and the
// action rights are the view's own end-to-end tests'.
#include <gtest/gtest.h>

#include "common/host_proc.h"
#include "host/host_context.h"
#include "plugin/tarn_host_api.h"

namespace {

using host::ScripLeg;

TEST(HostServices, ScripDetailsByEveryKindOfName) {
  auto& h = host::TheHost();
  h.master.Clear();
  // Segment, symbol, series, trading symbol, token, ISIN, BSE code.
  const char* const legs[][7] = {
      {"NSE", "ACME", "EQ", "ACME-EQ", "11", "INE000A01011", "500001"},
      {"NSE", "ACME", "BE", "ACME-BE", "12", "", ""},
      {"BSE", "500001", "A", "ACME", "500001", "INE000A01011", ""},
      {"BSE", "500009", "B", "ZED", "500009", "", ""},
  };
  for (const auto& fields : legs) {
    ScripLeg leg;
    int i = 0;
    for (auto f : {ScripLeg::Segment, ScripLeg::Symbol, ScripLeg::Series, ScripLeg::TradingSymbol,
                   ScripLeg::Token, ScripLeg::Isin, ScripLeg::BseCode})
      leg.field[f] = fields[i++];
    h.master.Add(leg);
  }
  h.master.Finish();
  auto details = vh::HostProcAs<pu_get_scrip_details_fn>("pu_get_scrip_details");
  const struct {
    const char* name;
    const char* segment;
    const char* symbol;
    const char* token; // "" when unknown
  } cases[] = {
      {"nseTradingSymbol", "NSE", "ACME-BE", "12"}, {"nseBareSymbolPrefersEq", "NSE", "ACME", "11"},
      {"bseCode", "BSE", "500009", "500009"},       {"bseSymbol", "BSE", "ZED", "500009"},
      {"unknownSymbol", "NSE", "NOPE", ""},         {"wrongSegment", "BSE", "ACME-EQ", ""},
  };
  for (const auto& c : cases) {
    TarnScripDetails d;
    d.field[TarnScripDetails::Token] = "stale";
    details(c.segment, c.symbol, &d);
    EXPECT_EQ(d.field[TarnScripDetails::Token], c.token) << c.name;
  }
  TarnScripDetails acme;
  details("NSE", "ACME-EQ", &acme);
  EXPECT_EQ(acme.field[TarnScripDetails::Isin], "INE000A01011");
  EXPECT_EQ(acme.field[TarnScripDetails::BseCode], "500001");
}

} // namespace
