// The module's view: one CViewHold window, made by the first compatible
// InitTarnPlugin and kept until the module goes.
#include "plugin/plugin_view.h"

#include <QPointer>

#include "holdings/view/view_hold.h"
#include "plugin/module_state.h"

namespace vh {
namespace {

class HoldingsView final : public PluginView {
public:
  // The window goes with the module: once the library is unloaded nothing
  // could run its code any more.
  ~HoldingsView() override { delete window_.data(); }

  bool HasWindow() const override { return !window_.isNull(); }

  bool Create(QWidget* parent) override {
    window_ = new CViewHold(parent);
    window_->Initialise(Module().userId, Module().userType);
    return true;
  }

  void SetTitle(const char* title) override {
    if (window_)
      window_->setWindowTitle(QString::fromUtf8(title));
  }

  void ResetSelection() override {
    if (window_)
      window_->ResetSelection();
  }

  void ShowAndRaise() override {
    if (!window_)
      return;
    window_->showNormal();
    window_->raise();
    window_->activateWindow();
  }

  void SaveOnExit() override {
    if (window_)
      window_->SaveOnExit();
  }

  QWidget* Window() const override { return window_; }

private:
  QPointer<CViewHold> window_;
};

} // namespace

std::unique_ptr<PluginView> CreateHoldingsView() {
  return std::make_unique<HoldingsView>();
}

} // namespace vh
