// Saving and restoring real widgets (offscreen).
#include <QApplication>
#include <QDialog>

#include <gtest/gtest.h>

#include "settings/dialog_position_window.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

class DialogPositionWindow : public ::testing::Test {
protected:
  vh::test::TempDir cmd_;
  vh::ScopedSettingsPaths paths_{{"", cmd_.path().string()}};
};

TEST_F(DialogPositionWindow, SavedPlacementRestoresAnotherWindow) {
  QDialog never;
  vh::SaveDialogPosition(&never, "Never");
  vh::SaveDialogPosition(nullptr, "Null");
  QDialog first;
  first.setGeometry(40, 50, 300, 200);
  first.show();
  vh::SaveDialogPosition(&first, "");
  EXPECT_FALSE(std::filesystem::exists(cmd_.file("DialogPos.ini"))) << "saved without a window";
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

// Each window starts at (5, 6) sized 70 x 80.
TEST_F(DialogPositionWindow, RestoredPlacements) {
  vh::test::WriteFile(
      cmd_.file("DialogPos.ini"),
      "[DIALOG_POSITION]\nW=50,40,250,340,-1,-1,-1,-1,1\nSeven=50,40,250,340,1,1,1\n"
      "Huge=-2147483648,-2147483648,2147483647,2147483647,0,0,0,0,1\n"
      "Inverted=100,100,0,0,0,0,0,0,1\n");
  const struct {
    const char* name;
    const char* key;
    bool fixedSize;
    QPoint pos;
    QSize size;
  } cases[] = {
      {"resizable: the saved rectangle", "W", false, {40, 50}, {300, 200}},
      {"fixed size: only moved", "W", true, {40, 50}, {70, 80}},
      {"seven fields: left where it is", "Seven", false, {5, 6}, {70, 80}},
      {"no name: left where it is", "", false, {5, 6}, {70, 80}},
      // The extent is taken wide, then capped.
      {"huge rectangle", "Huge", false, {INT_MIN, INT_MIN}, {QWIDGETSIZE_MAX, QWIDGETSIZE_MAX}},
      {"inverted rectangle", "Inverted", false, {100, 100}, {0, 0}},
  };
  for (const auto& c : cases) {
    QDialog w;
    w.setGeometry(5, 6, 70, 80);
    if (c.fixedSize)
      w.setFixedSize(70, 80);
    vh::RestoreDialogPosition(&w, c.key);
    EXPECT_EQ(w.pos(), c.pos) << c.name;
    EXPECT_EQ(w.size(), c.size) << c.name;
  }
  vh::RestoreDialogPosition(nullptr, "W");
}

} // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
