// The appearance and font dialogs, driven through their controls (offscreen),
// writing a real UserSetting.ini in a temporary folder.
#include "widgets/customized_appearance.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/settings_paths.h"
#include "tests/excel/temp_folder.h"
#include "tests/widgets/screenshot.h"
#include "widgets/appearance_edit.h"
#include "widgets/colour_button.h"
#include "widgets/font_setting_dlg.h"

namespace vh {
namespace {

using Pairs = std::vector<std::pair<std::string, uint32_t>>;

class AppearanceDialog : public ::testing::Test {
protected:
  void SetUp() override {
    dialog_.SetGrid("rmsholdview", 1001, {"Client Id", "Product", "Series", "Side"},
                    DefaultListAppearance());
    dialog_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog_));
  }

  template <typename T> T* Get(const char* name) {
    T* w = dialog_.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(w, nullptr) << name;
    return w;
  }
  void Click(const char* button) { QTest::mouseClick(Get<QPushButton>(button), Qt::LeftButton); }
  // Picks `colour` in the colour dialog that `button` opens.
  void PickColour(const char* button, QColor colour) {
    Click(button);
    auto* picker = Get<CColourButton>(button)->findChild<QColorDialog*>("colourDialog");
    ASSERT_NE(picker, nullptr);
    ASSERT_TRUE(picker->isVisible());
    picker->setCurrentColor(colour);
    picker->accept();
  }
  void TypeKeyword(const QString& text) {
    auto* edit = Get<QLineEdit>("keyword");
    edit->clear();
    QTest::keyClicks(edit, text);
  }
  void AddKeyword(const QString& text, QColor colour) {
    TypeKeyword(text);
    PickColour("keywordColour", colour);
    Click("add");
  }
  Pairs Keywords() {
    Pairs pairs;
    const sListAppearance& a = dialog_.Appearance();
    for (size_t i = 0; i < KeywordCount(a); ++i)
      pairs.emplace_back((*a.keywordTexts)[i], (*a.keywordColours)[i]);
    return pairs;
  }
  std::string SettingsFile() {
    std::ifstream in(folder_.file("UserSetting.ini"), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  }

  test::TempFolder folder_;
  ScopedSettingsPaths paths_{{folder_.path().string(), folder_.path().string()}};
  ScopedMessageRecorder messages_;
  CCustomizedAppearance dialog_;
};

TEST_F(AppearanceDialog, ApplyWritesTheSettingAndAppliesAtOnce) {
  EXPECT_EQ(dialog_.windowTitle(), QString("Customize Appearance :rmsholdview"));
  QSignalSpy applied(&dialog_, &CCustomizedAppearance::Applied);
  PickColour("background", QColor(0x12, 0x34, 0x56));
  PickColour("text", QColor(0xFF, 0xFF, 0xFF));
  Get<QComboBox>("keywordColumn")->setFocus();
  QTest::keyClick(Get<QComboBox>("keywordColumn"), Qt::Key_End); // "Side", column 3
  AddKeyword("BUY", QColor(0xFF, 0, 0));
  AddKeyword("Sell", QColor(0, 0xFF, 0));

  Click("font");
  auto* fonts = Get<CFontSettingDlg>("fontDialog");
  ASSERT_TRUE(fonts->isVisible());
  auto* face = fonts->findChild<QComboBox*>("face");
  auto* size = fonts->findChild<QComboBox*>("size");
  face->lineEdit()->selectAll();
  QTest::keyClicks(face->lineEdit(), "DejaVu Sans");
  size->lineEdit()->selectAll();
  QTest::keyClicks(size->lineEdit(), "10");
  QTest::mouseClick(fonts->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                    Qt::LeftButton);
  EXPECT_EQ(Get<QLabel>("fontLabel")->text(), QString("Font: DejaVu Sans, 10 pt"));

  Click("apply");
  EXPECT_EQ(SettingsFile(), "[CUSTOMIZE_LISTS]\n"
                            "rmsholdview-1001=563412,FFFFFF,DejaVu Sans,10,3,buy,FF,sell,FF00,\n");
  ASSERT_EQ(applied.size(), 1);
  const auto sent = applied[0][0].value<sListAppearance>();
  EXPECT_EQ(sent.backgroundColour, 0x563412u);
  EXPECT_TRUE(sent.keywordColouring);
  EXPECT_EQ(sent.fontFace, "DejaVu Sans");
  EXPECT_TRUE(messages_.messages().empty());
  EXPECT_EQ(KeywordCount(DefaultListAppearance()), 0u) << "the defaults were edited";

  // What was written reads back as what was applied.
  sListAppearance loaded;
  ASSERT_TRUE(LoadListAppearance("rmsholdview", 1001, loaded));
  EXPECT_EQ(FormatListAppearance(loaded), FormatListAppearance(sent));
}

TEST_F(AppearanceDialog, KeywordsAreAddedChangedAndRemovedThroughTheButtons) {
  AddKeyword("buy", QColor(0xFF, 0, 0));
  AddKeyword("sell", QColor(0, 0xFF, 0));
  auto* list = Get<QListWidget>("keywords");
  const struct {
    const char* name;
    std::function<void()> steps;
    Pairs expected;
  } cases[] = {
      {"addAgainRecolours",
       [&] { AddKeyword("BUY", QColor(0, 0, 0xFF)); },
       {{"buy", 0xFF0000}, {"sell", 0xFF00}}},
      {"changeTheSelectedPair",
       [&] {
         QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                           list->visualItemRect(list->item(1)).center());
         EXPECT_EQ(Get<QLineEdit>("keyword")->text(), QString("sell"));
         TypeKeyword("Pledge");
         Click("change");
       },
       {{"buy", 0xFF0000}, {"pledge", 0xFF00}}},
      {"removeTheSelectedPair",
       [&] {
         QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                           list->visualItemRect(list->item(0)).center());
         Click("remove");
       },
       {{"pledge", 0xFF00}}},
      {"aCommaCannotBeAdded",
       [&] {
         TypeKeyword("a,b");
         EXPECT_FALSE(Get<QPushButton>("add")->isEnabled());
         Click("add");
       },
       {{"pledge", 0xFF00}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    c.steps();
    EXPECT_EQ(Keywords(), c.expected);
    ASSERT_EQ(list->count(), static_cast<int>(c.expected.size()));
    for (int i = 0; i < list->count(); ++i)
      EXPECT_EQ(list->item(i)->text().toStdString(), c.expected[i].first);
  }
}

TEST_F(AppearanceDialog, TheFontDialogOnlyTakesStorableChoices) {
  const struct {
    const char* name;
    const char* face;
    const char* size;
    bool ok;
  } cases[] = {
      {"installedFace", "DejaVu Sans", "12", true},
      {"unknownFaceAsTyped", "MS Shell Dlg 2", "8", true},
      {"faceWithComma", "Arial, Bold", "8", false},
      {"noFace", "", "8", false},
      {"sizeZero", "DejaVu Sans", "0", false},
      {"sizeWithFraction", "DejaVu Sans", "8.5", false},
      {"sizeTooLarge", "DejaVu Sans", "1000", false},
  };
  CFontSettingDlg fonts;
  auto* ok = fonts.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    fonts.SetFontChoice("DejaVu Sans", "9");
    auto* face = fonts.findChild<QComboBox*>("face");
    auto* size = fonts.findChild<QComboBox*>("size");
    face->lineEdit()->clear();
    QTest::keyClicks(face->lineEdit(), c.face);
    size->lineEdit()->clear();
    QTest::keyClicks(size->lineEdit(), c.size);
    EXPECT_EQ(ok->isEnabled(), c.ok);
    EXPECT_EQ(fonts.Face(), c.face);
    EXPECT_EQ(fonts.Size(), c.size);
  }
}

