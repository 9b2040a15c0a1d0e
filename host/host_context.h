// What the exported host services answer from: one per host process.
#pragma once

#include <string>

#include "host/scrip_master.h"

class TarnBackendControl;

namespace host {

struct HostContext {
  ScripMaster master;
  UserInfo user;
  TarnBackendControl* control = nullptr; // handed out by GetBrioRxControl
  std::string settingsDirectory;         // pu_get_settings_directory
};

HostContext& TheHost();

} // namespace host
