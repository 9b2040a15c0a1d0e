// A host that lacks pu_is_actionright_enabled: every open is refused with the
// incompatibility message and no window is ever made.
#include <QApplication>
#include <QWidget>
#include <gtest/gtest.h>

#include "loaded_plugin.h"

namespace {

TEST(IncompatibleHost, EveryInitShowsTheMessageAndNoWindowAppears) {
  QWidget frame;
  TarnHostContext ctx{};
  ctx.parentWindow = &frame;
  const int before = QApplication::topLevelWidgets().size();
  for (int attempt = 0; attempt < 3; ++attempt)
    Plugin().init(&ctx, "U1", 0, QString());
  EXPECT_EQ(PluginMessages(),
            QStringList(3, "Initialisation failed. ZUL not compatible with Trader version."));
  EXPECT_EQ(QApplication::topLevelWidgets().size(), before);
  Plugin().exit(); // the window never existed: nothing to save
  EXPECT_EQ(PluginMessages().size(), 3);
}

} // namespace

int main(int argc, char** argv) {
  return RunPluginTests(argc, argv);
}
