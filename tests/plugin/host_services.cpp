// The host side that a plug-in test needs: exported host services that
// record how they were called. Linked into a test executable built with
// ENABLE_EXPORTS so that the plug-in finds them by name.
#include <QComboBox>
#include <QString>
#include <QTemporaryDir>

#include <QWidget>
#include <string>

#include "host_services.h"
#include "plugin/tarn_host_api.h"

HostCalls& Calls() {
  static HostCalls calls;
  return calls;
}

extern "C" __attribute__((visibility("default"))) int pu_is_actionright_enabled(const char*) {
  return 1;
}

extern "C" __attribute__((visibility("default"))) void pu_load_exchange_combo(QWidget* dialog,
                                                                              int id) {
  if (auto* combo = qobject_cast<QComboBox*>(GetDlgItem(dialog, id)))
    combo->addItems({"NSE", "BSE"});
}

extern "C" __attribute__((visibility("default"))) void pu_load_client_id_combo(QWidget* dialog,
                                                                               int id) {
  if (auto* combo = qobject_cast<QComboBox*>(GetDlgItem(dialog, id)))
    combo->addItems({"C000001", "C000002"});
}

namespace {

// Records each request as "name|tag=value|..." and accepts it.
class RecordingControl final : public TarnBackendControl {
public:
  int Attach(CBrioRxNotifierBase* r) override {
    Calls().receiver = r;
    return 1;
  }
  void Detach(CBrioRxNotifierBase*) override { Calls().receiver = nullptr; }
  int IsConnected() const override { return 1; }
  int Send(uint64_t* slot, KdlMsg* msg, int, KdlError*) override {
    QStringList parts;
    for (uint32_t tag : {0u, 31003u, 54001u, 64056u}) {
      KdlValue v{};
      if (kdl_get_data(msg, tag, 0, &v, nullptr))
        parts << QString("%1=%2").arg(tag).arg(QString::fromUtf8(v.data, v.length));
    }
    Calls().sent.append(parts.join('|'));
    if (slot)
      *slot = static_cast<uint64_t>(Calls().sent.size());
    return 1;
  }
  void Release() override {}
};

} // namespace

extern "C" __attribute__((visibility("default"))) TarnBackendControl*
GetBrioRxControl(int, CBrioRxNotifierBase* receiver) {
  static RecordingControl control;
  control.Attach(receiver);
  return &control;
}

// The view saves its settings at exit: into a folder of the test's own,
// never beside the build.
extern "C" __attribute__((visibility("default"))) const char* pu_get_settings_directory() {
  static const QTemporaryDir dir;
  static const std::string path = dir.path().toStdString();
  return path.c_str();
}
