#include "loaded_plugin.h"

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
