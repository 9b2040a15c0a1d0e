// tarntrader: loads the View Holdings plug-in and serves it, against a
// back-end given with --backend or one started in-process.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTcpSocket>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "host/backend_control.h"
#include "host/headless.h"
#include "host/host_context.h"
#include "host/host_options.h"
#include "host/main_window.h"
#include "host/password_file.h"
#include "host/plugin_loader.h"
#include "host/startup_loader.h"
#include "riskd/server.h"

namespace {

QString defaultPluginPath() {
  const QDir exeDir(QCoreApplication::applicationDirPath());
  for (const QString& candidate :
       {QStringLiteral("libviewholdings.so"), QStringLiteral("../plugin/libviewholdings.so"),
        QStringLiteral("../lib/libviewholdings.so")})
    if (QFileInfo::exists(exeDir.filePath(candidate)))
      return exeDir.filePath(candidate);
  return exeDir.filePath("libviewholdings.so");
}

// The embedded back-end's database lives in the user's data directory and
// is made once; --db and --rows choose another.
std::unique_ptr<riskd::RiskServer> startEmbedded(const host::HostOptions& o, QString& error) {
  riskd::RiskServerOptions options;
  QString db = o.dbPath;
  if (db.isEmpty()) {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(dir);
    db = QDir(dir).filePath(o.sampleRows > 0 ? QString("sample-%1.db").arg(o.sampleRows)
                                             : QString("sample.db"));
  }
  options.store.dbPath = db.toStdString();
  if (o.sampleRows > 0)
    options.store.sample.holdings = o.sampleRows;
  std::string why;
  auto server = riskd::RiskServer::Start(options, &why);
  if (!server)
    error = QString("cannot start the embedded back-end on %1: %2")
                .arg(db, QString::fromStdString(why));
  return server;
}

// The plug-in's settings: --settings, else the user's config folder, never
// beside the executable.
QString settingsDirectory(const host::HostOptions& o) {
  QString dir = o.settingsDir;
  if (dir.isEmpty())
    dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
  QDir().mkpath(dir);
  return QDir(dir).absolutePath();
}

// Keeps the back-end's clients that `path` lists (one id a line), in the
// back-end's order. False when the file cannot be read.
bool limitClients(const QString& path, std::vector<std::string>& clientIds) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
    return false;
  std::unordered_set<std::string> wanted;
  while (!file.atEnd()) {
    const QByteArray line = file.readLine().trimmed();
    if (!line.isEmpty())
      wanted.insert(line.toStdString());
  }
  std::erase_if(clientIds, [&](const std::string& id) { return !wanted.count(id); });
  return true;
}

int fail(const QString& text, bool headless) {
  std::fprintf(stderr, "tarntrader: %s\n", qPrintable(text));
  if (!headless)
    QMessageBox::critical(nullptr, "TarnTrader", text);
  return 1;
}

// QGuiApplication takes "-plugin"/"--plugin" as its own option (a Qt generic
// plug-in to load), so that pair is kept from it.
std::vector<char*> argumentsForQt(int argc, char** argv) {
  std::vector<char*> out;
  for (int i = 0; i < argc; ++i) {
    const std::string_view a(argv[i]);
    if ((a == "--plugin" || a == "-plugin") && i + 1 < argc) {
      ++i;
      continue;
    }
    if (a.rfind("--plugin=", 0) == 0 || a.rfind("-plugin=", 0) == 0)
      continue;
    out.push_back(argv[i]);
  }
  out.push_back(nullptr);
  return out;
}

// Where the password comes from when the back-end wants one: the
// --password-file, else (with a screen) a dialog; a headless run without a
// file has none.
host::BackendControl::PasswordSource passwordSource(const host::HostOptions& o) {
  const QString user = o.userId.isEmpty() ? QString("the administrator") : o.userId;
  return [o, user]() -> std::optional<std::string> {
    if (!o.passwordFile.isEmpty()) {
      std::string error;
      auto password = host::ReadPasswordFile(o.passwordFile.toStdString(), &error);
      if (!password)
        std::fprintf(stderr, "tarntrader: %s\n", error.c_str());
      return password;
    }
    if (o.headless()) {
      std::fprintf(stderr, "tarntrader: the back-end wants a password; give --password-file\n");
      return std::nullopt;
    }
    bool ok = false;
    const QString text = QInputDialog::getText(
        nullptr, "TarnTrader", QString("Password for %1:").arg(user), QLineEdit::Password, {}, &ok);
    if (!ok || text.isEmpty())
      return std::nullopt;
    return text.toStdString();
  };
}

QStringList allArguments(int argc, char** argv) {
  QStringList out;
  for (int i = 0; i < argc; ++i)
    out << QString::fromLocal8Bit(argv[i]);
  return out;
}

} // namespace

