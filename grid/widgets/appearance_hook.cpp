#include "grid/widgets/appearance_hook.h"

#include "grid/widgets/common_list_ctrl.h"
#include "widgets/customized_appearance.h"

#include <QPointer>

namespace vh {
namespace {

class AppearanceHook final : public GridDialog {
public:
  AppearanceHook() : dialog_(new CCustomizedAppearance) {
    QObject::connect(dialog_, &CCustomizedAppearance::Applied, dialog_,
                     [this](const sListAppearance& appearance) {
                       if (grid_)
                         grid_->ApplyAppearance(appearance, true);
                     });
  }
  ~AppearanceHook() override { delete dialog_.data(); }

  QWidget* Window() override { return dialog_; }
  void OpenFor(CCommonListCtrl* grid, int /*mode*/) override {
    grid_ = grid;
    dialog_->SetGrid(grid->ProfileName(), grid->ListControlId(), grid->ColumnNames(),
                     grid->Appearance());
  }
  void GridDestroyed(CCommonListCtrl* grid) override {
    if (grid_ == grid) {
      grid_ = nullptr;
      dialog_->hide();
    }
  }

private:
  QPointer<CCustomizedAppearance> dialog_;
  QPointer<CCommonListCtrl> grid_;
};

} // namespace

void InstallAppearanceDialog() {
  CCommonListCtrl::SetAppearanceDialogFactory(
      [](QWidget*) { return std::make_unique<AppearanceHook>(); });
}

} // namespace vh
