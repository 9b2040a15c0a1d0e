// Hooks for the dialogs that open from a grid's menus but are built
// elsewhere: the appearance dialog (1007), the column-profile dialog (9002)
// and the custom-column editor (1008). Whoever builds one installs a
// factory; the grid creates the hook on first use, hands it the grid and
// the mode, then shows its window in front.
#pragma once

#include <QWidget>

#include <functional>
#include <memory>

namespace vh {

class CCommonListCtrl;

class GridDialog {
public:
  virtual ~GridDialog() = default;
  // The dialog's window; null once it is gone (a window parented to a grid
  // goes with the grid).
  virtual QWidget* Window() = 0;
  // Takes `grid` in `mode`: column profile 0 normal, 1 sort mode; custom-
  // column editor 0 add, 1 edit, 2 delete; appearance 0.
  virtual void OpenFor(CCommonListCtrl* grid, int mode) = 0;
  // `grid` is being destroyed; a hook that keeps it must forget it.
  virtual void GridDestroyed(CCommonListCtrl* /*grid*/) {}
};

// Builds a hook whose window has `parent` (null for the dialogs all grids
// share); null when it cannot, in which case the command does nothing.
using GridDialogFactory = std::function<std::unique_ptr<GridDialog>(QWidget* parent)>;

} // namespace vh
