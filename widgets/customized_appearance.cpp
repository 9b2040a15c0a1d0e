#include "widgets/customized_appearance.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#include "common/message.h"
#include "plugin/tarn_host_api.h"
#include "widgets/appearance_edit.h"
#include "widgets/colour_button.h"
#include "widgets/font_setting_dlg.h"

namespace vh {
namespace {

QPushButton* NamedButton(const char* name, const QString& text, QWidget* parent) {
  auto* b = new QPushButton(text, parent);
  b->setObjectName(QString::fromLatin1(name));
  b->setAutoDefault(false);
  return b;
}

QIcon Swatch(uint32_t colour) {
  QPixmap p(16, 16);
  p.fill(ToQColor(colour));
  return QIcon(p);
}

} // namespace

CCustomizedAppearance::CCustomizedAppearance(QWidget* parent)
    : QDialog(parent), background_(new CColourButton(QStringLiteral("&Background"), this)),
      text_(new CColourButton(QStringLiteral("&Text"), this)), fontLabel_(new QLabel(this)),
      font_(NamedButton("font", QStringLiteral("&Font..."), this)),
      fontDialog_(new CFontSettingDlg(this)), keywordColumn_(new QComboBox(this)),
      keywords_(new QListWidget(this)), keyword_(new QLineEdit(this)),
      keywordColour_(new CColourButton(QStringLiteral("C&olour"), this)),
      add_(NamedButton("add", QStringLiteral("&Add"), this)),
      change_(NamedButton("change", QStringLiteral("C&hange"), this)),
      remove_(NamedButton("remove", QStringLiteral("&Remove"), this)),
      apply_(NamedButton("apply", QStringLiteral("Apply Settings"), this)),
      close_(NamedButton("close", QStringLiteral("Close"), this)) {
  SetControlId(this, kCustomizedAppearanceDialogId);
  background_->setObjectName(QStringLiteral("background"));
  text_->setObjectName(QStringLiteral("text"));
  fontLabel_->setObjectName(QStringLiteral("fontLabel"));
  fontDialog_->setObjectName(QStringLiteral("fontDialog"));
  keywordColumn_->setObjectName(QStringLiteral("keywordColumn"));
  keywords_->setObjectName(QStringLiteral("keywords"));
  keyword_->setObjectName(QStringLiteral("keyword"));
  keywordColour_->setObjectName(QStringLiteral("keywordColour"));
  apply_->setDefault(true);
  BuildLayout();

  connect(background_, &CColourButton::ColourChanged, this,
          [this](uint32_t c) { appearance_.backgroundColour = c; });
  connect(text_, &CColourButton::ColourChanged, this,
          [this](uint32_t c) { appearance_.textColour = c; });
  connect(font_, &QPushButton::clicked, this, [this] {
    fontDialog_->SetFontChoice(appearance_.fontFace, appearance_.fontSize);
    fontDialog_->open();
  });
  connect(fontDialog_, &QDialog::accepted, this, [this] {
    appearance_.fontFace = fontDialog_->Face();
    appearance_.fontSize = fontDialog_->Size();
    ShowFont();
  });
  connect(keywordColumn_, &QComboBox::currentIndexChanged, this, [this](int index) {
    appearance_.keywordColumn = index < 0 ? -1 : keywordColumn_->itemData(index).toInt();
  });
  connect(keywords_, &QListWidget::itemSelectionChanged, this,
          &CCustomizedAppearance::OnSelectKeyword);
  connect(keyword_, &QLineEdit::textChanged, this, &CCustomizedAppearance::UpdateButtons);
  connect(add_, &QPushButton::clicked, this, [this] {
    ShowKeywords(SetKeyword(appearance_, keyword_->text().toStdString(), keywordColour_->Colour()));
  });
  connect(change_, &QPushButton::clicked, this, [this] {
    const int row = keywords_->currentRow();
    if (row >= 0 && ChangeKeyword(appearance_, static_cast<size_t>(row),
                                  keyword_->text().toStdString(), keywordColour_->Colour()))
      ShowKeywords(row);
  });
  connect(remove_, &QPushButton::clicked, this, [this] {
    const int row = keywords_->currentRow();
    if (row >= 0 && RemoveKeyword(appearance_, static_cast<size_t>(row)))
      ShowKeywords(-1);
  });
  connect(apply_, &QPushButton::clicked, this, &CCustomizedAppearance::Apply);
  connect(close_, &QPushButton::clicked, this, &QDialog::reject);
  ShowAppearance();
}

void CCustomizedAppearance::BuildLayout() {
  auto* colours = new QHBoxLayout;
  colours->addWidget(background_);
  colours->addWidget(text_);
  colours->addStretch();

  auto* fontRow = new QHBoxLayout;
  fontRow->addWidget(fontLabel_, 1);
  fontRow->addWidget(font_);

  auto* keywordBox = new QGroupBox(QStringLiteral("Keyword colouring"), this);
  auto* grid = new QGridLayout(keywordBox);
  auto* columnLabel = new QLabel(QStringLiteral("Keyword &column:"), keywordBox);
  columnLabel->setBuddy(keywordColumn_);
  grid->addWidget(columnLabel, 0, 0);
  grid->addWidget(keywordColumn_, 0, 1, 1, 2);
  grid->addWidget(keywords_, 1, 0, 4, 2);
  grid->addWidget(keyword_, 5, 0);
  grid->addWidget(keywordColour_, 5, 1);
  grid->addWidget(add_, 1, 2);
  grid->addWidget(change_, 2, 2);
  grid->addWidget(remove_, 3, 2);

  auto* actions = new QHBoxLayout;
  actions->addStretch();
  actions->addWidget(apply_);
  actions->addWidget(close_);

  auto* main = new QVBoxLayout(this);
  main->addLayout(colours);
  main->addLayout(fontRow);
  main->addWidget(keywordBox);
  main->addLayout(actions);
}

void CCustomizedAppearance::SetGrid(const std::string& profileName, int controlId,
                                    const std::vector<std::string>& columns,
                                    const sListAppearance& appearance) {
  profileName_ = profileName;
  controlId_ = controlId;
  appearance_ = appearance;
  setWindowTitle(QString::fromLatin1(kAppearanceCaption) + QString::fromStdString(profileName));
  const QSignalBlocker block(keywordColumn_);
  keywordColumn_->clear();
  keywordColumn_->addItem(QStringLiteral("(none)"), -1);
  for (size_t i = 0; i < columns.size(); ++i)
    keywordColumn_->addItem(QString::fromStdString(columns[i]), static_cast<int>(i));
  ShowAppearance();
}

void CCustomizedAppearance::ShowOver(QWidget* grid) {
  show();
  if (grid != nullptr) {
    // Once shown the frame is known; move() places the frame.
    const QPoint centre = grid->mapToGlobal(grid->rect().center());
    move(centre - QPoint(frameGeometry().width() / 2, frameGeometry().height() / 2));
  }
  raise();
  activateWindow();
}

void CCustomizedAppearance::ShowAppearance() {
  background_->SetColour(appearance_.backgroundColour);
  text_->SetColour(appearance_.textColour);
  ShowFont();
  const QSignalBlocker block(keywordColumn_);
  const int index = keywordColumn_->findData(appearance_.keywordColumn);
  keywordColumn_->setCurrentIndex(index >= 0 ? index : 0);
  ShowKeywords(-1);
}

void CCustomizedAppearance::ShowFont() {
  fontLabel_->setText(QStringLiteral("Font: %1, %2 pt")
                          .arg(QString::fromStdString(appearance_.fontFace),
                               QString::fromStdString(appearance_.fontSize)));
}

void CCustomizedAppearance::ShowKeywords(int select) {
  const QSignalBlocker block(keywords_);
  keywords_->clear();
  for (size_t i = 0; i < KeywordCount(appearance_); ++i)
    keywords_->addItem(new QListWidgetItem(Swatch((*appearance_.keywordColours)[i]),
                                           QString::fromStdString((*appearance_.keywordTexts)[i])));
  keywords_->setCurrentRow(select);
  UpdateButtons();
}

void CCustomizedAppearance::OnSelectKeyword() {
  const int row = keywords_->currentRow();
  if (row >= 0 && static_cast<size_t>(row) < KeywordCount(appearance_)) {
    keyword_->setText(QString::fromStdString((*appearance_.keywordTexts)[row]));
    keywordColour_->SetColour((*appearance_.keywordColours)[row]);
  }
  UpdateButtons();
}

void CCustomizedAppearance::UpdateButtons() {
  const bool storable = IsStorableText(keyword_->text().toStdString());
  const bool selected = keywords_->currentRow() >= 0 && keywords_->currentItem()->isSelected();
  add_->setEnabled(storable);
  change_->setEnabled(storable && selected);
  remove_->setEnabled(selected);
}

void CCustomizedAppearance::Apply() {
  UpdateKeywordColouring(appearance_);
  if (!SaveListAppearance(profileName_, controlId_, appearance_))
    ShowMessage(kAppearanceNotSaved);
  emit Applied(appearance_);
}

} // namespace vh
