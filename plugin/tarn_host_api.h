// Host services: functions a host exports from its executable by these
// names, looked up by the plug-in at each use (HostProc). The dialog is passed
// as a QWidget and its controls by numeric id (see SetControlId/GetDlgItem).
#pragma once

#include <cstdint>

#include <QString>
#include <QVariant>
#include <QWidget>

#include "link/brio_rx.h"

// Scrip details as pu_get_scrip_details fills them. All fields are text.
struct TarnScripDetails {
  enum Field {
    Segment = 0,       // "NSE" or "BSE"
    Symbol = 1,        // NSE: symbol; BSE: scrip code
    Series = 2,        // NSE: series ("EQ"); BSE: group ("A")
    TradingSymbol = 3, // NSE: "SYMBOL-SERIES"; BSE: symbol
    Token = 4,         // exchange token
    Name = 5,          // company name
    ClosePrice = 6,    // close price in rupees, as text ("1234.50")
    Isin = 7,          // the eighth field, the one the plug-in reads
    BseCode = 8,       // BSE scrip code of the same security ("" if none)
    BseSymbol = 9,     // BSE symbol of the same security ("" if none)
    BseGroup = 10,     // BSE group of the same security
    NseSymbol = 11,    // NSE symbol of the same security ("" if none)
    NseSeries = 12,    // NSE series of the same security
    LotSize = 13,      // market lot
    Count = 14
  };
  QString field[Count];
};

// Controls carry their dialog-resource id, so host and plug-in can address
// them as the behaviour does ("combo 9013 of the view").
inline constexpr const char* kControlIdProperty = "tarnControlId";
inline void SetControlId(QWidget* control, int id) {
  control->setProperty(kControlIdProperty, id);
}
inline QWidget* GetDlgItem(QWidget* dialog, int id) {
  if (!dialog)
    return nullptr;
  const auto children = dialog->findChildren<QWidget*>();
  for (QWidget* w : children) {
    const QVariant v = w->property(kControlIdProperty);
    if (v.isValid() && v.toInt() == id)
      return w;
  }
  return nullptr;
}

extern "C" {
// Nonzero when the logged-in user holds the action right `actionName`.
using pu_is_actionright_enabled_fn = int (*)(const char* actionName);
// Fill combo `comboId` of `dialog` with the exchanges the user may use.
using pu_load_exchange_combo_fn = void (*)(QWidget* dialog, int comboId);
// Fill combo `comboId` of `dialog` with the client ids the user may query.
using pu_load_client_id_combo_fn = void (*)(QWidget* dialog, int comboId);
// Refill the symbol and series/group combos of one selection row from the
// earlier combos of the row; `mode` says which combo changed.
// NSE row: (25001, 21002, 21003, 21010, 21011, 21008), mode 0 or 1.
// BSE row: (21004, 21005, 21006, 21010, 21009, 21008), mode 0..3.
using pu_fill_scrip_combos_with_bse_grp_fn = void (*)(QWidget* dialog, int exchange, int symbol,
                                                      int seriesOrGroup, int aux1, int aux2,
                                                      int aux3, int mode);
// Trading symbol and token of the scrip selected in the given combos.
using pu_get_trading_symbol_n_token_fn = void (*)(QWidget* dialog, int exchange, int symbol,
                                                  int series, int aux1, int aux2, int aux3,
                                                  QString* tradingSymbol, QString* token);
// Fill `details` for `symbol` of `segment` ("NSE" symbol or "SYMBOL-SERIES";
// "BSE" scrip code or symbol). Unknown scrips leave every field empty.
using pu_get_scrip_details_fn = void (*)(QString segment, QString symbol,
                                         TarnScripDetails* details);
// Optional: the directory the plug-in keeps its settings files in
// (UserSetting.ini, DialogPos.ini). A host without it, or one that returns
// NULL or "", leaves them beside its executable.
using pu_get_settings_directory_fn = const char* (*)();
// The host's back-end control with `receiver` attached, or NULL.
using GetBrioRxControl_fn = TarnBackendControl* (*)(int zero, CBrioRxNotifierBase* receiver);
}
