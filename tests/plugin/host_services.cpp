// The host side that a plug-in test needs: exported host services that
// record how they were called. Linked into a test executable built with
// ENABLE_EXPORTS so that the plug-in finds them by name.
#include <QComboBox>
#include <QString>
#include <QWidget>

#include "host_services.h"
#include "plugin/tarn_host_api.h"

HostCalls& Calls() {
  static HostCalls calls;
  return calls;
}

extern "C" __attribute__((visibility("default"))) int pu_is_actionright_enabled(const char* name) {
  Calls().actionRightQueries.append(QString::fromUtf8(name));
  return Calls().grantMarkUnmark ? 1 : 0;
}

extern "C" __attribute__((visibility("default"))) void pu_load_exchange_combo(QWidget* dialog,
                                                                              int id) {
  ++Calls().exchangeComboLoads;
  if (auto* combo = qobject_cast<QComboBox*>(GetDlgItem(dialog, id)))
    combo->addItems({"NSE", "BSE"});
}

extern "C" __attribute__((visibility("default"))) void pu_load_client_id_combo(QWidget* dialog,
                                                                               int id) {
  ++Calls().clientComboLoads;
  if (auto* combo = qobject_cast<QComboBox*>(GetDlgItem(dialog, id)))
    combo->addItems({"C000001", "C000002"});
}
