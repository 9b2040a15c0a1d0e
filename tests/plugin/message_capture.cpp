#include "loaded_plugin.h"

#include <QApplication>
#include <QtGlobal>

QStringList& PluginMessages() {
  static QStringList messages;
  return messages;
}

void InstallPluginMessageCapture() {
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
    if (context.category && QByteArray(context.category) == "viewholdings.message")
      PluginMessages().append(text);
  });
}

int RunPluginTests(int argc, char** argv) {
  QApplication app(argc, argv);
  InstallPluginMessageCapture();
  ::testing::InitGoogleTest(&argc, argv);
  if (!Plugin().load()) {
    fprintf(stderr, "cannot load %s: %s\n", VIEWHOLDINGS_PATH, dlerror());
    return 1;
  }
  const int result = RUN_ALL_TESTS();
  dlclose(Plugin().handle);
  return result;
}
