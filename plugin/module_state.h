// State the plug-in keeps for as long as it is loaded. Filled by the first
// InitTarnPlugin that passes the compatibility test; later calls do not look
// at their arguments again.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "plugin/header_images.h"

struct TarnHostContext;

namespace vh {

class PluginView;

struct ModuleState {
  void* hostModule = nullptr; // the main executable's handle
  std::string hostDirectory;  // executable path up to its last separator
  std::string userId;         // requesting user of every request
  uint32_t userType = 0;      // 0, 1 and 2 are treated specially by the view
  TarnHostContext* hostContext = nullptr;
  bool cseMode = false;                          // cleared by each compatible Init; nothing sets it
  std::unique_ptr<HeaderImageList> headerImages; // replaced by every Init
  std::unique_ptr<PluginView> view; // constructed at load, window created on first Init
};

// The one instance, constructed on first use (the module's load).
ModuleState& Module();

} // namespace vh
