// Saving and restoring real widgets (offscreen).
#include <QApplication>
#include <QDialog>

#include <gtest/gtest.h>

#include "settings/dialog_position_window.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

TEST(DialogPositionWindow, SavedPlacementRestoresOtherWindows) {
  vh::test::TempDir cmd;
  vh::ScopedSettingsPaths paths({"", cmd.path().string()});
  const std::string file = cmd.file("DialogPos.ini");
  QDialog first;
  first.setGeometry(40, 50, 300, 200);
  first.show();
  vh::SaveDialogPosition(&first, "");
  vh::SaveDialogPosition(nullptr, "W");
  EXPECT_FALSE(std::filesystem::exists(file)) << "saved without a name or a window";
  vh::SaveDialogPosition(&first, "W");
  // Top before left, bottom before right, both edges exclusive.
  const QRect g = first.geometry();
  EXPECT_EQ(vh::test::ReadFile(file),
            QString::asprintf("[DIALOG_POSITION]\r\nW=%d,%d,%d,%d,-1,-1,-1,-1,1\r\n", g.top(),
                              g.left(), g.top() + 200, g.left() + 300)
                .toStdString());
  QDialog resizable;
  QDialog fixed;
  fixed.setWindowFlag(Qt::MSWindowsFixedSizeDialogHint); // no sizing border
  fixed.resize(70, 80);
  vh::RestoreDialogPosition(&resizable, "W");
  vh::RestoreDialogPosition(&fixed, "W");
  vh::RestoreDialogPosition(nullptr, "W");
  EXPECT_EQ(resizable.geometry(), g);
  EXPECT_EQ(fixed.geometry(), QRect(g.topLeft(), QSize(70, 80)));
  // A file may hold any numbers: the extent is taken wide, then capped.
  vh::test::WriteFile(file, "[DIALOG_POSITION]\nHuge=-2147483648,-2147483648,2147483647,2147483647,"
                            "0,0,0,0,1\nInverted=100,100,0,0,0,0,0,0,1\n");
  vh::RestoreDialogPosition(&resizable, "Huge");
  EXPECT_EQ(resizable.size(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
  vh::RestoreDialogPosition(&resizable, "Inverted");
  EXPECT_EQ(resizable.geometry(), QRect(100, 100, 0, 0));
}

} // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
