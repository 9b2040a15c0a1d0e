#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/message.h"
#include "link/alw_grp_req_rx.h"
#include "link/envelope.h"
#include "tests/link/answers.h"
#include "tests/link/recording_owner.h"

using namespace linktest;
using namespace vh;

namespace {

AnswerFields Record(const std::string& name, AnswerFields extra = {}) {
  AnswerFields f{{kTagAnsweredName, name}};
  f.insert(f.end(), extra.begin(), extra.end());
  return f;
}

AnswerFields End(const std::string& name, AnswerFields extra = {}) {
  AnswerFields f = Record(name, std::move(extra));
  f.push_back({kTagStatus, "3"});
  return f;
}

AnswerFields Tree(const char* subKind, bool end = false) {
  const AnswerFields sub{{kTagSubKind, subKind}};
  return end ? End("mrv_positions_scp_show_tree", sub) : Record("mrv_positions_scp_show_tree", sub);
}

AnswerFields Price(const char* subKind) {
  return Record(
      "mrv_master",
      {{kTagSubKind, subKind}, {6, "1234"}, {63100, "INFY-EQ"}, {32, "7"}, {63179, "99"}});
}

struct Case {
  const char* name;
  int clientIds;
  std::vector<AnswerFields> answers;
  std::vector<std::string> log;
  std::vector<std::string> shown = {};
  int nseLeft = 0, bseLeft = 0, topN = 0, lien = 0;
};

// Names the case in test listings instead of dumping its bytes.
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.name;
}

class Dispatch : public testing::TestWithParam<Case> {};

TEST_P(Dispatch, RoutesByNameStatusAndSubKind) {
  const Case& c = GetParam();
  ScopedMessageRecorder recorder;
  RecordingOwner owner;
  owner.clientIds = c.clientIds;
  RecordingHandler topN, lien;
  CAlwGrpReqRx rx(&owner);
  rx.SetTopNHandler(&topN);
  rx.SetLienHandler(&lien);
  for (const AnswerFields& a : c.answers) {
    kdl::Message m = Answer(a);
    rx.OnResponse(nullptr, m.get(), nullptr);
  }
  EXPECT_EQ(owner.log, c.log);
  EXPECT_EQ(recorder.messages(), c.shown);
  EXPECT_EQ(rx.nsePositions(), c.nseLeft);
  EXPECT_EQ(rx.bsePositions(), c.bseLeft);
  EXPECT_EQ(topN.records, c.topN);
  EXPECT_EQ(lien.records, c.lien);
}

const char* kFatal = "Fatal error.Please contact administrator.";

