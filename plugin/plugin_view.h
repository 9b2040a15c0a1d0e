// What the module's entry points need of the holdings view. The view object
// exists from load to unload; its window is created by the first compatible
// InitTarnPlugin and never destroyed before the module goes.
#pragma once

#include <memory>

class QWidget;
struct TarnHostContext;

namespace vh {

class PluginView {
public:
  virtual ~PluginView() = default;

  // True once Create has made the window.
  virtual bool HasWindow() const = 0;
  // Creates the modeless window as a child of `parent` and runs its
  // initialisation (link, combos, grids, restored settings). False when the
  // window could not be made; the entry point then leaves it absent.
  virtual bool Create(QWidget* parent) = 0;
  virtual void SetTitle(const char* title) = 0;
  // Back to the opening selection; called on every open.
  virtual void ResetSelection() = 0;
  // Normal show, then to the top of the Z order.
  virtual void ShowAndRaise() = 0;
  // Everything the view saves when the host unloads the plug-in, in order:
  // title, alert rules, then the placements of the view and its dialogs.
  virtual void SaveOnExit() = 0;
  // The window, or nullptr before Create.
  virtual QWidget* Window() const = 0;
};

// The module's single view object (constructed at load).
std::unique_ptr<PluginView> CreateHoldingsView();

} // namespace vh
