// Random answer records delivered to a real holdings view (Qt offscreen):
// the receiver's dispatch, the view's record handling, the grid's inserts,
// filters, sorts and cell texts. The input is a little program: each step
// is a record (an answered name, a status, a sub-kind and fields drawn from
// the tags the view reads) or a user action (a new request, a sort, a
// filter). After it the answer is ended and every shown row is read: each
// must belong to a client the view offers, and with no filter set every
// accepted record is shown exactly once.
#include <QApplication>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holding_request.h"
#include "holdings/holdings_columns.h"
#include "holdings/view/view_hold.h"
#include "host/host_context.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "link/brio_rx.h"
#include "settings/settings_paths.h"

namespace {

const char* const kClients[] = {"C1", "C2", "C3"};

const char* const kNames[] = {"display_holding_detail",
                              "mrv_positions_scp_show_tree",
                              "mrv_positions_scp_show_tree_all",
                              "mrv_master",
                              "om_get_prsnt_values",
                              "mrv_cj",
                              "rs_display_topten_holdings",
                              "om_get_client_reports",
                              "om_get_user_peer_data",
                              "Display_Holding_Detail",
                              ""};
const char* const kSubKinds[] = {"NSE", "BSE", "CSE", "NSE_LTP", "BSE_LTP", "CSE_LTP", ""};
const char* const kStatuses[] = {"1", "0", "12", "", "-5", "99999999999"};
const char* const kNumbers[] = {"0",     "-1",  "7",    "2147483648", "99999999999999999999",
                                "1e308", "nan", "-0.5", " 12",        "12abc"};

const uint32_t kTags[] = {vh::kTagClientId,
                          vh::kTagSegment,
                          vh::kTagTradingSymbol,
                          vh::kTagScripCode,
                          vh::kTagBseCode,
                          vh::kTagProduct,
                          vh::kTagHoldingsQty,
                          vh::kTagHoldingsUpdateQty,
                          vh::kTagUsedQty,
                          vh::kTagCollateralQty,
                          vh::kTagCollateralUpdateQty,
                          vh::kTagWithheldHoldingQty,
                          vh::kTagWithheldCollateralQty,
                          vh::kTagT1Qty,
                          vh::kTagT1CollateralQty,
                          vh::kTagHaircut,
                          vh::kTagCollateralType,
                          vh::kTagClosePrice,
                          vh::kTagLastPrice,
                          vh::kTagTickClose,
                          vh::kTagPriceTime,
                          vh::kTagIsin,
                          vh::kTagValue,
                          vh::kTagPeerValue,
                          vh::kTagTopSymbol,
                          vh::kTagReportSegment,
                          vh::kTagLienAmount,
                          vh::kTagPayinAmount,
                          vh::kTagPayoutAmount};

void Check(bool ok) {
  if (!ok)
    std::abort();
}

// Accepts every request and hands answers to whoever attached, as the host
// does, but from the fuzzer instead of a socket.
class Control final : public TarnBackendControl {
public:
  int Attach(CBrioRxNotifierBase* r) override {
    receivers.push_back(r);
    return 1;
  }
  void Detach(CBrioRxNotifierBase* r) override { std::erase(receivers, r); }
  int IsConnected() const override { return 1; }
  int Send(uint64_t* slot, KdlMsg*, int, KdlError*) override {
    if (slot)
      *slot = ++sent;
    return 1;
  }
  void Release() override {}
  void Deliver(const kdl::Message& msg) {
    const std::vector<CBrioRxNotifierBase*> to = receivers;
    for (CBrioRxNotifierBase* r : to)
      r->OnResponse(nullptr, msg.get(), nullptr);
  }
  std::vector<CBrioRxNotifierBase*> receivers;
  uint64_t sent = 0;
};

class Input {
public:
  Input(const uint8_t* data, size_t size) : p_(data), end_(data + size) {}
  bool more() const { return p_ < end_; }
  uint8_t Byte() { return p_ < end_ ? *p_++ : 0; }
  template <size_t N> const char* Pick(const char* const (&table)[N]) { return table[Byte() % N]; }
  std::string Bytes(size_t most) {
    const size_t n = std::min<size_t>(Byte() % (most + 1), size_t(end_ - p_));
    std::string text(reinterpret_cast<const char*>(p_), n);
    p_ += n;
    return text;
  }
  std::string Value() {
    switch (Byte() % 5) {
    case 0:
      return Pick(kClients);
    case 1:
      return Pick(kNumbers);
    case 2: {
      const size_t length = 300 + Byte();
      return std::string(length, char('0' + Byte() % 10));
    }
    default:
      return Bytes(40);
    }
  }

private:
  const uint8_t* p_;
  const uint8_t* end_;
};

struct World {
  QTemporaryDir settings;
  std::unique_ptr<vh::ScopedSettingsPaths> paths;
  Control control;
  std::unique_ptr<vh::CViewHold> view;
};

World& TheWorld() {
  static World* w = [] {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "view_dispatch_fuzz";
    static char* argv[] = {name, nullptr};
    new QApplication(argc, argv);
    auto* world = new World;
    const std::string dir = world->settings.path().toStdString();
    world->paths = std::make_unique<vh::ScopedSettingsPaths>(vh::SettingsPaths{dir, dir});
    vh::SetMessageSink([](std::string_view) {}); // message boxes would wait for a click
    host::HostContext& h = host::TheHost();
    h.control = &world->control;
    h.user.clientIds.assign(std::begin(kClients), std::end(kClients));
    world->view = std::make_unique<vh::CViewHold>();
    world->view->Initialise("RMS1", 0);
    return world;
  }();
  return *w;
}

kdl::Message Record(Input& in) {
  kdl::Message msg;
  msg.Add(vh::kTagAnsweredName, in.Byte() % 16 == 0 ? in.Bytes(24) : in.Pick(kNames));
  const uint8_t status = in.Byte() % 8;
  if (status < std::size(kStatuses))
    msg.Add(vh::kTagStatus, kStatuses[status]);
  else if (status == 6)
    msg.AddEmpty(vh::kTagStatus); // present, but no value to read
  if (in.Byte() % 2)
    msg.Add(vh::kTagSubKind, in.Pick(kSubKinds));
  for (int fields = in.Byte() % 24; fields > 0 && in.more(); --fields) {
    const uint32_t tag =
        in.Byte() % 8 == 0 ? in.Byte() * 257u : kTags[in.Byte() % std::size(kTags)];
    msg.Add(tag, in.Value());
  }
  return msg;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  World& w = TheWorld();
  vh::CViewHold& view = *w.view;
  vh::CFilterListCtrl& grid = *view.HoldingsGrid();
  vh::RowEngine& engine = grid.Engine();
  engine.ResetFilters();
  view.Core().ClearAnswer();
  bool filtered = false;
  Input in(data, size);
  for (int steps = 0; in.more() && steps < 256; ++steps) {
    switch (in.Byte() % 8) {
    case 0: {
      vh::HoldSelection sel;
      sel.clientMode = true;
      sel.clientId = in.Pick(kClients);
      sel.userId = "RMS1";
      (void)view.Core().ViewHoldPos(sel);
      break;
    }
    case 1:
      engine.SortOnColumn(in.Byte() % (vh::kHoldingsColumnCount + 2));
      break;
    case 2:
      engine.SetFilter(in.Byte() % vh::kHoldingsColumnCount, in.Bytes(6), in.Byte() % 2);
      filtered = true;
      break;
    default:
      w.control.Deliver(Record(in));
    }
  }
  // End every answer still owed, so the grid shows all it took.
  for (int owed = view.Core().outstandingAnswers(); owed >= 0; --owed) {
    kdl::Message end;
    end.Add(vh::kTagAnsweredName, vh::kHoldingRequestName);
    end.Add(vh::kTagStatus, "1");
    w.control.Deliver(end);
  }
  const int shown = grid.DisplayedRowCount();
  Check(filtered ? size_t(shown) <= view.Core().acceptedRecords()
                 : size_t(shown) == view.Core().acceptedRecords());
  for (int r = 0; r < shown; ++r) {
    const std::string client = grid.GetCellBytes(r, 0);
    Check(client == "C1" || client == "C2" || client == "C3");
    for (int c = 1; c < vh::kHoldingsColumnCount; ++c)
      (void)grid.GetCellBytes(r, c);
  }
  return 0;
}