const Case kCases[] = {
    {"HoldingRecord", 0, {Record("display_holding_detail")}, {"holding"}},
    {"HoldingEndReachesTheOwner", 0, {End("display_holding_detail")}, {"holding end 3"}},
    {"HoldingStatusZeroIsFatal",
     0,
     {Record("display_holding_detail", {{kTagStatus, "0"}})},
     {"holding end 1"},
     {kFatal}},
    {"OtherLetterCaseIsIgnored", 0, {Record("Display_Holding_Detail")}, {}},
    {"UnknownNameIsIgnored", 0, {Record("display_holding_details")}, {}},
    {"NoAnsweredNameIsIgnored", 0, {{{kTagStatus, "0"}}}, {}},
    {"AnsweredNameWithoutValueIsIgnored", 0, {{{kTagAnsweredName, std::nullopt}}}, {}},
    {"NseTreeCompletesAtTheClientCount",
     2,
     {Tree("NSE"), Tree("NSE"), Tree("NSE", true)},
     {"position 0", "position 0", "nse lookup", "complete 0"}},
    {"NseTreeCompletesPastTheClientCount",
     1,
     {Tree("NSE"), Tree("NSE"), Tree("NSE", true)},
     {"position 0", "position 0", "nse lookup", "complete 0"}},
    {"NseTreeShortOfTheCountKeepsCounting",
     3,
     {Tree("NSE"), Tree("NSE", true)},
     {"position 0"},
     {},
     1},
    {"BseTreeCompletesAtExactlyTheCountWithoutLookup",
     2,
     {Tree("BSE"), Tree("BSE"), Tree("BSE", true)},
     {"position 1", "position 1", "complete 1"}},
    {"BseTreePastTheCountNeverCompletes",
     1,
     {Tree("BSE"), Tree("BSE"), Tree("BSE", true)},
     {"position 1", "position 1"},
     {},
     0,
     2},
    {"CountersAreSeparate",
     1,
     {Tree("BSE"), Tree("NSE"), Tree("NSE", true), Tree("BSE", true)},
     {"position 1", "position 0", "nse lookup", "complete 0", "complete 1"}},
    {"NseEndWithNoRecordsCompletesWhenThereAreNoClients",
     0,
     {Tree("NSE", true), Tree("BSE", true)},
     {"nse lookup", "complete 0", "complete 1"}},
    {"TreeOfAnotherSubKindIsIgnored", 0, {Tree("CSE"), Tree("CSE", true), Tree("nse")}, {}},
    {"TreeSubKindIsReadBeforeTheStatus",
     0,
     {Record("mrv_positions_scp_show_tree", {{kTagStatus, "0"}})},
     {}},
    {"AllPositions",
     0,
     {Record("mrv_positions_scp_show_tree_all"), End("mrv_positions_scp_show_tree_all")},
     {"all-positions", "all-positions end"}},
    {"PricesPerExchange",
     0,
     {Price("NSE_LTP"), Price("BSE_LTP"), Price("CSE_LTP"), End("mrv_master")},
     {"price 0 1234 INFY-EQ 7 99", "price 1 1234 INFY-EQ 7 99", "price 2 1234 INFY-EQ 7 99",
      "prices end"}},
    {"PriceOfAnotherSubKindIsIgnored", 0, {Price("NSE"), Price("nse_ltp")}, {}},
    {"PriceSubKindIsNotReadOnAnEnd",
     0,
     {End("mrv_master", {{kTagSubKind, "junk"}})},
     {"prices end"}},
    {"PriceWithUnreadableValues",
     0,
     {Record("mrv_master", {{kTagSubKind, "BSE_LTP"}, {6, "x"}, {32, std::nullopt}})},
     {"price 1 0  0 0"}},
    {"PresentValues",
     0,
     {Record("om_get_prsnt_values"), Record("om_get_prsnt_values"), End("om_get_prsnt_values")},
     {"present-values", "present-values", "present-values end"}},
    {"MrvCj", 0, {Record("mrv_cj"), End("mrv_cj")}, {"mrv_cj"}},
    {"TopTenGoesToItsDialog",
     0,
     {Record("rs_display_topten_holdings"), End("rs_display_topten_holdings")},
     {},
     {},
     0,
     0,
     1},
    {"LienReportsGoToTheirDialogAndEndWithAnEmptyStatus",
     0,
     {Record("om_get_client_reports"), Record("om_get_client_reports"),
      Record("om_get_client_reports", {{kTagStatus, std::nullopt}})},
     {},
     {"Lien Report Download Completed."},
     0,
     0,
     0,
     2},
    {"PeerValue",
     0,
     {Record("om_get_user_peer_data", {{kTagPeerValue, "P7"}}),
      Record("om_get_user_peer_data", {{kTagPeerValue, ""}})},
     {"peer P7", "peer "}},
    {"PeerValueMissingOrEnded",
     0,
     {Record("om_get_user_peer_data"), End("om_get_user_peer_data", {{kTagPeerValue, "P7"}})},
     {}},
};

INSTANTIATE_TEST_SUITE_P(Table, Dispatch, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& info) { return info.param.name; });

TEST(DispatchWithoutOwners, ChecksStatusButRoutesNothing) {
  ScopedMessageRecorder recorder;
  CAlwGrpReqRx rx;
  for (const AnswerFields& a : {Record("display_holding_detail"), Tree("NSE"), Tree("NSE", true),
                                Price("NSE_LTP"), Record("rs_display_topten_holdings"),
                                Record("om_get_client_reports", {{kTagStatus, std::nullopt}})}) {
    kdl::Message m = Answer(a);
    rx.OnResponse(nullptr, m.get(), nullptr);
  }
  rx.OnResponse(nullptr, nullptr, nullptr);
  EXPECT_EQ(recorder.messages(), std::vector<std::string>{"Lien Report Download Completed."});
}

} // namespace
