// Command ids of the grids' menus and of the commands owners send. Each
// action carries its id in QAction::data().
#pragma once

namespace vh {

enum GridCommand : int {
  kCmdExactMatch = 4000,
  kCmdFitToData = 4001,
  kCmdFitToHeader = 4002,
  kCmdFitToWindow = 4003,
  kCmdRepositionColumns = 4004,
  kCmdColumnProfileSortMode = 4005, // sent by owners, no menu item
  kCmdWriteToExcel = 4006,
  kCmdReadFromExcel = 4007,
  kCmdDrawGridLines = 4008,
  kCmdCustomize = 4009,
  kCmdCopyToClipboard = 4010,
  kCmdResetFilters = 33078,
  kCmdAddCustomColumns = 33079,
  kCmdDeleteCustomColumns = 33080,
  kCmdEditCustomColumns = 33083,
};

// Fit modes of FitColumns; any other value takes the larger of the data and
// header widths.
enum FitMode : int {
  kFitData = kCmdFitToData,
  kFitHeader = kCmdFitToHeader,
  kFitWindow = kCmdFitToWindow,
};

// Dialog resource ids that the grids' hooks open.
inline constexpr int kAppearanceDialogId = 1007;
inline constexpr int kCustomColumnDialogId = 1008;
inline constexpr int kColumnProfileDialogId = 9002;

} // namespace vh