int main(int argc, char** argv) {
  const QStringList arguments = allArguments(argc, argv);
  host::HostOptions options;
  QString error;
  bool help = false;
  if (!host::ParseHostOptions(arguments, options, error, help)) {
    std::fprintf(help ? stdout : stderr, "%s\n", qPrintable(error));
    return help ? 0 : 1;
  }
  const bool headless = options.headless();
  // A headless run shows no window, so it needs no window system either.
  if (headless && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");

  std::vector<char*> qtArgv = argumentsForQt(argc, argv);
  int qtArgc = static_cast<int>(qtArgv.size()) - 1;
  QApplication app(qtArgc, qtArgv.data());
  app.setApplicationName("tarntrader");
  app.setOrganizationName("tarn");

  host::PluginLoader plugin;
  if (!plugin.Load(options.pluginPath.isEmpty() ? defaultPluginPath() : options.pluginPath, error))
    return fail("cannot load the plug-in: " + error, headless);

  std::unique_ptr<riskd::RiskServer> embedded;
  QString backendHost = options.backendHost;
  quint16 backendPort = options.backendPort;
  if (backendHost.isEmpty()) {
    embedded = startEmbedded(options, error);
    if (!embedded)
      return fail(error, headless);
    backendHost = "127.0.0.1";
    backendPort = embedded->port();
  }

  // A headless run has nobody to watch the control retry: a back-end that
  // cannot be reached ends it at once.
  if (headless && embedded == nullptr) {
    QTcpSocket probe;
    probe.connectToHost(backendHost, backendPort);
    if (!probe.waitForConnected(std::min(options.waitMs, 5000)))
      return fail(QString("cannot reach the back-end at %1:%2: %3")
                      .arg(backendHost)
                      .arg(backendPort)
                      .arg(probe.errorString()),
                  headless);
  }

  host::HostContext& ctx = host::TheHost();
  ctx.settingsDirectory = settingsDirectory(options).toStdString();
  host::BackendControl control;
  control.SetLogin(options.userId.toStdString(), passwordSource(options));
  ctx.control = &control;
  host::StartupLoader loader(control, options.userId.toStdString(), ctx.master, ctx.user);

  host::MainWindow window(plugin);
  // Until the first login the control keeps trying; say so, or a back-end
  // that is not there at start would leave the status bar silent.
  window.SetConnectionText(
      QString("Back-end %1:%2 not connected; retrying").arg(backendHost).arg(backendPort));
  QObject::connect(&control, &host::BackendControl::connectedChanged, &window, [&](bool up) {
    window.SetConnectionText(up ? QString("Back-end %1:%2").arg(backendHost).arg(backendPort)
                                : QString("Back-end disconnected"));
  });

  host::HeadlessRun run(options, control);
  if (headless)
    run.Arm(); // --wait-ms bounds the whole run, start-up included
  QObject::connect(&run, &host::HeadlessRun::finished, &app, [&](int code) { app.exit(code); });
  const auto startFailed = [&](const QString& why) {
    if (headless) {
      std::fprintf(stderr, "tarntrader: %s\n", qPrintable(why));
      app.exit(1);
    } else {
      window.SetReady(false, why);
    }
  };
  QObject::connect(&loader, &host::StartupLoader::failed, &app, startFailed);
  QObject::connect(&control, &host::BackendControl::loginFailed, &app, startFailed);
  QObject::connect(&loader, &host::StartupLoader::ready_, &app, [&] {
    if (!options.clientsFile.isEmpty() && !limitClients(options.clientsFile, ctx.user.clientIds)) {
      std::fprintf(stderr, "tarntrader: cannot read the client list %s\n",
                   qPrintable(options.clientsFile));
      app.exit(1);
      return;
    }
    if (!options.rights.isEmpty()) {
      ctx.user.rights.clear();
      for (const QString& r : options.rights)
        ctx.user.rights.insert(r.toStdString());
    }
    // The back-end names the administrator and knows each user's type; the
    // command line may still give another type.
    window.SetUser(QByteArray::fromStdString(ctx.user.id),
                   options.userTypeGiven ? options.userType : ctx.user.type);
    window.SetReady(true, QString("%1 scrip legs, %2 clients for user %3")
                              .arg(ctx.master.size())
                              .arg(ctx.user.clientIds.size())
                              .arg(QString::fromStdString(ctx.user.id)));
    if (!headless)
      return;
    window.OpenPlugin();
    QWidget* view = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
      if (w != &window && w->parentWidget() == &window && w->isVisible())
        view = w;
    if (!view) {
      std::fprintf(stderr, "tarntrader: the plug-in opened no view\n");
      app.exit(2);
      return;
    }
    run.Start(view);
  });

  control.Start(backendHost, backendPort);
  if (!headless)
    window.show();
  const int code = app.exec();
  // Saves first, then the plug-in's objects go while the control they are
  // attached to still exists.
  window.ExitPlugin();
  plugin.Unload();
  control.Stop();
  if (embedded)
    embedded->Stop();
  return code;
}
