// Control ids of the holdings view (dialog 21000): the host fills and reads
// the view's combos through them, tests and the headless host click them.
#pragma once

namespace vh {

enum ViewHoldControl : int {
  kDlgViewHold = 21000,
  kRadioScrip = 21038,
  kRadioClient = 21037,
  kGroupClient = 21034,
  kGroupNse = 21033,
  kComboNseExchange = 25001,
  kComboNseSymbol = 21002,
  kComboNseSeries = 21003,
  kGroupBse = 21032,
  kComboBseExchange = 21004,
  kComboBseSymbol = 21005,
  kComboBseSeries = 21006,
  kComboBseGroup = 21009,
  kComboExchanges = 21000, // hidden: the exchanges the user may trade
  kComboAux3 = 21008,
  kComboAux1 = 21010,
  kComboAux2 = 21011,
  kComboClient = 9013,
  kButtonLoadBse = 33091,
  kButtonViewHoldPos = 21007,
  kButtonTopTen = 21013,
  kButtonAlertSetting = 21021,
  kButtonLienReports = 21028,
  kGridHoldings = 21012,
  kGridAlert = 9017,
  kTabViews = 9006,
};

// Row-menu command ids of the mark/unmark popups.
inline constexpr int kFirstMarkCommand = 4011;
inline constexpr int kLastMarkCommand = 4014;

// Placement names saved at exit, in order: the view, then its dialogs.
inline constexpr const char* kPlacementView = "View-Holding";
inline constexpr const char* kFeaturePlacements[] = {
    "View-Holding/Alert", "View-Holding/Top10", "View-Holding/Lien", "View-Holding/Mark_UnMark"};

inline constexpr const char* kViewCaption = "View Holdings";
inline constexpr const char* kMsgNotCompatible = "Exe is not compatible with ZUL";
inline constexpr const char* kMarkRightFormat = "RMS View Holdings: %s";
inline constexpr const char* kMarkRightWord = "Mark/UnMark";

} // namespace vh
