// Makes the column editors the dialogs the grids open: the custom-column
// editor (1008) for "Add/Edit/Delete Custom Columns" (33079, 33083, 33080)
// and the column profile dialog (9002) for "Reposition Columns" (4004) and
// the sort mode owners send (4005). The grid library cannot depend on this
// one (it is built on the grid's interfaces), so the program installs them
// once at start, next to InstallAppearanceDialog().
#pragma once

namespace vh {

// Installs both factories (CFilterListCtrl::SetCustomColumnEditorFactory,
// CCommonListCtrl::SetColumnProfileDialogFactory). One custom-column
// editor serves every grid; each grid has its own column profile dialog.
void InstallColumnEditors();

} // namespace vh
