#include "widgets/control_pos.h"

#include <QApplication>
#include <QPushButton>

#include <gtest/gtest.h>

#include "plugin/tarn_host_api.h"

namespace vh {
namespace {

TEST(ControlPos, ControlsFollowTheDialogsSizeChange) {
  const QRect start(10, 20, 80, 30); // in a 300 x 200 dialog, grown by 50 x 40
  const struct {
    const char* name;
    unsigned anchors;
    QRect expected;
  } cases[] = {
      {"followRight", kFollowRight, QRect(60, 20, 80, 30)},
      {"followBottom", kFollowBottom, QRect(10, 60, 80, 30)},
      {"bottomRightCorner", kFollowRight | kFollowBottom, QRect(60, 60, 80, 30)},
      {"stretchWidth", kStretchWidth, QRect(10, 20, 130, 30)},
      {"stretchHeight", kStretchHeight, QRect(10, 20, 80, 70)},
      {"fillsTheDialog", kStretchWidth | kStretchHeight, QRect(10, 20, 130, 70)},
      {"stretchedAlongTheBottom", kFollowBottom | kStretchWidth, QRect(10, 60, 130, 30)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QWidget dialog;
    dialog.resize(300, 200);
    QPushButton button(&dialog);
    button.setGeometry(start);
    CControlPos* pos = new CControlPos(&dialog);
    ASSERT_TRUE(pos->AddControl(&button, c.anchors));
    dialog.show();
    dialog.resize(350, 240);
    QApplication::processEvents();
    EXPECT_EQ(button.geometry(), c.expected);
    // Back to the first size puts it back exactly.
    dialog.resize(300, 200);
    QApplication::processEvents();
    EXPECT_EQ(button.geometry(), start);
  }
}

TEST(ControlPos, ShrinkingNeverGivesANegativeSizeAndGrowingRestores) {
  QWidget dialog;
  dialog.resize(300, 200);
  QPushButton button(&dialog);
  button.setGeometry(10, 20, 80, 30);
  CControlPos pos(&dialog);
  ASSERT_TRUE(pos.AddControl(&button, kStretchWidth | kStretchHeight));
  dialog.show();
  dialog.resize(150, 100);
  QApplication::processEvents();
  EXPECT_EQ(button.size(), QSize(0, 0));
  dialog.resize(310, 205);
  QApplication::processEvents();
  EXPECT_EQ(button.geometry(), QRect(10, 20, 90, 35));
}

TEST(ControlPos, RegistrationByIdRemovalAndDestroyedControls) {
  QWidget dialog;
  dialog.resize(300, 200);
  auto* kept = new QPushButton(&dialog);
  auto* removed = new QPushButton(&dialog);
  auto* destroyed = new QPushButton(&dialog);
  for (QPushButton* b : {kept, removed, destroyed})
    b->setGeometry(10, 10, 50, 20);
  SetControlId(kept, 1001);
  CControlPos pos(&dialog);
  EXPECT_TRUE(pos.AddControl(1001, kFollowRight));
  EXPECT_FALSE(pos.AddControl(1002, kFollowRight)) << "no such control";
  EXPECT_FALSE(pos.AddControl(nullptr, kFollowRight));
  EXPECT_FALSE(pos.AddControl(removed, kAnchorNone));
  EXPECT_TRUE(pos.AddControl(removed, kFollowRight));
  EXPECT_TRUE(pos.AddControl(destroyed, kFollowRight));
  pos.RemoveControl(removed);
  delete destroyed;
  dialog.show();
  dialog.resize(320, 200);
  QApplication::processEvents();
  EXPECT_EQ(kept->pos(), QPoint(30, 10));
  EXPECT_EQ(removed->pos(), QPoint(10, 10));
}

} // namespace
} // namespace vh
