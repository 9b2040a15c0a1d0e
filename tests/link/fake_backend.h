// A back-end control that records what the link sends, and the host export
// that hands it out, for test executables that play host.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "link/brio_rx.h"

namespace linktest {

// One sent request, decoded field by field in wire order.
using Fields = std::vector<std::pair<uint32_t, std::vector<std::string>>>;

class FakeBackendControl : public TarnBackendControl {
public:
  int Attach(CBrioRxNotifierBase* receiver) override;
  void Detach(CBrioRxNotifierBase* receiver) override;
  int IsConnected() const override { return 1; }
  int Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) override;
  void Release() override { ++released; }

  bool failSends = false;
  std::vector<Fields> sent;
  std::vector<int> zeros; // the third argument of every send
  std::vector<CBrioRxNotifierBase*> attached;
  std::vector<CBrioRxNotifierBase*> detached;
  int released = 0;
};

// The control the exported GetBrioRxControl hands out (NULL: none), and the
// first arguments it was called with.
extern FakeBackendControl* g_control;
extern std::vector<int> g_getControlCalls;

} // namespace linktest