TEST_F(AppearanceDialog, CancellingLeavesTheChoiceAsItWas) {
  Click("font");
  auto* fonts = Get<CFontSettingDlg>("fontDialog");
  QTest::keyClicks(fonts->findChild<QComboBox*>("size")->lineEdit(), "4");
  fonts->reject();
  Click("background");
  Get<CColourButton>("background")->findChild<QColorDialog*>("colourDialog")->reject();
  EXPECT_EQ(dialog_.Appearance().fontSize, DefaultListAppearance().fontSize);
  EXPECT_EQ(dialog_.Appearance().backgroundColour, DefaultListAppearance().backgroundColour);
}

TEST_F(AppearanceDialog, Screenshot) {
  QTest::keyClick(Get<QComboBox>("keywordColumn"), Qt::Key_End);
  AddKeyword("buy", QColor(0xFF, 0, 0));
  AddKeyword("sell", QColor(0, 0xA0, 0));
  EXPECT_TRUE(test::SaveScreenshot(dialog_, "appearance_dialog"));
  Click("font");
  EXPECT_TRUE(test::SaveScreenshot(*Get<CFontSettingDlg>("fontDialog"), "font_dialog"));
}

TEST_F(AppearanceDialog, AnUnwritableFileStillAppliesAndSaysSo) {
  ScopedSettingsPaths missing({folder_.file("no/such/folder"), folder_.file("no/such/folder")});
  QSignalSpy applied(&dialog_, &CCustomizedAppearance::Applied);
  Click("apply");
  EXPECT_EQ(applied.size(), 1);
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{kAppearanceNotSaved});
}

} // namespace
} // namespace vh
