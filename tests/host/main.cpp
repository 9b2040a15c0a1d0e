#include <QApplication>
#include <gtest/gtest.h>

#include "tests/host/plugin_messages.h"

QStringList& PluginMessages() {
  static QStringList messages;
  return messages;
}

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  static const QtMessageHandler previous = qInstallMessageHandler(
      [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
        if (context.category && QByteArray(context.category) == "viewholdings.message")
          PluginMessages().append(text);
        else if (previous)
          previous(type, context, text);
      });
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
