// The terminal frame: a main window with one entry per loaded plug-in.
#pragma once

#include <QMainWindow>

#include "host/plugin_loader.h"
#include "plugin/tarn_plugin_api.h"

class QAction;
class QLabel;

namespace host {

class MainWindow : public QMainWindow {
  Q_OBJECT
public:
  explicit MainWindow(PluginLoader& plugin, QWidget* parent = nullptr);
  ~MainWindow() override;

  // ExitTarnPlugin, once: on close, or before the plug-in is unloaded.
  void ExitPlugin();
  // Opens the plug-in's view (InitTarnPlugin with this frame as parent).
  void OpenPlugin();
  // The logged-in user handed to the plug-in when it opens.
  void SetUser(QByteArray userId, unsigned userType);
  // Enables the plug-in entry once the scrip master and user are loaded.
  void SetReady(bool ready, const QString& status);
  void SetConnectionText(const QString& text);
  QAction* pluginAction() const { return pluginAction_; }

protected:
  void closeEvent(QCloseEvent* event) override;

private:
  PluginLoader& plugin_;
  QByteArray userId_;
  unsigned userType_ = 0;
  TarnHostContext context_{};
  QAction* pluginAction_ = nullptr;
  QLabel* connection_ = nullptr;
  bool exited_ = false;
};

} // namespace host
