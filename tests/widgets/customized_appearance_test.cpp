// The appearance and font dialogs through their controls (offscreen),
// writing a real UserSetting.ini in a temporary folder.
#include "widgets/customized_appearance.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/settings_paths.h"
#include "tests/excel/temp_folder.h"
#include "tests/settings/temp_dir.h"
#include "widgets/font_setting_dlg.h"

namespace vh {
namespace {

class AppearanceDialog : public ::testing::Test {
protected:
  template <typename T = QPushButton> T* Get(const char* name, QObject* in = nullptr) {
    return (in ? in : &dialog_)->findChild<T*>(QString::fromLatin1(name));
  }
  void Click(const char* name) { QTest::mouseClick(Get(name), Qt::LeftButton); }
  // Types `text` into the edit `name` (of a combo when `in` is the font dialog).
  void Type(const char* name, const QString& text, QObject* in = nullptr) {
    QLineEdit* edit = in ? Get<QComboBox>(name, in)->lineEdit() : Get<QLineEdit>(name);
    edit->selectAll();
    QTest::keyClicks(edit, text);
  }
  void PickColour(const char* button, QColor colour) {
    Click(button);
    Get<QColorDialog>("colourDialog", Get(button))->setCurrentColor(colour);
    Get<QColorDialog>("colourDialog", Get(button))->accept();
  }
  void ClickKeyword(int row) {
    auto* list = Get<QListWidget>("keywords");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
  }

  test::TempFolder folder_;
  ScopedSettingsPaths paths_{{folder_.path.string(), folder_.path.string()}};
  ScopedMessageRecorder messages_;
  CCustomizedAppearance dialog_;
  QSignalSpy applied_{&dialog_, &CCustomizedAppearance::Applied};
};

TEST_F(AppearanceDialog, ApplyWritesTheSettingAndAppliesAtOnceEvenWhenTheSaveFails) {
  // Keywords whose arrays another grid shares: edits must not reach it.
  sListAppearance other;
  other.keywordTexts = std::make_shared<std::vector<std::string>>(1, "buy");
  other.keywordColours = std::make_shared<std::vector<uint32_t>>(1, 0xFF);
  dialog_.SetGrid("rmsholdview", 1001, {"Client Id", "Side"}, other);
  QWidget grid;
  grid.setGeometry(100, 80, 900, 700);
  grid.show();
  dialog_.ShowOver(&grid);
  EXPECT_LE((dialog_.frameGeometry().center() - grid.frameGeometry().center()).manhattanLength(),
            2); // centred over the grid
  EXPECT_EQ(dialog_.windowTitle(), QString("Customize Appearance :rmsholdview"));
  PickColour("background", QColor(0x12, 0x34, 0x56));
  Get<QComboBox>("keywordColumn")->setFocus();
  QTest::keyClick(Get<QComboBox>("keywordColumn"), Qt::Key_End); // "Side", column 1
  for (const char* keyword : {"hold", "Sell"}) {
    Type("keyword", keyword);
    PickColour("keywordColour", Qt::green);
    Click("add");
  }
  ClickKeyword(1);
  Click("remove"); // "hold"
  ClickKeyword(1);
  Type("keyword", "a,b");
  EXPECT_FALSE(Get("change")->isEnabled()) << "a comma would break the stored value";
  Type("keyword", "SOLD");
  Click("change");
  EXPECT_EQ(*other.keywordTexts, std::vector<std::string>{"buy"});

  Click("font");
  auto* fonts = Get<CFontSettingDlg>("fontDialog");
  auto* ok = Get<QDialogButtonBox>("", fonts)->button(QDialogButtonBox::Ok);
  Type("face", "DejaVu Sans", fonts);
  Type("size", "0", fonts);
  EXPECT_FALSE(ok->isEnabled());
  Type("size", "10", fonts);
  QTest::mouseClick(ok, Qt::LeftButton);

  Click("apply");
  EXPECT_EQ(test::ReadFile(folder_.file("UserSetting.ini")),
            "[CUSTOMIZE_LISTS]\r\n"
            "rmsholdview-1001=563412,FF00,DejaVu Sans,10,1,buy,FF,sold,FF00,\r\n");
  ASSERT_EQ(applied_.size(), 1);
  EXPECT_EQ(FormatListAppearance(applied_[0][0].value<sListAppearance>()),
            "563412,FF00,DejaVu Sans,10,1,buy,FF,sold,FF00,");

  // A failed save still applies, and is the only message shown.
  ScopedSettingsPaths missing({folder_.file("no/such"), folder_.file("no/such")});
  Click("apply");
  EXPECT_EQ(applied_.size(), 2);
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{kAppearanceNotSaved});
}

} // namespace
} // namespace vh
