// Saving and restoring a window's placement under a name (DialogPos.ini, see
// dialog_position.h). The only Qt part of settings/.
#pragma once

#include <string>

class QWidget;

namespace vh {

// Writes the placement of `window` under `name`. Does nothing when the name
// is empty, `window` is null or its native window was never created.
void SaveDialogPosition(QWidget* window, const std::string& name);

// Moves `window` to the placement saved under `name`, when there is a usable
// one (else it stays where it is; see ReadWindowPlacement for the status
// texts). A resizable window takes the saved rectangle; a fixed-size window
// only its top-left corner and keeps its size. Does nothing for a null window.
void RestoreDialogPosition(QWidget* window, const std::string& name);

} // namespace vh
