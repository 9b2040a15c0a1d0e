// The view's frame window. The holdings view replaces this with the full
// dialog (selection row, grids, tabs); until then the entry points open an
// empty modeless window so the host side can be exercised end to end.
#include "plugin/plugin_view.h"

#include <QDialog>
#include <QPointer>

namespace vh {
namespace {

class FrameView final : public PluginView {
public:
  bool HasWindow() const override { return !window_.isNull(); }

  bool Create(QWidget* parent) override {
    window_ = new QDialog(parent, Qt::Window);
    window_->setModal(false);
    window_->resize(900, 600);
    return true;
  }

  void SetTitle(const char* title) override {
    if (window_)
      window_->setWindowTitle(QString::fromUtf8(title));
  }

  void ResetSelection() override {}

  void ShowAndRaise() override {
    if (!window_)
      return;
    window_->showNormal();
    window_->raise();
    window_->activateWindow();
  }

  void SaveOnExit() override {}

  QWidget* Window() const override { return window_; }

private:
  QPointer<QDialog> window_;
};

} // namespace

std::unique_ptr<PluginView> CreateHoldingsView() {
  return std::make_unique<FrameView>();
}

} // namespace vh
