#include "plugin/module_state.h"

#include "plugin/plugin_view.h"

namespace vh {

ModuleState& Module() {
  static ModuleState state;
  return state;
}

std::string HostDirectoryOf(const std::string& executablePath) {
#if defined(_WIN32)
  const auto cut = executablePath.find_last_of("\\/");
#else
  const auto cut = executablePath.find_last_of('/');
#endif
  return cut == std::string::npos ? std::string() : executablePath.substr(0, cut);
}

} // namespace vh
