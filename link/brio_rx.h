// The two sides of the back-end connection that the host and the plug-in
// share: the plug-in's response receiver and the host's back-end control.
// Qt-free, so the link and its tests need no Qt.
#pragma once

#include <cstdint>

#include "kdl/kdl.h"

// Base of response receivers. The host calls OnResponse on the user-interface
// thread for every message the back-end delivers.
class CBrioRxNotifierBase {
public:
  virtual void OnNotify() = 0; // unused by the plug-in
  virtual void OnResponse(void* hostArg, KdlMsg* msg, void* hostArg2) = 0;

protected:
  ~CBrioRxNotifierBase() = default;
};

// The host's back-end control, handed out by GetBrioRxControl(0, receiver).
// The send is the fifth virtual operation in declaration order.
class TarnBackendControl {
public:
  virtual ~TarnBackendControl() = default;                // 1
  virtual int Attach(CBrioRxNotifierBase* receiver) = 0;  // 2
  virtual void Detach(CBrioRxNotifierBase* receiver) = 0; // 3
  virtual int IsConnected() const = 0;                    // 4
  // Queues `msg` (its serialised bytes are copied) for sending. Returns
  // nonzero when accepted; 0 with err filled when it cannot be sent (no
  // connection, a message that cannot be serialised). `outSlot`, when not
  // NULL, receives the request's number: the connection it went out on in
  // the upper 32 bits (a new one after every reconnection, so a plug-in can
  // tell that answers owed on the old one will never come), a sequence
  // number in the lower; `zero` is always 0.
  virtual int Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) = 0; // 5
  // Gives the control back to the host; the pointer is not used afterwards.
  virtual void Release() = 0; // 6
};
