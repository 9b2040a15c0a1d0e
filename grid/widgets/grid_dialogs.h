// Hooks for the dialogs that open from a grid's menus but are built
// elsewhere: the appearance dialog (1007), the column-profile dialog (9002)
// and the custom-column editor (1008). Whoever builds one installs a
// factory; the grid creates the dialog on first use, hands it the grid and
// the mode, then shows it in front.
#pragma once

#include <QDialog>

#include <functional>

namespace vh {

class CCommonListCtrl;

class CGridDialog : public QDialog {
public:
  using QDialog::QDialog;
  // Takes `grid` (which outlives the call, not necessarily the dialog:
  // see CCommonListCtrl::GridDestroyed) in `mode`: column profile 0 normal,
  // 1 sort mode; custom-column editor 0 add, 1 edit, 2 delete; appearance 0.
  virtual void OpenFor(CCommonListCtrl* grid, int mode) = 0;
  // The grid is going away; forget it.
  virtual void GridDestroyed(CCommonListCtrl* /*grid*/) {}
};

// Builds a dialog with `parent` (null for the class-wide ones); null when it
// cannot, in which case the command does nothing.
using GridDialogFactory = std::function<CGridDialog*(QWidget* parent)>;

} // namespace vh
