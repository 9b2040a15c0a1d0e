// Makes the appearance dialog (1007, widgets/customized_appearance.h) the
// one that "Customize" and Ctrl+Shift+C open on every grid: the dialog
// edits the grid it was last opened for, and "Apply Settings" gives that
// grid the new look at once.
#pragma once

namespace vh {

// Installs the factory (CCommonListCtrl::SetAppearanceDialogFactory).
void InstallAppearanceDialog();

} // namespace vh
