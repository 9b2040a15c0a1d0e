// Answers no back-end sends (position trees, all positions, price ends), the
// status outcomes and the answers that must be ignored. Holdings, prices,
// present values, mrv_cj and the two dialogs' records reach the real view
// and dialogs in the holdings tests.
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

using Log = std::vector<std::string>;

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

// Each row feeds its answers to a fresh receiver; the log is the owner's
// calls in order, then the position counters left over and the messages shown.
TEST(Dispatch, AnswersReachTheOwnerByNameAndStatus) {
  const std::string fatal = "shown Fatal error.Please contact administrator.";
  const AnswerFields price = {
      {kTagSubKind, "CSE_LTP"}, {6, "1234"}, {63100, "INFY-EQ"}, {32, "7"}, {63179, "99"}};
  const struct {
    const char* name;
    int clientIds; // -1: a receiver without an owner
    std::vector<AnswerFields> answers;
    Log expected;
  } cases[] = {
      // clang-format off
      // NSE completes at or past the client count, with a symbol lookup; BSE
      // only at exactly the count, without one.
      {"nsePastTheCount", 1, {Tree("NSE"), Tree("NSE"), Tree("NSE", true)},
       {"position 0", "position 0", "nse lookup", "complete 0"}},
      {"nseShortOfTheCount", 3, {Tree("NSE"), Tree("NSE", true)}, {"position 0", "left 1 0"}},
      {"bseAtTheCount", 2, {Tree("BSE"), Tree("BSE"), Tree("BSE", true)},
       {"position 1", "position 1", "complete 1"}},
      {"bsePastTheCount", 1, {Tree("BSE"), Tree("BSE"), Tree("BSE", true)},
       {"position 1", "position 1", "left 0 2"}},
      // The sub-kind is read before the status: no fatal message here.
      {"otherSubKindsDoNotCount", 0, {Tree("CSE"), Tree("CSE", true), Tree("nse"),
       Record("mrv_positions_scp_show_tree", {{kTagStatus, "0"}})}, {}},
      {"allPositions", 0, {Record("mrv_positions_scp_show_tree_all"),
       End("mrv_positions_scp_show_tree_all")}, {"all-positions", "all-positions end"}},
      // The price sub-kind is read on records only.
      {"prices", 0, {Record("mrv_master", price), Record("mrv_master", {{kTagSubKind, "nse_ltp"}}),
       End("mrv_master", {{kTagSubKind, "junk"}})}, {"price 2 1234 INFY-EQ 7 99", "prices end"}},
      {"peerOnlyFromARecordWithTheValue", 0, {Record("om_get_user_peer_data", {{kTagPeerValue, ""}}),
       Record("om_get_user_peer_data"), End("om_get_user_peer_data", {{kTagPeerValue, "P8"}})},
       {"peer "}},
      // No status is a record; a status ends the stream with its code, 0 with
      // the fatal message, a status without a value with none.
      {"statuses", 0, {End("display_holding_detail"),
       Record("display_holding_detail", {{kTagStatus, "0"}}),
       Record("display_holding_detail", {{kTagStatus, std::nullopt}})},
       {"holding end 3", "holding end 1", "holding end 1", fatal}},
      {"otherNamesAndNoName", 0, {Record("Display_Holding_Detail"),
       Record("display_holding_details"), {{kTagStatus, "0"}}, {{kTagAnsweredName, std::nullopt}}},
       {}},
      {"noOwnerChecksTheStatusOnly", -1, {Record("display_holding_detail"), Tree("NSE"),
       Tree("NSE", true), Record("mrv_master", price), Record("mrv_positions_scp_show_tree_all"),
       Record("om_get_prsnt_values"), Record("mrv_cj", {{kTagStatus, "0"}})}, {"left 1 0", fatal}},
      // clang-format on
  };
  for (const auto& c : cases) {
    ScopedMessageRecorder recorder;
    RecordingOwner owner;
    owner.clientIds = c.clientIds;
    CAlwGrpReqRx rx(c.clientIds < 0 ? nullptr : &owner);
    for (const AnswerFields& a : c.answers) {
      kdl::Message m = Answer(a);
      rx.OnResponse(nullptr, m.get(), nullptr);
    }
    rx.OnResponse(nullptr, nullptr, nullptr);
    Log log = owner.log;
    if (rx.nsePositions() + rx.bsePositions() > 0)
      log.push_back("left " + std::to_string(rx.nsePositions()) + " " +
                    std::to_string(rx.bsePositions()));
    for (const std::string& shown : recorder.messages())
      log.push_back("shown " + shown);
    EXPECT_EQ(log, c.expected) << c.name;
  }
}

} // namespace
