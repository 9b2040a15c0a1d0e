#include "plugin/module_state.h"

#include "plugin/plugin_view.h"

namespace vh {

ModuleState& Module() {
  static ModuleState state;
  return state;
}

} // namespace vh
