#include "plugin/message_box_sink.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QMessageBox>

#include "common/message.h"

Q_LOGGING_CATEGORY(lcMessage, "viewholdings.message")
Q_LOGGING_CATEGORY(lcStatus, "viewholdings.status")

namespace vh {
namespace {

bool canShowModal() {
  const QString platform = QGuiApplication::platformName();
  return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
         platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

} // namespace

void InstallPluginMessageSinks() {
  SetMessageSink([](std::string_view text) {
    const QString qtext = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    qCInfo(lcMessage).noquote() << qtext;
    if (canShowModal()) {
      QMessageBox box(QMessageBox::NoIcon, QCoreApplication::applicationName(), qtext,
                      QMessageBox::Ok);
      box.exec();
    }
  });
  SetStatusSink([](std::string_view text) {
    qCDebug(lcStatus).noquote() << QString::fromUtf8(text.data(),
                                                     static_cast<qsizetype>(text.size()));
  });
}

} // namespace vh
