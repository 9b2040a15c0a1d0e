// What the exported host services answer from: one per host process.
#pragma once

#include "host/scrip_master.h"

class TarnBackendControl;

namespace host {

struct HostContext {
  ScripMaster master;
  UserInfo user;
  TarnBackendControl* control = nullptr; // handed out by GetBrioRxControl
};

HostContext& TheHost();

} // namespace host
