// A host that lacks pu_is_actionright_enabled: every open is refused with the
// incompatibility message and no window is ever made.
#include <dlfcn.h>

#include <QApplication>
#include <QWidget>
#include <gtest/gtest.h>

#include "plugin/tarn_plugin_api.h"

namespace {

static_assert(offsetof(TarnHostContext, parentWindow) == 8 * sizeof(void*),
              "the parent window is the ninth pointer of the host context");

// The plug-in logs what it shows under "viewholdings.message" when there is
// no screen to show a box on.
QStringList& Messages() {
  static QStringList messages;
  return messages;
}

TEST(IncompatibleHost, EveryInitShowsTheMessageAndNoWindowAppears) {
  void* plugin = dlopen(VIEWHOLDINGS_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(plugin, nullptr) << dlerror();
  const auto init = reinterpret_cast<InitTarnPluginFn>(dlsym(plugin, "InitTarnPlugin"));
  const auto exit = reinterpret_cast<ExitTarnPluginFn>(dlsym(plugin, "ExitTarnPlugin"));
  ASSERT_TRUE(init && exit);
  QWidget frame;
  TarnHostContext ctx{};
  ctx.parentWindow = &frame;
  const int before = QApplication::topLevelWidgets().size();
  for (int attempt = 0; attempt < 3; ++attempt)
    init(&ctx, "U1", 0, QString());
  exit(); // the window never existed: nothing to save
  EXPECT_EQ(Messages(),
            QStringList(3, "Initialisation failed. ZUL not compatible with Trader version."));
  EXPECT_EQ(QApplication::topLevelWidgets().size(), before);
  dlclose(plugin);
}

} // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
    if (context.category && QByteArray(context.category) == "viewholdings.message")
      Messages().append(text);
  });
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
