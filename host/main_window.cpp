#include "host/main_window.h"

#include <QAction>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>

namespace host {

MainWindow::MainWindow(PluginLoader& plugin, QWidget* parent)
    : QMainWindow(parent), plugin_(plugin) {
  setWindowTitle("TarnTrader");
  resize(1100, 750);
  context_.parentWindow = this;

  QMenu* plugins = menuBar()->addMenu("&Plug-ins");
  QString name, version;
  uint32_t stamp = 0, code = 0;
  plugin_.getInfo(&name, &version, nullptr, &stamp, &code);
  pluginAction_ = plugins->addAction(name);
  pluginAction_->setToolTip(plugin_.Title() + " " + version);
  pluginAction_->setEnabled(false);
  connect(pluginAction_, &QAction::triggered, this, &MainWindow::OpenPlugin);
  QMenu* file = menuBar()->addMenu("&File");
  file->addAction("E&xit", this, &QWidget::close);

  connection_ = new QLabel(this);
  statusBar()->addPermanentWidget(connection_);
  statusBar()->showMessage("Loading scrip master...");
}

MainWindow::~MainWindow() {
  ExitPlugin();
}

void MainWindow::ExitPlugin() {
  if (exited_ || !plugin_.loaded())
    return;
  exited_ = true;
  plugin_.exit();
}

void MainWindow::OpenPlugin() {
  if (!plugin_.loaded())
    return;
  plugin_.init(&context_, userId_.constData(), userType_, QString());
}

void MainWindow::SetUser(QByteArray userId, unsigned userType) {
  userId_ = std::move(userId);
  userType_ = userType;
}

void MainWindow::SetReady(bool ready, const QString& status) {
  pluginAction_->setEnabled(ready);
  statusBar()->showMessage(status);
}

void MainWindow::SetConnectionText(const QString& text) {
  connection_->setText(text);
}

void MainWindow::closeEvent(QCloseEvent* event) {
  ExitPlugin();
  event->accept();
}

} // namespace host
