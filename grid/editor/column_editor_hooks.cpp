#include "grid/editor/column_editor_hooks.h"

#include "grid/editor/reposition_columns.h"
#include "grid/editor/user_defined_col_dlg.h"
#include "grid/widgets/filter_list_ctrl.h"

#include <QPointer>

namespace vh {
namespace {

// `Dialog` opens with Open(CustomColumnGrid&, mode-like) and is hidden when
// the grid it edits goes, so no click reaches a destroyed grid.
template <typename Dialog> class ColumnEditorHook final : public GridDialog {
public:
  explicit ColumnEditorHook(QWidget* parent) : dialog_(new Dialog(parent)) {}
  ~ColumnEditorHook() override { delete dialog_.data(); }

  QWidget* Window() override { return dialog_; }
  void OpenFor(CCommonListCtrl* grid, int mode) override {
    CustomColumnGrid* columns = grid ? grid->CustomColumns() : nullptr;
    if (!columns || !dialog_)
      return;
    grid_ = grid;
    if constexpr (std::is_same_v<Dialog, CRepositionColumns>)
      dialog_->Open(*columns, mode != 0);
    else
      (void)dialog_->Open(*columns, mode);
  }
  void GridDestroyed(CCommonListCtrl* grid) override {
    if (grid_ == grid && dialog_)
      dialog_->hide();
  }

private:
  QPointer<Dialog> dialog_;
  CCommonListCtrl* grid_ = nullptr;
};

} // namespace

void InstallColumnEditors() {
  CFilterListCtrl::SetCustomColumnEditorFactory([](QWidget* parent) {
    return std::make_unique<ColumnEditorHook<CUserDefinedColDlg>>(parent);
  });
  CCommonListCtrl::SetColumnProfileDialogFactory([](QWidget* parent) {
    return std::make_unique<ColumnEditorHook<CRepositionColumns>>(parent);
  });
}

} // namespace vh
