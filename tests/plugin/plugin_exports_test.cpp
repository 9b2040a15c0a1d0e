// Plays the host: loads libviewholdings with dlopen and calls its exports,
// with the host services exported from this executable.
#include <cstddef>
#include <filesystem>

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QWidget>
#include <gtest/gtest.h>

#include "host_services.h"
#include "loaded_plugin.h"

namespace {

static_assert(offsetof(TarnHostContext, parentWindow) == 8 * sizeof(void*),
              "the parent window is the ninth pointer of the host context");

QWidget* OpenViewWindow(QWidget* frame) {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (w != frame && w->parentWidget() == frame && qobject_cast<QDialog*>(w))
      return w;
  return nullptr;
}

TEST(PluginInfo, FixedValuesTheOneActionRightAndAnIgnoredMessage) {
  QString name, version, title;
  uint32_t stamp = 0, code = 0;
  int marker = 0;
  EXPECT_EQ(Plugin().getInfo(&name, &version, &marker, &stamp, &code), 1);
  EXPECT_EQ(QStringList({name, version, QString::number(stamp), QString::number(code)}),
            QStringList({"View Holdings", "5.3.1.0", "29032010", "126"}));
  QStringList actions{"Other Plugin: Trade"};
  Plugin().getOptionalInfo(&title, &actions, nullptr, nullptr);
  EXPECT_EQ(title, "RMS View Holdings");
  EXPECT_EQ(actions, (QStringList{"Other Plugin: Trade", "RMS View Holdings: Mark/UnMark"}));
  EXPECT_EQ(Plugin().process(nullptr), 0);
  EXPECT_EQ(Plugin().process(reinterpret_cast<void*>(0x1)), 0); // never dereferenced
}

// Runs before the Init tests (gtest keeps declaration order within a file).
TEST(PluginLifecycle, ExitBeforeAnyInitWritesNothing) {
  const auto dir = std::filesystem::path(QCoreApplication::applicationDirPath().toStdString());
  Plugin().exit();
  EXPECT_FALSE(std::filesystem::exists(dir / "UserSetting.ini"));
  EXPECT_FALSE(std::filesystem::exists(dir / "DialogPos.ini"));
  EXPECT_TRUE(PluginMessages().isEmpty());
}

TEST(PluginLifecycle, FirstInitCreatesTheViewUnderTheHostFrame) {
  QWidget frame;
  frame.setObjectName("frame");
  TarnHostContext ctx{};
  ctx.parentWindow = &frame;
  PluginMessages().clear();
  Plugin().init(&ctx, "U1", 2, QString("unused"));
  QPointer<QWidget> view = OpenViewWindow(&frame);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view->windowTitle(), "View Holdings");
  EXPECT_TRUE(view->isVisible());
  // A first run has no settings file yet: the holdings grid says so once
  // (the alert grid reads no column profile).
  EXPECT_EQ(PluginMessages(), QStringList{"File Open Failed"});
  // The view made its link: the receiver is attached and the peer value of
  // this type-2 user was asked for, under the first user id.
  EXPECT_NE(Calls().receiver, nullptr);
  EXPECT_EQ(Calls().sent, QStringList{"0=om_get_user_peer_data|31003=U1"});

  // A later open re-shows the same window, whatever its arguments.
  view->hide();
  QWidget otherFrame;
  TarnHostContext other{};
  other.parentWindow = &otherFrame;
  Plugin().init(&other, "SOMEONE_ELSE", 0, QString());
  EXPECT_EQ(OpenViewWindow(&frame), view.data());
  EXPECT_EQ(OpenViewWindow(&otherFrame), nullptr);
  EXPECT_TRUE(view->isVisible());
  EXPECT_EQ(Calls().sent.size(), 1) << "a later open makes no new link";

  Plugin().exit();
  EXPECT_TRUE(view) << "exit does not destroy the window";
  view->setParent(nullptr); // frame goes out of scope before the module
  view->hide();
}

} // namespace

int main(int argc, char** argv) {
  return RunPluginTests(argc, argv);
}
