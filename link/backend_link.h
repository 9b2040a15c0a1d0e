// The plug-in's link to the back-end: one message handle and one 4096-byte
// scratch buffer reused for every request, the response receiver, and the
// host's back-end control. Made once by the view and kept for its life.
#pragma once

#include <cstdint>
#include <memory>

#include "kdl/kdl.h"
#include "link/alw_grp_req_rx.h"
#include "link/brio_rx.h"
#include "link/link_request.h"

class CLinkOwner;

// The host service that hands out the back-end control.
using GetBrioRxControlFn = TarnBackendControl* (*)(int zero, CBrioRxNotifierBase* receiver);

class CBackendLink {
public:
  static constexpr uint32_t kScratchSize = 4096;

  // Creates the link. Failures are shown and creation goes on, leaving the
  // part empty: "MnmHndl Open failed in Algo Plugin" (message handle),
  // "BufHndl Open failed in Algo Plugin" (scratch), "From ZUL Connection to
  // brio failed" (the host exports no GetBrioRxControl). The control is
  // looked up with vh::HostProc. `scratchSize` is 4096 in the plug-in;
  // tests pass others to provoke the failures.
  explicit CBackendLink(CLinkOwner* owner, uint32_t scratchSize = kScratchSize);
  // Releases the receiver (detached from the control first, so the host is
  // never left holding it), the control, the scratch and the handle.
  ~CBackendLink();
  CBackendLink(const CBackendLink&) = delete;
  CBackendLink& operator=(const CBackendLink&) = delete;

  // Builds `request` in the scratch buffer and sends it. Returns 1 when the
  // control accepted it; 0 after reporting the failure: " Request failure"
  // shown when the message cannot be started, the field's (or request's)
  // failure text when a field cannot be added (nothing is sent then), the
  // send failure text when the control refuses it or there is none. On
  // success the request's sent text becomes the status text.
  int Send(const vh::CLinkRequest& request);

  CAlwGrpReqRx* receiver() const { return receiver_.get(); }
  TarnBackendControl* control() const { return control_; }
  KdlMsg* message() const { return msg_; }
  // The sequence number the control gave the last accepted request.
  uint64_t lastSlot() const { return slot_; }

private:
  bool AddText(uint32_t tag, const std::string& text);

  KdlMsg* msg_ = nullptr;
  void* scratch_ = nullptr;
  std::unique_ptr<CAlwGrpReqRx> receiver_;
  TarnBackendControl* control_ = nullptr;
  uint64_t slot_ = 0;
};
