#include "link/backend_link.h"

#include <cstring>

#include "common/host_proc.h"
#include "common/message.h"
#include "link/envelope.h"

using vh::CLinkRequest;
using vh::OutcomeText;
using vh::Report;

CBackendLink::CBackendLink(CLinkOwner* owner, uint32_t scratchSize) {
  KdlError err{};
  if (!kdl_ctor_primecb(&msg_, &err))
    vh::ShowMessage("MnmHndl Open failed in Algo Plugin");
  if (!kdl_open_scratch(&scratch_, scratchSize, &err))
    vh::ShowMessage("BufHndl Open failed in Algo Plugin");
  receiver_ = std::make_unique<CAlwGrpReqRx>(owner);
  const auto getControl = vh::HostProcAs<GetBrioRxControlFn>("GetBrioRxControl");
  if (getControl)
    control_ = getControl(0, receiver_.get());
  else
    vh::ShowMessage("From ZUL Connection to brio failed");
}

CBackendLink::~CBackendLink() {
  if (control_) {
    control_->Detach(receiver_.get());
    receiver_.reset();
    control_->Release();
  }
  KdlError err{};
  if (scratch_)
    kdl_close_scratch(&scratch_, &err);
  if (msg_)
    kdl_dtor_primecb(&msg_, &err);
}

bool CBackendLink::AddText(uint32_t tag, const std::string& text) {
  const KdlValue value{text.data(), static_cast<uint32_t>(text.size())};
  KdlError err{};
  return text.size() <= UINT32_MAX && kdl_add_data(msg_, tag, 1, &value, &err);
}

int CBackendLink::Send(const CLinkRequest& request) {
  if (scratch_)
    std::memset(scratch_, 0, sizeof(uint32_t));
  KdlError err{};
  if (!kdl_start_msg(msg_, scratch_, &err)) {
    vh::ShowMessage(" Request failure");
    return 0;
  }
  if (!AddText(vh::kTagRequestName, request.name())) {
    ReportOutcome(request.fieldFailure());
    return 0;
  }
  for (const CLinkRequest::Field& field : request.fields()) {
    if (!AddText(field.tag, field.text)) {
      if (field.failureText.empty())
        ReportOutcome(request.fieldFailure());
      else
        ReportOutcome(OutcomeText{field.failureText, request.fieldFailure().report});
      return 0;
    }
  }
  uint64_t slot = 0;
  if (!control_ || !control_->Send(&slot, msg_, 0, &err)) {
    ReportOutcome(request.sendFailure());
    return 0;
  }
  slot_ = slot;
  vh::SetStatusText(request.sentText());
  return 1;
}
