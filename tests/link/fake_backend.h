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

// Fails the test when the link passes anything but 0 where the host's
// interface wants 0 (the send's third argument, GetBrioRxControl's first).
class FakeBackendControl : public TarnBackendControl {
public:
  int Attach(CBrioRxNotifierBase* receiver) override {
    attached = receiver;
    return 1;
  }
  void Detach(CBrioRxNotifierBase* receiver) override { detached = receiver; }
  int IsConnected() const override { return 1; }
  int Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) override;
  void Release() override { ++released; }

  bool failSends = false;
  std::vector<Fields> sent;
  CBrioRxNotifierBase* attached = nullptr;
  CBrioRxNotifierBase* detached = nullptr;
  int released = 0;
};

// The control the exported GetBrioRxControl hands out (NULL: none).
extern FakeBackendControl* g_control;

} // namespace linktest
