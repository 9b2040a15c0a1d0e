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

// Feeds `answers` to a receiver with an owner and both dialogs, and returns
// the owner's calls in order, then what the dialogs received, the counters
// left over and the messages shown.
std::vector<std::string> Route(int clientIds, const std::vector<AnswerFields>& answers) {
  ScopedMessageRecorder recorder;
  RecordingOwner owner;
  owner.clientIds = clientIds;
  RecordingHandler topN, lien;
  CAlwGrpReqRx rx(&owner);
  rx.SetTopNHandler(&topN);
  rx.SetLienHandler(&lien);
  for (const AnswerFields& a : answers) {
    kdl::Message m = Answer(a);
    rx.OnResponse(nullptr, m.get(), nullptr);
  }
  std::vector<std::string> log = owner.log;
  if (topN.records + lien.records > 0)
    log.push_back("dialogs " + std::to_string(topN.records) + " " + std::to_string(lien.records));
  if (rx.nsePositions() + rx.bsePositions() > 0)
    log.push_back("left " + std::to_string(rx.nsePositions()) + " " +
                  std::to_string(rx.bsePositions()));
  for (const std::string& shown : recorder.messages())
    log.push_back("shown " + shown);
  return log;
}

using Log = std::vector<std::string>;

TEST(Dispatch, EveryNameReachesItsHandler) {
  EXPECT_EQ(Route(0, {Record("display_holding_detail"), End("display_holding_detail"),
                      Record("mrv_positions_scp_show_tree_all"),
                      End("mrv_positions_scp_show_tree_all"), Record("om_get_prsnt_values"),
                      End("om_get_prsnt_values"), Record("mrv_cj"), End("mrv_cj"),
                      Record("rs_display_topten_holdings"), End("rs_display_topten_holdings"),
                      Record("om_get_client_reports"), Record("om_get_client_reports"),
                      Record("om_get_client_reports", {{kTagStatus, std::nullopt}})}),
            (Log{"holding", "holding end 3", "all-positions", "all-positions end", "present-values",
                 "present-values end", "mrv_cj", "dialogs 1 2",
                 "shown Lien Report Download Completed."}));
  EXPECT_EQ(Route(0, {Record("display_holding_detail", {{kTagStatus, "0"}})}),
            (Log{"holding end 1", "shown Fatal error.Please contact administrator."}));
  EXPECT_EQ(Route(0, {Record("Display_Holding_Detail"),
                      Record("display_holding_details"),
                      {{kTagStatus, "0"}},
                      {{kTagAnsweredName, std::nullopt}}}),
            Log{})
      << "other names, and answers without one, are ignored";
}

// NSE completes at or past the client count, with a symbol lookup; BSE only
// at exactly the count, without one.
TEST(Dispatch, PositionTreesCountTowardsTheClientCount) {
  const Log nseDone = {"position 0", "position 0", "nse lookup", "complete 0"};
  EXPECT_EQ(Route(2, {Tree("NSE"), Tree("NSE"), Tree("NSE", true)}), nseDone);
  EXPECT_EQ(Route(1, {Tree("NSE"), Tree("NSE"), Tree("NSE", true)}), nseDone);
  EXPECT_EQ(Route(3, {Tree("NSE"), Tree("NSE", true)}), (Log{"position 0", "left 1 0"}));
  EXPECT_EQ(Route(2, {Tree("BSE"), Tree("BSE"), Tree("BSE", true)}),
            (Log{"position 1", "position 1", "complete 1"}));
  EXPECT_EQ(Route(1, {Tree("BSE"), Tree("BSE"), Tree("BSE", true)}),
            (Log{"position 1", "position 1", "left 0 2"}));
  EXPECT_EQ(Route(1, {Tree("BSE"), Tree("NSE"), Tree("NSE", true), Tree("BSE", true)}),
            (Log{"position 1", "position 0", "nse lookup", "complete 0", "complete 1"}))
      << "separate counters";
  EXPECT_EQ(Route(0, {Tree("NSE", true), Tree("BSE", true)}),
            (Log{"nse lookup", "complete 0", "complete 1"}))
      << "no clients: an end alone completes";
  EXPECT_EQ(Route(0, {Tree("CSE"), Tree("CSE", true), Tree("nse"),
                      Record("mrv_positions_scp_show_tree", {{kTagStatus, "0"}})}),
            Log{})
      << "the sub-kind is read first, and only NSE or BSE count";
}

TEST(Dispatch, PricesAndPeerValues) {
  EXPECT_EQ(Route(0, {Price("NSE_LTP"), Price("BSE_LTP"), Price("CSE_LTP"), Price("NSE"),
                      Price("nse_ltp"), End("mrv_master", {{kTagSubKind, "junk"}})}),
            (Log{"price 0 1234 INFY-EQ 7 99", "price 1 1234 INFY-EQ 7 99",
                 "price 2 1234 INFY-EQ 7 99", "prices end"}))
      << "the sub-kind is read on records only";
  EXPECT_EQ(
      Route(0, {Record("mrv_master", {{kTagSubKind, "BSE_LTP"}, {6, "x"}, {32, std::nullopt}})}),
      Log{"price 1 0  0 0"})
      << "unreadable values";
  EXPECT_EQ(Route(0, {Record("om_get_user_peer_data", {{kTagPeerValue, "P7"}}),
                      Record("om_get_user_peer_data", {{kTagPeerValue, ""}}),
                      Record("om_get_user_peer_data"),
                      End("om_get_user_peer_data", {{kTagPeerValue, "P8"}})}),
            (Log{"peer P7", "peer "}))
      << "only a record that has the value";
}

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
