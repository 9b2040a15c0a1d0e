// Saving and restoring real widgets (offscreen).
#include <QApplication>
#include <QDialog>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/dialog_position.h"
#include "settings/dialog_position_window.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

class DialogPositionWindow : public ::testing::Test {
protected:
  void Store(const std::string& name, const std::string& value) {
    vh::test::WriteFile(cmd_.file("DialogPos.ini"),
                        "[DIALOG_POSITION]\n" + name + "=" + value + "\n");
  }
  vh::test::TempDir cmd_;
  vh::ScopedSettingsPaths paths_{{"", cmd_.path().string()}};
  vh::ScopedMessageRecorder recorder_;
};

TEST_F(DialogPositionWindow, SavedPlacementRestoresAnotherWindow) {
  QDialog first;
  first.setGeometry(40, 50, 300, 200);
  first.show();
  vh::SaveDialogPosition(&first, "View-Holding");
  const QRect g = first.geometry();
  EXPECT_EQ(vh::test::ReadFile(cmd_.file("DialogPos.ini")),
            QString("[DIALOG_POSITION]\r\nView-Holding=%1,%2,%3,%4,-1,-1,-1,-1,1\r\n")
                .arg(g.top())
                .arg(g.left())
                .arg(g.top() + 200)
                .arg(g.left() + 300)
                .toStdString());
  QDialog second;
  second.setGeometry(0, 0, 100, 100);
  vh::RestoreDialogPosition(&second, "View-Holding");
  EXPECT_EQ(second.geometry(), first.geometry());
}

TEST_F(DialogPositionWindow, FixedSizeWindowsOnlyMove) {
  Store("Fixed", "50,40,250,340,-1,-1,-1,-1,1");
  QDialog fixed;
  fixed.setFixedSize(120, 80);
  vh::RestoreDialogPosition(&fixed, "Fixed");
  EXPECT_EQ(fixed.geometry(), QRect(40, 50, 120, 80));

  QDialog resizable;
  resizable.resize(120, 80);
  vh::RestoreDialogPosition(&resizable, "Fixed");
  EXPECT_EQ(resizable.geometry(), QRect(40, 50, 300, 200));
}

// Every value the reader refuses takes one path here: seven fields stand for all.
TEST_F(DialogPositionWindow, UnusableValuesKeepTheWindowWhereItIs) {
  Store("W", "50,40,250,340,1,1,1");
  QDialog w;
  w.setGeometry(5, 6, 70, 80);
  vh::RestoreDialogPosition(&w, "W");
  vh::RestoreDialogPosition(&w, "");
  vh::RestoreDialogPosition(nullptr, "W");
  EXPECT_EQ(w.geometry(), QRect(5, 6, 70, 80));
}

TEST_F(DialogPositionWindow, ExtremeRectanglesDoNotBreakTheWindow) {
  Store("Huge", "-2147483648,-2147483648,2147483647,2147483647,0,0,0,0,1");
  QDialog w;
  vh::RestoreDialogPosition(&w, "Huge"); // the extent is taken wide, then capped
  EXPECT_EQ(w.size(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
  Store("Inverted", "100,100,0,0,0,0,0,0,1");
  vh::RestoreDialogPosition(&w, "Inverted");
  EXPECT_EQ(w.pos(), QPoint(100, 100));
}

TEST_F(DialogPositionWindow, WindowsNeverShownAreNotSaved) {
  QDialog never;
  vh::SaveDialogPosition(&never, "Never");
  vh::SaveDialogPosition(nullptr, "Null");
  QDialog shown;
  shown.show();
  vh::SaveDialogPosition(&shown, "");
  EXPECT_FALSE(std::filesystem::exists(cmd_.file("DialogPos.ini")));
}

} // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
