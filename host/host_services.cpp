// The services the plug-in looks up by name in this executable. They work on
// the plug-in's dialog controls by id, as the plug-in expects.
#include <QComboBox>
#include <QString>
#include <QStringListModel>
#include <QWidget>

#include "host/host_context.h"
#include "plugin/tarn_host_api.h"

#define HOST_EXPORT extern "C" __attribute__((visibility("default")))

namespace host {

HostContext& TheHost() {
  static HostContext context;
  return context;
}

} // namespace host

namespace {

using host::ScripLeg;
using host::TheHost;

QComboBox* combo(QWidget* dialog, int id) {
  return qobject_cast<QComboBox*>(GetDlgItem(dialog, id));
}

QString q(const std::string& s) {
  return QString::fromStdString(s);
}

void fill(QComboBox* box, const std::vector<std::string>& items, int select) {
  if (!box)
    return;
  QStringList list;
  list.reserve(static_cast<qsizetype>(items.size()));
  for (const auto& s : items)
    list.append(q(s));
  box->clear();
  box->addItems(list);
  box->setCurrentIndex(list.isEmpty() ? -1 : select);
}

void clear(std::initializer_list<QComboBox*> boxes) {
  for (QComboBox* b : boxes)
    if (b)
      b->clear();
}

// Hidden helper combos carry the chosen leg's token, scrip code and ISIN.
void fillAux(QComboBox* a, QComboBox* b, QComboBox* c, const ScripLeg* leg) {
  clear({a, b, c});
  if (!leg)
    return;
  if (a)
    a->addItem(q(leg->field[ScripLeg::Token]));
  if (b)
    b->addItem(q(leg->field[ScripLeg::BseCode]));
  if (c)
    c->addItem(q(leg->field[ScripLeg::Isin]));
}

void fillNseRow(QComboBox* symbol, QComboBox* series, QComboBox* a1, QComboBox* a2, QComboBox* a3,
                const QString& exchange, int mode) {
  const host::ScripMaster& m = TheHost().master;
  if (mode == 0) {
    clear({symbol, series, a1, a2, a3});
    if (exchange == "NSE")
      fill(symbol, m.NseSymbols(), -1);
    return;
  }
  // mode 1: a symbol was chosen; offer its series as trading symbols.
  if (!symbol || symbol->currentIndex() < 0) {
    clear({series, a1, a2, a3});
    return;
  }
  fill(series, m.NseTradingSymbols(symbol->currentText().toStdString()), 0);
  fillAux(a1, a2, a3, series ? m.Find("NSE", series->currentText().toStdString()) : nullptr);
}

void fillBseRow(QComboBox* symbol, QComboBox* series, QComboBox* group, QComboBox* a1,
                QComboBox* a2, const QString& exchange, int mode) {
  const host::ScripMaster& m = TheHost().master;
  switch (mode) {
  case 0: // exchange: the groups, and the symbols of the first group
    clear({symbol, series, group, a1, a2});
    if (exchange != "BSE")
      return;
    fill(group, m.BseGroups(), 0);
    if (group && group->currentIndex() >= 0)
      fill(symbol, m.BseSymbolsOfGroup(group->currentText().toStdString()), -1);
    return;
  case 3: // group
    clear({series, a1, a2});
    if (group && group->currentIndex() >= 0)
      fill(symbol, m.BseSymbolsOfGroup(group->currentText().toStdString()), -1);
    return;
  case 1: // symbol: its group is its series
  case 2: {
    const ScripLeg* leg = symbol && symbol->currentIndex() >= 0
                              ? m.Find("BSE", symbol->currentText().toStdString())
                              : nullptr;
    if (mode == 1)
      fill(series,
           leg ? std::vector<std::string>{leg->field[ScripLeg::Series]}
               : std::vector<std::string>{},
           0);
    fillAux(a1, a2, nullptr, leg);
    return;
  }
  default:
    return;
  }
}

} // namespace

HOST_EXPORT int pu_is_actionright_enabled(const char* actionName) {
  return actionName && TheHost().user.HasRight(actionName) ? 1 : 0;
}

HOST_EXPORT void pu_load_exchange_combo(QWidget* dialog, int comboId) {
  fill(combo(dialog, comboId), TheHost().user.exchanges, -1);
}

// A desk may have hundreds of thousands of clients: one list model instead
// of an item per id.
HOST_EXPORT void pu_load_client_id_combo(QWidget* dialog, int comboId) {
  QComboBox* box = combo(dialog, comboId);
  if (!box)
    return;
  QStringList ids;
  ids.reserve(static_cast<qsizetype>(TheHost().user.clientIds.size()));
  for (const auto& id : TheHost().user.clientIds)
    ids.append(q(id));
  box->setModel(new QStringListModel(ids, box)); // the combo drops its old model
  box->setCurrentIndex(-1);
}

// NSE row: (exchange, symbol, series, aux 21010, aux 21011, aux 21008)
// BSE row: (exchange, symbol, series, aux 21010, group 21009, aux 21008)
HOST_EXPORT void pu_fill_scrip_combos_with_bse_grp(QWidget* dialog, int exchangeId, int symbolId,
                                                   int seriesId, int aux1, int aux2, int aux3,
                                                   int mode) {
  QComboBox* exchange = combo(dialog, exchangeId);
  const QString text = exchange ? exchange->currentText() : QString();
  // The BSE row is told apart by its group combo (21009) in the fifth place.
  if (aux2 == 21009)
    fillBseRow(combo(dialog, symbolId), combo(dialog, seriesId), combo(dialog, aux2),
               combo(dialog, aux1), combo(dialog, aux3), text, mode);
  else
    fillNseRow(combo(dialog, symbolId), combo(dialog, seriesId), combo(dialog, aux1),
               combo(dialog, aux2), combo(dialog, aux3), text, mode);
}

HOST_EXPORT void pu_get_trading_symbol_n_token(QWidget* dialog, int exchangeId, int, int seriesId,
                                               int, int, int, QString* tradingSymbol,
                                               QString* token) {
  QComboBox* exchange = combo(dialog, exchangeId);
  QComboBox* series = combo(dialog, seriesId);
  QString ts, tok;
  if (exchange && exchange->currentText() == "NSE" && series && series->currentIndex() >= 0) {
    ts = series->currentText();
    if (const ScripLeg* leg = TheHost().master.Find("NSE", ts.toStdString()))
      tok = q(leg->field[ScripLeg::Token]);
  }
  if (tradingSymbol)
    *tradingSymbol = ts;
  if (token)
    *token = tok;
}

// Segments as the master names them ("NSE") or as answer records do
// ("nse_cm").
HOST_EXPORT void pu_get_scrip_details(QString segment, QString symbol, TarnScripDetails* details) {
  if (!details)
    return;
  const QString s = segment.toLower();
  const std::string master = s == "nse_cm" ? "NSE" : s == "bse_cm" ? "BSE" : segment.toStdString();
  const ScripLeg* leg = TheHost().master.Find(master, symbol.toStdString());
  for (int i = 0; i < TarnScripDetails::Count; ++i)
    details->field[i] = leg ? q(leg->field[static_cast<size_t>(i)]) : QString();
}

HOST_EXPORT const char* pu_get_settings_directory() {
  return TheHost().settingsDirectory.c_str();
}

HOST_EXPORT TarnBackendControl* GetBrioRxControl(int, CBrioRxNotifierBase* receiver) {
  TarnBackendControl* control = TheHost().control;
  if (control && receiver)
    control->Attach(receiver);
  return control;
}
