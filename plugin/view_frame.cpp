// The view's frame window. The holdings view replaces this with the full
// dialog (selection row, grids, tabs); until then the entry points open a
// modeless window that already makes the view's back-end link and asks for
// the user's peer value, so host, back-end and plug-in meet for real.
#include "plugin/plugin_view.h"

#include <QDialog>
#include <QPointer>

#include "link/backend_link.h"
#include "link/link_owner.h"
#include "plugin/module_state.h"

namespace vh {
namespace {

// Takes what the frame can use of the answers: the peer value. Every other
// answer waits for the holdings view.
class PeerValueOwner final : public CLinkOwner {
public:
  void OnHoldingRecord(KdlMsg*) override {}
  void OnPositionRecord(int, KdlMsg*) override {}
  void OnAllPositionsRecord(KdlMsg*) override {}
  void OnAllPositionsEnd() override {}
  void OnPriceRecord(int, int32_t, const std::string&, int32_t, int32_t) override {}
  void OnPricesEnd() override {}
  void OnPresentValuesRecord(KdlMsg*) override {}
  void OnPresentValuesEnd() override {}
  void OnMrvCjRecord(KdlMsg*) override {}
  void OnUserPeerValue(const std::string& peer) override { peer_ = peer; }
  int ClientIdCount() const override { return 0; }
  void LookupNseTradingSymbol() override {}
  void OnPositionsComplete(int) override {}

  const std::string& peer() const { return peer_; }

private:
  std::string peer_;
};

class FrameView final : public PluginView {
public:
  // The window goes with the module: once the library is unloaded nothing
  // could run its code any more.
  ~FrameView() override { delete window_.data(); }

  bool HasWindow() const override { return !window_.isNull(); }

  bool Create(QWidget* parent) override {
    window_ = new QDialog(parent, Qt::Window);
    window_->setModal(false);
    window_->resize(900, 600);
    if (!link_)
      link_ = std::make_unique<CBackendLink>(&owner_);
    // Users of types 0 to 2 send their peer value with every holdings query.
    if (Module().userType <= 2)
      link_->Send(UserPeerRequest(Module().userId));
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
  PeerValueOwner owner_;
  std::unique_ptr<CBackendLink> link_;
};

} // namespace

std::unique_ptr<PluginView> CreateHoldingsView() {
  return std::make_unique<FrameView>();
}

} // namespace vh
